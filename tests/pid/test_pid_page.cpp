// The PID page against a pseudo-terminal. Frames are written out.

#include "app/apppaths.h"
#include "pid/piddebugwidget.h"
#include "pid/pidplot.h"
#include "resources/korvexresources.h"
#include "shell/base/dialoganswers.h"
#include "tests/support/ptypeer.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>

namespace {

const auto kIdle = QStringLiteral("启动");
const auto kRunning = QStringLiteral("停止");

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

// A report; its sum is wrong, which does not matter.
QByteArray report(int channel, int code, const char *payload = "")
{
    const QByteArray bytes = hex(payload);
    return "ORVN" + QByteArray(1, char(channel)) + QByteArray(1, char(bytes.size() + 11)) +
           QByteArray(3, '\0') + char(code) + bytes + '\0';
}

const QByteArray kStart1 = hex("4f52564e010b0000001263");
const QByteArray kStop1 = hex("4f52564e010b0000001364");
const QByteArray kStop3 = hex("4f52564e030b0000001366");

} // namespace

class TestPidPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void sendsCommands();
    void takesFieldsByReturn();
    void sendsNothingWrong_data();
    void sendsNothingWrong();
    void sendsWhatIsStored();
    void showsReportsOfTheSelectedChannel();
    void leavesTypingAlone();
    void followsStartAndStop();
    void plotsActualValues();
    void addsNothingWhileStopped();
    void startsAfreshWhenOpened();
    void skipsAFalseLength();
    void refusesWithoutAPort();
    void stopsBeforeClosing();
    void closesBesideADeafBoard();
    void noticesAVanishedPort();
    void choosesAPortAgainThatIsBack();
    void exportsAndSaves();
    void reportsWhatCannotBeSaved();

private:
    template <class Widget> Widget *child(const char *name) const
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *button) { child<QAbstractButton>(button)->click(); }
    void type(const char *field, const QString &text)
    {
        child<QLineEdit>(field)->selectAll();
        QTest::keyClicks(child<QLineEdit>(field), text);
    }
    QString text(const char *field) const { return child<QLineEdit>(field)->text(); }
    QString startText() const { return child<QPushButton>("btnPidStart")->text(); }
    void select(int channel) { child<QComboBox>("comboPidChannel")->setCurrentIndex(channel - 1); }
    void open();
    bool isOpen() const { return child<QPushButton>("btnPidOpen")->text() == QStringLiteral("关闭串口"); }
    void receive(const QByteArray &bytes) { m_page->SltRecvFromSerialport(bytes); }
    int points(int graph) const { return plot()->graph(graph)->dataCount(); }
    PidPlot *plot() const { return child<PidPlot>("pidPlot"); }
    QString lastNotice() const
    {
        return m_notices->isEmpty() ? QString() : m_notices->last().at(0).toString();
    }
    void answer(const QString &fileName);

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<PtyPeer> m_board;
    std::unique_ptr<PidDebugWidget> m_page;
    std::unique_ptr<QSignalSpy> m_notices;
    QStringList m_warnings;
};

void TestPidPage::initTestCase()
{
    initKorvexResources();
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void TestPidPage::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    AppPaths::setRoot(m_root->path());
    m_board = std::make_unique<PtyPeer>();
    m_page = std::make_unique<PidDebugWidget>();
    m_page->resize(1200, 460);
    m_page->show();
    QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    m_notices = std::make_unique<QSignalSpy>(m_page.get(), &PidDebugWidget::signalNotify);
    m_warnings.clear();
    DialogAnswers::instance().message = [this](const QString &title, const QString &text, int) {
        m_warnings << title + QLatin1Char('|') + text;
        return 1;
    };
}

void TestPidPage::cleanup()
{
    m_page.reset();
    m_board.reset();
    DialogAnswers::instance() = DialogAnswers();
}

void TestPidPage::open()
{
    child<QComboBox>("comboPidPort")->setEditText(m_board->device());
    click("btnPidOpen");
    QCOMPARE(lastNotice(), QStringLiteral("串口[%1]打开成功!").arg(m_board->device()));
    QVERIFY(isOpen());
}

void TestPidPage::answer(const QString &fileName)
{
    DialogAnswers::instance().fileNames = [fileName](auto, auto, auto, auto) {
        return fileName.isEmpty() ? QStringList() : QStringList(fileName);
    };
}

