// The simulated boards of a demonstration.

#include "app/demoboards.h"
#include "app/settings.h"

#include <QDir>
#include <QtTest>

class TestDemoBoards : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void reportsAMissingBoardsim();
    void plugsTheBoardsInAndTakesThemAway();

private:
    static QString beside() { return QCoreApplication::applicationDirPath() + QStringLiteral("/boardsim"); }
};

void TestDemoBoards::init()
{
    QFile::remove(beside());
}

void TestDemoBoards::reportsAMissingBoardsim()
{
    DemoBoards boards;
    const QSignalSpy failures(&boards, &DemoBoards::failed);
    for (int i = 0; i < 4; ++i)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^simulated board COM[3456] failed:"));
    boards.start();
    QTRY_COMPARE(failures.count(), 4);
    QVERIFY(failures.first().at(0).toString().contains("[COM3]"));
}

void TestDemoBoards::plugsTheBoardsInAndTakesThemAway()
{
    QVERIFY(QFile::link(BOARDSIM_PATH, beside()));
    QString folder;
    {
        DemoBoards boards;
        const QSignalSpy failures(&boards, &DemoBoards::failed);
        boards.start();
        folder = qEnvironmentVariable("KORVEX_VIRTUAL_PORTS");
        QTRY_COMPARE(QDir(folder).entryList(QDir::System, QDir::Name),
                     (QStringList{"COM3", "COM4", "COM5", "COM6"}));
        QCOMPARE(failures.count(), 0);

        // In the encoding that the program starts with, or Chinese is garbled.
        QCOMPARE(Settings::instance().textCodec, 1);
        for (const QProcess *board : boards.findChildren<QProcess *>())
            QVERIFY(board->arguments().contains("gb18030"));
    }
    QVERIFY(!QFileInfo::exists(folder));
}

QTEST_GUILESS_MAIN(TestDemoBoards)
#include "test_demoboards.moc"
