// Transfers to the simulated board's own receiver, which does what real ones
// do wrong: whatever is called finished has arrived byte for byte, and
// everything else ends with a reason.

#include "boardprocess.h"
#include "ymodemfiletransmit.h"

#include <QEventLoop>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void sends_data();
    void sends();
};

namespace {

using Sizes = QVector<int>;

QByteArray content(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 31 + i / 997);
    return bytes;
}

QString nameOf(int index)
{
    return QStringLiteral("固件 %1.bin").arg(index);
}

} // namespace

void TestFaults::sends_data()
{
    QTest::addColumn<Sizes>("sizes");
    QTest::addColumn<QString>("options"); // of the board
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("arrived"); // files, of those sent
    const Sizes two{3000, 129};
    QTest::newRow("all sizes") << Sizes{0, 1, 127, 128, 129, 300, 1024, 1 << 20} << "" << 3 << 8;
    QTest::newRow("end refused once") << Sizes{0, 1, 300} << "--nak-first-eot" << 3 << 3;
    QTest::newRow("answer to block 0 lost") << two << "--fault lose@0" << 3 << 2;
    QTest::newRow("answer to data lost") << two << "--fault lose@2" << 3 << 2;
    QTest::newRow("answer to the end lost") << two << "--fault lose@eot" << 3 << 1;
    QTest::newRow("ACK of block 0 doubled") << two << "--fault double@0" << 3 << 2;
    QTest::newRow("ACK of data doubled") << two << "--fault double@2" << 3 << 2;
    QTest::newRow("blocks refused") << two << "--fault nak@0*2 --fault nak@1*3 --fault nak@3" << 3 << 2;
    QTest::newRow("noise") << two << "--fault noise=7" << 3 << 2;
    QTest::newRow("late request") << two << "--fault late-c=1500@0" << 3 << 2;
    QTest::newRow("late request for the next file") << two << "--fault late-c=1500@eot" << 3 << 2;
    QTest::newRow("end answered by a request") << two << "--fault only-c@eot" << 3 << 1;
    QTest::newRow("silent for a while") << two << "--fault silence=3000@2" << 3 << 2;
    QTest::newRow("silent for ever") << two << "--fault silence@2" << 6 << 0;
    QTest::newRow("never asks") << two << "--mode silent" << 5 << 0;
    QTest::newRow("cancels at block 0") << two << "--fault can@0" << 4 << 0;
    QTest::newRow("cancels data") << two << "--fault can@2" << 4 << 0;
    QTest::newRow("cancels the end") << two << "--fault can@eot" << 4 << 0;
    QTest::newRow("cancels by hand") << two << "--fault a@1" << 4 << 0;
    QTest::newRow("refuses for ever") << two << "--fault nak@1*1000000" << 6 << 0;
}

void TestFaults::sends()
{
    QFETCH(Sizes, sizes);
    QFETCH(QString, options);
    QFETCH(int, status);
    QFETCH(int, arrived);
    QTemporaryDir from;
    QTemporaryDir to;
    QStringList names;
    for (const int size : qAsConst(sizes)) {
        names.append(from.filePath(nameOf(names.size())));
        QFile file(names.last());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content(size)), qint64(size));
    }
    QStringList arguments{"--mode",         "ymodem", "--encoding",       "gb18030",
                          "--ask-interval", "500",    "--receive-folder", to.path()};
    arguments += options.split(' ', Qt::SkipEmptyParts);
    BoardProcess board;
    QVERIFY2(board.start(arguments), qPrintable(board.errors()));

    YmodemFileTransmit transmit;
    transmit.setSilenceLimit(1); // ten seconds instead of thirty
    transmit.setErrorLimit(50);
    QSignalSpy statuses(&transmit, &YmodemFileTransmit::transmitStatus);
    transmit.setFileList(names);
    transmit.setPortName(board.link());
    transmit.setBaudRate(115200);
    QVERIFY(transmit.startTransmit());
    QEventLoop loop; // the waits of the test library sleep in between
    connect(&transmit, &YmodemFileTransmit::transmitStatus, &loop, [&] {
        if (!transmit.isBusy())
            loop.quit();
    });
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    loop.exec();
    const QByteArray log = transmit.log().text().right(1500).toUtf8();
    QVERIFY2(!transmit.isBusy(), log);
    QVERIFY2(statuses.last().at(0).value<Ymodem::Status>() == status, log);
    QCOMPARE(transmit.reason().isEmpty(), status == 3 && arrived == sizes.size());
    QCOMPARE(sizes.size() - transmit.unsentFiles().size(), arrived);
    for (int i = 0; i < arrived; ++i) {
        QFile file(to.filePath(nameOf(i)));
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(board.events().join('\n')));
        QVERIFY(file.readAll() == content(sizes.at(i)));
    }
}

QTEST_GUILESS_MAIN(TestFaults)
#include "test_faults.moc"