void TestPidPage::sendsCommands()
{
    open();
    click("btnSendPid"); // the first text of the fields, 0.567
    QCOMPARE(m_board->read(23), hex("4f52564e011700000010e926113fe926113fe926113f8a"));
    select(2);
    type("editP", "1.5");
    type("editI", "0.0");
    type("editD", "0.0");
    click("btnSendPid");
    QCOMPARE(m_board->read(23), hex("4f52564e0217000000100000c03f00000000000000006d"));
    type("editTarget", "-2147483648");
    click("btnSendTarget");
    QCOMPARE(m_board->read(15), hex("4f52564e020f0000001100000080e7"));
    type("editPeriod", "20");
    click("btnSendPeriod");
    QCOMPARE(m_board->read(15), hex("4f52564e020f00000015140000007f"));
    select(1);
    click("btnPidStart");
    QCOMPARE(startText(), kRunning);
    click("btnPidStart");
    QCOMPARE(startText(), kIdle);
    click("btnPidReset");
    QCOMPARE(m_board->read(33), kStart1 + kStop1 + hex("4f52564e010b0000001465"));
    // What was sent is stored; the period is the board's to tell.
    select(2);
    QCOMPARE(text("editP") + '/' + text("editTarget") + '/' + text("editPeriod"), "1.500/-2147483648/0");
}

void TestPidPage::takesFieldsByReturn()
{
    open();
    type("editI", "2");
    QTest::keyClick(child<QLineEdit>("editI"), Qt::Key_Return);
    QCOMPARE(text("editI"), "2.0");
    QCOMPARE(child<QLineEdit>("editI")->selectedText(), "2.0");
    QCOMPARE(m_board->read(23).mid(14, 4), hex("00000040"));
    type("editTarget", "7x");
    QTest::keyClick(child<QLineEdit>("editTarget"), Qt::Key_Return);
    QCOMPARE(child<QLineEdit>("editTarget")->selectedText(), "7");
    QCOMPARE(m_board->read(15).mid(10, 4), hex("07000000"));
}

void TestPidPage::sendsNothingWrong_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("text");
    for (const char *text : {"", "-", "2147483648", "-2147483649", "99999999999999999999"}) {
        QTest::addRow("target '%s'", text) << "editTarget"
                                           << "btnSendTarget" << text;
        QTest::addRow("period '%s'", text) << "editPeriod"
                                           << "btnSendPeriod" << text;
    }
    QTest::newRow("empty gain") << "editD"
                                << "btnSendPid"
                                << "";
    QTest::newRow("huge gain") << "editD"
                               << "btnSendPid" << QString(50, '9') + ".0";
}

void TestPidPage::sendsNothingWrong()
{
    QFETCH(QString, field);
    QFETCH(QString, button);
    QFETCH(QString, text);
    open();
    child<QLineEdit>(qPrintable(field))->setText(text);
    m_notices->clear();
    click(qPrintable(button));
    QVERIFY2(lastNotice().contains(QStringLiteral("未发送")), qPrintable(lastNotice()));
    click("btnPidReset"); // arrives first
    QCOMPARE(m_board->read(11), hex("4f52564e010b0000001465"));
}

void TestPidPage::sendsWhatIsStored()
{
    open();
    // 0.123456786, -1.00000001e-07 and 1000000.06
    receive(report(1, 3,
                   "e9d6fc3d"
                   "95bfd6b3"
                   "01247449"));
    QCOMPARE(text("editP") + '/' + text("editI") + '/' + text("editD"), "0.123457/-1e-07/1e+06");
    click("btnSendPid");
    QCOMPARE(m_board->read(23).mid(10, 12), hex("e9d6fc3d95bfd6b301247449"));
    select(2);
    select(1);
    QCOMPARE(text("editP") + '/' + text("editI") + '/' + text("editD"), "0.123/-0.000/1000000.063");
    QCOMPARE(child<QLineEdit>("editP")->toolTip(), "0.12345678");
    type("editD", "0.5");
    QTest::keyClick(child<QLineEdit>("editI"), Qt::Key_Return); // shown by us, not typed
    QCOMPARE(m_board->read(23).mid(10, 12), hex("e9d6fc3d95bfd6b30000003f"));
    // Typed again, the same text means what it says.
    type("editP", "0.123");
    click("btnSendPid");
    QCOMPARE(m_board->read(23).mid(10, 4), hex("6de7fb3d"));
    receive(report(1, 3,
                   "0000c07f"
                   "0000807f"
                   "0000803f"));
    QCOMPARE(text("editP") + '/' + text("editI"), "nan/inf");
    click("btnSendPid");
    QVERIFY(lastNotice().contains(QStringLiteral("未发送")));
}

void TestPidPage::showsReportsOfTheSelectedChannel()
{
    receive(report(2, 1, "39300000") + report(2, 6, "64000000") + report(2, 3, "0000803f000000000000003f"));
    QCOMPARE(text("editTarget") + '/' + text("editPeriod") + '/' + text("editP"), "//0.567");
    select(2);
    QCOMPARE(text("editTarget") + '/' + text("editPeriod") + '/' + text("editP"), "12345/100/1.000");
    receive(report(2, 1, "ffffffff") + report(2, 6, "01000000") + report(2, 3, "cdcccc3d0000000000000000"));
    QCOMPARE(text("editTarget") + '/' + text("editPeriod") + '/' + text("editP"), "-1/1/0.1");
}

