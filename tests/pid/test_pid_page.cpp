// The PID page opening and closing its port, stopping what runs, and its files.

#include "pidpagetest.h"
#include "settings.h"

#include <QCheckBox>

#include <csignal>
#include <sys/resource.h>

class TestPidPage : public PidPageTest
{
    Q_OBJECT

private slots:
    void refusesWithoutAPort();
    void stopsBeforeClosing();
    void closesBesideADeafBoard();
    void noticesAVanishedPort();
    void choosesAPortAgainThatIsBack();
    void exportsAndSaves();
    void exportsLongCurvesBetweenEvents();
    void remembersToFitAllCurves();
    void reportsWhatCannotBeSaved();
};

void TestPidPage::refusesWithoutAPort()
{
    for (const char *button : {"btnSendPid", "btnPidReset"})
        click(button);
    QVERIFY(m_warnings.isEmpty() && m_notices->isEmpty());
    click("btnPidStart");
    QCOMPARE(m_warnings, QStringList(QStringLiteral("告警|请确认是否打开串口！")));
    QCOMPARE(startText(), kIdle);
    child<QComboBox>("comboPidPort")->setEditText(QStringLiteral("COM77 没有"));
    click("btnPidOpen");
    QCOMPARE(m_notices->at(m_notices->count() - 2).at(0).toString(),
             QStringLiteral("串口[COM77]打开失败!!!")); // and the reason
}

void TestPidPage::stopsBeforeClosing()
{
    open();
    click("btnPidStart");
    select(3);
    click("btnPidOpen"); // the selected channel, and the one that was started
    QCOMPARE(startText(), kIdle);
    QCOMPARE(lastNotice(), QStringLiteral("串口[%1]已关闭!!").arg(m_board->device()));
    QCOMPARE(m_board->read(33), kStart1 + kStop1 + kStop3);

    open();
    click("btnPidOpen"); // nothing runs: nothing is sent
    QCOMPARE(m_board->read(1, 50), QByteArray());

    open();
    click("btnPidStart"); // of channel 3, which the board then stops
    receive(report(3, 5) + report(1, 4));
    select(1);
    click("btnPidOpen");
    QCOMPARE(m_board->read(33, 50), hex("4f52564e030b0000001265") + kStop1);

    open();
    select(3);
    receive(report(3, 4));
    m_page.reset();
    QCOMPARE(m_board->read(11), kStop3);
}

void TestPidPage::closesBesideADeafBoard()
{
    open();
    for (int i = 0; i < 20000; ++i) // more than the line holds: nobody reads
        m_page->SendPidFrame(0x10, 1, QByteArray(12, '\0'));
    click("btnPidStart");
    QElapsedTimer clock;
    clock.start();
    click("btnPidOpen");
    QVERIFY2(clock.elapsed() < 1000, "closing must not wait for a board that takes nothing");
    QVERIFY(!isOpen());
}

void TestPidPage::noticesAVanishedPort()
{
    const auto vanished = QStringLiteral("当前串口已拔出，请重新打开!");
    open();
    click("btnPidStart");
    m_page->SltSerialportChanged({m_board->device() + " USB", QStringLiteral("COM9 ")});
    QVERIFY(isOpen()); // by name, whatever the description
    receive(hex("4f52564e01ffffff7f040000"));
    m_page->SltSerialportChanged({QStringLiteral("COM9 ")});
    QVERIFY(!isOpen());
    QCOMPARE(startText(), kIdle);
    QCOMPARE(lastNotice(), vanished);
    receive(report(1, 1, "09000000")); // not behind what came before
    QCOMPARE(text("editTarget"), "9");

    m_board = std::make_unique<PtyPeer>();
    open();
    click("btnPidStart");
    m_board->hangUp();
    QTRY_VERIFY(!isOpen());
    QCOMPARE(startText(), kIdle);
    QCOMPARE(lastNotice(), vanished);
    m_board = std::make_unique<PtyPeer>(); // what was started went with the port
    open();
    click("btnPidOpen");
    QCOMPARE(m_board->read(1, 50), QByteArray());
}

void TestPidPage::choosesAPortAgainThatIsBack()
{
    const QStringList without{"COM1 ", "COM2 modem"};
    const QStringList with = without + QStringList("COM6 board");
    auto *ports = child<QComboBox>("comboPidPort");
    m_page->SltSerialportChanged(with);
    ports->setCurrentIndex(2);
    for (const QStringList &none : {without, QStringList()}) {
        m_page->SltSerialportChanged(none);
        m_page->SltSerialportChanged(with);
        QCOMPARE(ports->currentText(), "COM6 board");
    }
    // Not where the user has taken another, be it the one the list fell back to.
    m_page->SltSerialportChanged(without);
    QTest::keyClick(ports, Qt::Key_Down);
    QTest::keyClick(ports, Qt::Key_Up);
    m_page->SltSerialportChanged(with);
    QCOMPARE(ports->currentText(), "COM1 ");
}