void TestPidPage::leavesTypingAlone()
{
    auto *target = child<QLineEdit>("editTarget");
    target->setFocus();
    QTest::keyClicks(target, "12");
    receive(report(1, 1, "63000000"));
    QCOMPARE(target->text(), "12");
    QTest::keyClick(target, Qt::Key_Return); // taken
    receive(report(1, 1, "63000000"));
    QCOMPARE(target->text(), "99");
}

void TestPidPage::followsStartAndStop()
{
    open();
    receive(report(1, 2, "01000000")); // before any start: absolute time
    const double absolute = (plot()->graph(5)->data()->constEnd() - 1)->key;
    QVERIFY(qAbs(absolute - double(QDateTime::currentMSecsSinceEpoch()) / 1000) < 5);
    receive(report(4, 4));
    QCOMPARE(startText(), kRunning);
    QCOMPARE(points(5), 0); // their keys would be fifty years away
    receive(report(1, 2, "01000000"));
    QVERIFY((plot()->graph(5)->data()->constEnd() - 1)->key < 5);
    receive(report(4, 5));
    QCOMPARE(startText(), kIdle);
    click("btnPidClear");
    receive(report(4, 4) + report(1, 2, "01000000"));
    const double t = (plot()->graph(5)->data()->constEnd() - 1)->key;
    QVERIFY(t >= 0 && t < 60); // on the same axis
}

void TestPidPage::plotsActualValues()
{
    receive(report(3, 1, "64000000") + report(3, 2, "00000080") + report(3, 2, "ffffff7f") +
            report(6, 2, "01000000") + report(3, 2, "05000000"));
    QCOMPARE(points(2), 2); // the run ended at channel 6
    receive({});
    QCOMPARE(points(2), 3);
    QCOMPARE(points(7), 3);
    QCOMPARE(plot()->graph(2)->data()->constBegin()->value, 100.0);
    QCOMPARE(plot()->graph(7)->data()->constBegin()->value, -2147483648.0);
    QTRY_COMPARE(child<QLabel>("curveValue7")->text(), "5");
    QCOMPARE(child<QLabel>("curveValue2")->text(), "100");
    QCOMPARE(plot()->yAxis->range(), QCPRange(-2147483648.0, 2147483647.0));
    QCOMPARE(plot()->xAxis->range().size(), 10.0);
    click("checkCurve7");
    QVERIFY(!plot()->graph(7)->visible());
    click("btnPidClear");
    QCOMPARE(points(7), 0);
    QVERIFY(!plot()->graph(7)->visible());
    QCOMPARE(plot()->graph(9)->pen().color(), QColor(0x42, 0x00, 0x80));
}

void TestPidPage::addsNothingWhileStopped()
{
    click("checkPidStopShow");
    receive(report(1, 2, "01000000") + report(1, 1, "09000000"));
    QCOMPARE(points(5), 0);
    QCOMPARE(text("editTarget"), ""); // the run ended; the rest waits
    receive({});
    QCOMPARE(text("editTarget"), "9");
    for (int i = 0; i < 1000; ++i) // what waits does not pile up
        receive(report(1, 2, "01000000").repeated(10));
    click("checkPidStopShow");
    receive({});
    QVERIFY(points(5) < 20);
}

void TestPidPage::startsAfreshWhenOpened()
{
    receive(hex("4f52564e010000000000000000")); // a length of 0
    receive(report(1, 1, "09000000"));
    const auto told = QStringLiteral("收到长度异常的数据帧，后续数据无法解析，请重新打开串口！");
    QTRY_VERIFY(!m_notices->isEmpty() && m_notices->last().at(0).toString() == told);
    receive(report(1, 1, "09000000"));
    QCOMPARE(text("editTarget"), ""); // it stays in front
    open();
    receive(report(1, 1, "09000000"));
    QCOMPARE(text("editTarget"), "9");
}

void TestPidPage::skipsAFalseLength()
{
    receive(hex("4f52564e01ffffff7f0200000000") + report(1, 2, "07000000") + report(1, 1, "09000000"));
    QCOMPARE(text("editTarget"), "");
    QTRY_COMPARE(text("editTarget"), "9");
    QCOMPARE(points(5), 0); // too late to be now
    receive(report(1, 2, "07000000"));
    QCOMPARE(points(5), 1);
}

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
    QCOMPARE(lastNotice(), QStringLiteral("串口[COM77]打开失败!!!"));
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

void TestPidPage::reportsWhatCannotBeSaved()
{
    for (int i = 0; i < 1000; ++i)
        receive(report(1, 2, "0c000000"));
    QFile old(m_root->filePath("old.csv"));
    QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    old.close();
    const QStringList failure(QStringLiteral("告警|文件保存失败!"));
    answer(m_root->filePath("no/such/folder.csv"));
    click("btnPidExport");
    QCOMPARE(m_warnings, failure);

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