void TestPidPage::exportsAndSaves()
{
    receive(report(1, 1, "0a000000") + report(1, 2, "0c000000"));
    answer(QString()); // "取消"
    click("btnPidExport");
    QVERIFY(m_notices->isEmpty());
    const QString name = m_root->filePath("a.csv");
    answer(name);
    click("btnPidExport");
    QCOMPARE(lastNotice(), QStringLiteral("文件已导出：") + name);
    QFile file(name);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("\n1,12,10,2\n\n\n"));
    for (const auto &[suffix, magic] : {std::pair{"png", "\x89PNG"}, std::pair{"pdf", "%PDF"}}) {
        const QString picture = m_root->filePath(QStringLiteral("p.%1").arg(suffix));
        answer(picture);
        click("btnPidPicture");
        QCOMPARE(lastNotice(), QStringLiteral("图片已保存：") + picture);
        QFile saved(picture);
        QVERIFY(saved.open(QIODevice::ReadOnly) && saved.read(4) == magic);
    }
}

void TestPidPage::exportsLongCurvesBetweenEvents()
{
    for (int channel = 0; channel < 5; ++channel)
        for (int i = 0; i < 100000; ++i)
            plot()->addPoint(channel, i * 1e-5, 1000000 + i, -i);
    answer(m_root->filePath("a.csv"));
    m_notices->clear();
    click("btnPidExport");
    QVERIFY(m_notices->isEmpty()); // more than fits into a moment
    QVERIFY(!QFile::exists(m_root->filePath("a.csv")));
    click("btnPidExport");
    QVERIFY(lastNotice().contains(QStringLiteral("尚未完成")));
    click("btnPidClear"); // the file has what was to be seen
    QTRY_VERIFY_WITH_TIMEOUT(lastNotice().startsWith(QStringLiteral("文件已导出：")), 60000);
    QFile file(m_root->filePath("a.csv"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    QCOMPARE(text.count('\n'), 1 + 5 * (2 + 100000 + 2));
    QVERIFY(text.endsWith("\n100000,-99999,1.1e+06,-1.2e+06\n\n\n"));

    for (int i = 0; i < 100000; ++i)
        plot()->addPoint(0, i * 1e-5, 1000000 + i, -i);
    answer(m_root->filePath("b.csv"));
    click("btnPidExport");
    QVERIFY(m_page->saveBeforeExit()); // the rest at once
    QVERIFY(QFile::exists(m_root->filePath("b.csv")));
    answer(m_root->filePath("b.csv/below.csv"));
    click("btnPidExport");
    QVERIFY(!m_page->saveBeforeExit());
    QVERIFY(m_page->saveBeforeExit()); // the user knows
}

void TestPidPage::remembersToFitAllCurves()
{
    click("checkPidFitAll");
    Settings::load();
    const PidDebugWidget next;
    QVERIFY(next.findChild<QCheckBox *>("checkPidFitAll")->isChecked());
    Settings::restoreDefaults();
    m_page->reloadSettings();
    QVERIFY(!child<QCheckBox>("checkPidFitAll")->isChecked());
}

void TestPidPage::reportsWhatCannotBeSaved()
{
    for (int i = 0; i < 1000; ++i)
        receive(report(1, 2, "0c000000"));
    QFile old(m_root->filePath("old.csv"));
    QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();
    const QStringList failure(QStringLiteral("告警|文件保存失败!"));
    const QString nowhere = m_root->filePath("old.csv/below.csv");
    answer(nowhere);
    click("btnPidExport");
    QCOMPARE(m_warnings, failure);
    QVERIFY(lastNotice().startsWith(nowhere + QStringLiteral(" 保存失败：")) && !lastNotice().endsWith("："));

    // As on a full disk: the file there stays as it was.
    m_warnings.clear();
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight{4096, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &tight);
    answer(old.fileName());
    click("btnPidExport");
    click("btnPidPicture");
    answer(m_root->filePath("new.pdf"));
    click("btnPidPicture");
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QCOMPARE(m_warnings, failure + failure + failure);
    QVERIFY(!QFile::exists(m_root->filePath("new.pdf")));
    QVERIFY(old.open(QIODevice::ReadOnly));
    QCOMPARE(old.readAll(), QByteArray("old"));
}

QTEST_MAIN(TestPidPage)
#include "test_pid_page.moc"
