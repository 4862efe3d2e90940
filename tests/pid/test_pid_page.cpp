// The PID page with a pseudo-terminal as its board: what is sent from the
// fields, what reports change, how the port closes, and the files it writes.

#include "answers.h"
#include "fulldisk.h"
#include "korvexresources.h"
#include "link.h"
#include "pageparts.h"
#include "piddebugwidget.h"
#include "pidplot.h"
#include "pidsession.h"
#include "ptypeer.h"
#include "qtserialport.h"
#include "settings.h"
#include "stateindicator.h"
#include "testfiles.h"

#include <QtTest>
#include <QtWidgets>

#include <termios.h>

namespace {

const auto kIdle = QString("启动");
const auto kRunning = QString("停止");

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

QByteArray report(int channel, int code, const char *payload = "")
{
    return PidFrame::build(static_cast<quint8>(code), static_cast<quint8>(channel), hex(payload));
}

const QByteArray kStart1 = hex("4f52564e010b0000001263");
const QByteArray kStop1 = hex("4f52564e010b0000001364");
const QByteArray kStop3 = hex("4f52564e030b0000001366");
const QByteArray kReset1 = hex("4f52564e010b0000001465");
const QByteArray kGains = report(1, 3, "0000c03f0000803e00000000"); // 1.5, 0.25, 0

} // namespace

class TestPidPage : public QObject, PageParts<PidDebugWidget>
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initKorvexResources();
        QLoggingCategory::setFilterRules(QString("default.debug=false"));
    }

    void init()
    {
        m_board = std::make_unique<PtyPeer>();
        makePage(1200, 460);
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
        m_questions = std::make_unique<Questions>(1);
    }

    void cleanup()
    {
        m_page.reset();
        m_board.reset();
        m_questions.reset();
    }

    void sendsCommands()
    {
        open();
        click("btnSendPid"); // the first text of the fields, 0.567
        QCOMPARE(m_board->read(23), hex("4f52564e011700000010e926113fe926113fe926113f8a"));
        select(2);
        type("editP", "1.5");
        type("editD", "0.0");
        type("editI", "2");
        press("editI", Qt::Key_Return);
        QCOMPARE(child<QLineEdit>("editI")->selectedText(), "2.0");
        QCOMPARE(m_board->read(23), hex("4f52564e0217000000100000c03f0000004000000000ad"));
        type("editTarget", "-2147483648x");
        press("editTarget", Qt::Key_Return);
        QCOMPARE(child<QLineEdit>("editTarget")->selectedText(), "-2147483648");
        QCOMPARE(m_board->read(15), hex("4f52564e020f0000001100000080e7"));
        type("editPeriod", "20");
        click("btnSendPeriod");
        QCOMPARE(m_board->read(15), hex("4f52564e020f00000015140000007f"));
        select(1);
        click("btnPidStart");
        QCOMPARE(startText(), kRunning);
        click("btnPidStart");
        QCOMPARE(startText(), kIdle);
        receive(report(1, 2, "01000000"));
        click("btnPidReset");
        QVERIFY(samples(1).isEmpty());
        QCOMPARE(m_board->read(33), kStart1 + kStop1 + kReset1);
        select(2); // what was sent is stored; the period is the board's to report
        QCOMPARE(texts() + '|' + integers(), "1.500/2.000/0.000|-2147483648/0");
        click("btnSendTarget");
        QCOMPARE(m_board->read(15), hex("4f52564e020f0000001100000080e7"));
    }

    void refusesValues()
    {
        open();
        const auto refuses = [this](const char *field, const char *button, const QString &text) {
            m_notices->clear();
            child<QLineEdit>(field)->setText(text);
            click(button);
            return lastNotice().contains(QString("为空或超出范围，未发送"));
        };
        for (const char *text : {"", "2147483648", "-2147483649"})
            QVERIFY2(refuses("editTarget", "btnSendTarget", text) &&
                         refuses("editPeriod", "btnSendPeriod", text),
                     text);
        for (const QString &text : {QString(), QString(50, '9') + ".0"})
            QVERIFY2(refuses("editD", "btnSendPid", text), qPrintable(text));
        click("btnPidReset");
        QCOMPARE(m_board->read(11), kReset1); // the first that arrives
        const auto paste = [this](const char *field, const QString &text) {
            m_notices->clear();
            child<QLineEdit>(field)->clear();
            child<QLineEdit>(field)->insert(text); // as pasting does
            if (text.isEmpty())
                press(field, Qt::Key_Return);
            return child<QLineEdit>(field)->text() + lastNotice();
        };
        child<QLineEdit>("editD")->clear();
        press("editD", Qt::Key_Left); // nothing is sent by that
        QVERIFY(!lastNotice().contains(QString("不完整")));
        QCOMPARE(paste("editP", " \t3.25 \n"), "3.25");
        QCOMPARE(paste("editTarget", " -300 "), "-300");
        QCOMPARE(paste("editP", "3,25"), QString("P、I、D值只能是小数，例如：3.25"));
        QCOMPARE(paste("editTarget", "3.5"), QString("目标值只能是整数，例如：300"));
        QCOMPARE(paste("editD", ""), QString("P、I、D值为空或不完整，未发送！"));
        QCOMPARE(paste("editTarget", ""), QString("目标值为空或不完整，未发送！"));
    }

    void sendsGainsInFull()
    {
        open();
        receive(report(1, 3, "e9d6fc3d95bfd6b301247449")); // 0.123456786, -1.00000001e-07, 1000000.06
        QCOMPARE(texts(), "0.123457/-1e-07/1e+06");
        click("btnSendPid");
        QCOMPARE(sentGains(), "e9d6fc3d95bfd6b301247449");
        select(2);
        select(1);
        QCOMPARE(texts(), "0.123/-0.000/1000000.063");
        QCOMPARE(child<QLineEdit>("editP")->toolTip(), "0.12345678");
        type("editD", "0.5");
        press("editI", Qt::Key_Return); // its text is the program's
        QCOMPARE(sentGains(), "e9d6fc3d95bfd6b30000003f");
        type("editP", "0.123"); // typed, the same text means what it says
        click("btnSendPid");
        QCOMPARE(sentGains().left(8), "6de7fb3d");
        receive(report(1, 3, "0000c07f0000807f0000803f"));
        QCOMPARE(texts(), "nan/inf/1");
        click("btnSendPid");
        QVERIFY(lastNotice().contains(QString("未发送")));
        receive(report(1, 3, "e9d6fc3d95bfd6b301247449"));
        type("editD", "0.5");
        select(2);
        select(1);
        click("btnSendPid");
        QCOMPARE(sentGains(), "e9d6fc3d95bfd6b30000003f"); // not what the texts of the others say
    }

    void keepsTypedText()
    {
        const QByteArray integersOf1 = report(1, 1, "63000000") + report(1, 6, "64000000"); // 99, 100
        const QByteArray allOf2 =
            report(2, 1, "39300000") + report(2, 6, "64000000") + report(2, 3, "0000803f000000000000003f");
        receive(allOf2); // another channel is selected
        QCOMPARE(texts() + '|' + integers(), "0.567/0.567/0.567|/");
        for (const auto &[field, text] :
             {std::pair{"editP", "3.0"}, {"editI", "4.0"}, {"editTarget", "12"}, {"editPeriod", "5"}})
            type(field, text);
        for (const char *button : {"btnSendPid", "btnSendTarget", "btnSendPeriod"})
            click(button); // the port is closed: still not sent
        receive(kGains + integersOf1);
        QCOMPARE(texts() + '|' + integers(), "3.0/4.0/0.567|12/5");
        QCOMPARE(child<QLineEdit>("editP")->toolTip(), QString("已修改，未发送；按Esc恢复为：1.5"));
        select(2); // has nothing typed
        QCOMPARE(texts() + '|' + integers(), "1.000/0.000/0.500|12345/100");
        receive(allOf2);
        QCOMPARE(texts() + '|' + integers(), "1/0/0.5|12345/100");
        select(1);
        QCOMPARE(texts() + '|' + integers(), "3.0/4.0/0.567|12/5");
        press("editP", Qt::Key_Escape);
        QCOMPARE(texts(), "1.500/0.250/0.000"); // what came meanwhile
        press("editPeriod", Qt::Key_Escape);
        QCOMPARE(integers(), "12/100");

        open(); // what is sent is not typed any more
        press("editTarget", Qt::Key_Return);
        type("editP", "3.0");
        press("editP", Qt::Key_Return);
        type("editPeriod", "5");
        click("btnSendPeriod");
        receive(integersOf1 + kGains);
        QCOMPARE(texts() + '|' + integers(), "1.5/0.25/0|99/100");
        select(2);
        select(1);
        QCOMPARE(texts() + '|' + integers(), "1.500/0.250/0.000|99/100");
        auto *target = child<QLineEdit>("editTarget");
        target->clear();
        target->insert(" 12 "); // as it was copied
        QVERIFY(target->text() == "12" && target->cursorPosition() == 2);
        target->setCursorPosition(0);
        target->insert("  3");
        QVERIFY(target->text() == "312" && target->cursorPosition() == 1);
    }

    void followsStartAndStop()
    {
        receive(report(1, 2, "01000000")); // before any start: absolute time
        QVERIFY(qAbs(samples(1).last().us - Link::nowUs()) < 60000000);
        QVERIFY(!recorder()->hasOrigin());
        child<QPushButton>("btnPidStart")->setText(kRunning);
        receive(report(4, 4)); // says nothing new
        QVERIFY(!recorder()->hasOrigin());
        receive(report(4, 5));
        QCOMPARE(startText(), kIdle);
        receive(report(4, 4));
        QCOMPARE(startText(), kRunning);
        QVERIFY(samples(1).isEmpty()); // it would be fifty years away
        receive(report(4, 5));
        receive(report(1, 2, "01000000"));
        const double first = recorder()->secondsOf(samples(1).last().us);
        QVERIFY(first >= 0 && first < 60);
        receive(report(4, 4) + report(1, 2, "01000000")); // on the same axis
        QCOMPARE(samples(1).size(), 2);
        QVERIFY(recorder()->secondsOf(samples(1).at(0).us) == first);
    }

    void showsActualValues()
    {
        receive(report(3, 1, "64000000") + report(3, 2, "00000080") + report(3, 2, "05000000"));
        QCOMPARE(m_page->actualReports(), 2ULL);
        QTRY_COMPARE(child<QLabel>("curveValue7")->text(), "5");
        QCOMPARE(child<QLabel>("curveValue2")->text(), "100");
        const auto moveTo = [this](const QPoint &position) {
            QMouseEvent move(QEvent::MouseMove, position, Qt::NoButton, Qt::NoButton, {});
            m_page->SltPlotMoveEvent(&move);
        };
        moveTo(plot()->axisRect()->center());
        QVERIFY(QToolTip::text().contains("CH3"));
        QVERIFY(plot()->item(0)->visible()); // the cursor
        moveTo(QPoint(0, 0));
        QVERIFY(!plot()->item(0)->visible());
        QTRY_VERIFY(!QToolTip::isVisible());
        plot()->xAxis->setRange(0, 3); // as dragging does
        QCOMPARE(child<QLabel>("labelPidFollow")->text(), QString("已暂停"));
        click("btnPidLive");
        QVERIFY(!child<QWidget>("btnPidLive")->isVisible());
        click("checkCurve7");
        QVERIFY(!plot()->graph(7)->visible());
        click("btnPidClear");
        QVERIFY(samples(3).isEmpty() && plot()->graph(7)->data()->isEmpty());
        QCOMPARE(child<QLabel>("curveValue7")->text(), "");
        QVERIFY(!plot()->graph(7)->visible());
        QCOMPARE(plot()->graph(9)->pen().color(), QColor(0x42, 0x00, 0x80));
        receive(report(3, 2, "05000000")); // as the one before
        QTRY_COMPARE(child<QLabel>("curveValue7")->text(), "5");
        click("checkPidStopShow");
        receive(report(3, 2, "06000000"));
        QCOMPARE(samples(3).size(), 1);
        click("checkPidFitAll");
        QVERIFY(PidDebugWidget().findChild<QCheckBox *>("checkPidFitAll")->isChecked()); // remembered
    }

    void tellsOfFalseLengths()
    {
        auto *session = m_page->findChild<PidSession *>();
        emit session->lengthSkipped();
        QCOMPARE(lastNotice(), QString("收到长度异常的数据帧，已跳过！"));
        emit session->blocked();
        QCOMPARE(lastNotice(), QString("收到长度异常的数据帧，后续数据无法解析，请重新打开串口！"));
        receive(hex("4f52564e010000000000000000") + report(1, 1, "0a000000"));
        QCOMPARE(texts({"editTarget"}), "");
        open();
        receive(report(1, 1, "0b000000"));
        QCOMPARE(texts({"editTarget"}), "11");
    }

    void refusesWithoutAPort()
    {
        for (const char *button : {"btnSendPid", "btnPidReset"})
            click(button);
        QVERIFY(m_questions->asked.isEmpty() && m_notices->isEmpty());
        click("btnPidStart");
        QCOMPARE(m_questions->asked, QStringList(QString("请确认是否打开串口！")));
        QCOMPARE(startText(), kIdle);
        child<QComboBox>("comboPidPort")->setEditText(QString("COM77 没有"));
        click("btnPidOpen");
        QCOMPARE(m_notices->at(m_notices->count() - 2).at(0).toString(),
                 QString("串口[COM77]打开失败!!!")); // and the reason
        for (const auto &[entry, told] : {std::pair(" ", "当前系统未检测到任何串口，请重试!!!"),
                                          std::pair("没有", "串口[没有]打开失败!!!")}) {
            child<QComboBox>("comboPidPort")->setEditText(QString(entry).trimmed());
            click("btnPidOpen");
            QCOMPARE(lastNotice(), QString(told));
        }
        // One button of the page stands out.
        for (const bool opened : {false, true}) {
            QCOMPARE(m_page->findChild<StateIndicator *>()->isOn(), opened);
            for (const char *box : {"comboPidPort", "comboPidBaudRate"})
                QCOMPARE(child<QComboBox>(box)->isEnabled(), !opened);
            QCOMPARE(child<QPushButton>("btnPidOpen")->property("primary").toBool(), !opened);
            QCOMPARE(child<QPushButton>("btnPidStart")->property("primary").toBool(), opened);
            if (!opened)
                open();
        }
        termios line{};
        tcgetattr(m_board->descriptor(), &line);
        QCOMPARE(line.c_cflag & (CSIZE | CSTOPB | PARENB), tcflag_t(CS8));
        QtSerialPort other;
        other.open(m_board->device(), 9600, 8, 0, 0);
        QVERIFY(other.reason().contains(QString("PID调试助手")));
    }

    void stopsBeforeClosing()
    {
        open();
        click("btnPidStart");
        select(3);
        click("btnPidOpen"); // the selected channel, and the one that was started
        QCOMPARE(startText(), kIdle);
        QCOMPARE(lastNotice(), QString("串口[%1]已关闭!!").arg(m_board->device()));
        QCOMPARE(m_board->read(33), kStart1 + kStop1 + kStop3);

        select(1);
        open();
        click("btnPidOpen"); // nothing runs: nothing is sent
        open();
        click("btnPidReset");
        QCOMPARE(m_board->read(11), kReset1);

        select(3);
        receive(report(3, 4));
        m_page.reset();
        QCOMPARE(m_board->read(11), kStop3);
    }

    void closesBesideADeafBoard()
    {
        open();
        for (int i = 0; i < 20000; ++i) // more than the line holds: the board does not read
            m_page->SendPidFrame(0x10, 1, QByteArray(12, '\0'));
        click("btnPidStart");
        click("btnPidOpen");
        QVERIFY(!isOpen() && startText() == kIdle);
    }

    void noticesAVanishedPort()
    {
        const auto vanished = QString("当前串口已拔出，请重新打开!");
        open();
        click("btnPidStart");
        m_page->SltSerialportChanged({m_board->device() + " USB", QString("COM9 ")});
        QVERIFY(isOpen()); // by name, not by description
        QCOMPARE(child<QComboBox>("comboPidPort")->itemText(1), QString("COM9 "));
        receive(hex("4f52564e01ffffff7f040000"));
        m_page->SltSerialportChanged({QString("COM9 ")});
        QVERIFY(!isOpen());
        QCOMPARE(startText(), kIdle);
        QCOMPARE(lastNotice(), vanished);
        receive(report(1, 1, "09000000")); // not behind what came before
        QCOMPARE(texts({"editTarget"}), "9");

        m_board = std::make_unique<PtyPeer>();
        open();
        click("btnPidStart");
        m_board->hangUp();
        QTRY_VERIFY(!isOpen());
        QCOMPARE(startText(), kIdle);
        QCOMPARE(lastNotice(), vanished);
    }

    void remembersItsFields()
    {
        open();
        child<QComboBox>("comboPidChannel")->setCurrentIndex(3);
        child<QComboBox>("comboPidZoom")->setCurrentIndex(1);
        child<QComboBox>("comboPidBaudRate")->setCurrentText("9600");
        emit child<QComboBox>("comboPidBaudRate")->activated(0);
        const QString device = child<QComboBox>("comboPidPort")->currentText();
        m_page.reset();
        Settings::instance() = Settings();
        Settings::load(); // as the next start does
        m_page = std::make_unique<PidDebugWidget>();
        m_page->SltSerialportChanged({"COM1 a", device, "COM2 b"});
        const QStringList shown{child<QComboBox>("comboPidPort")->currentText(),
                                child<QComboBox>("comboPidBaudRate")->currentText(),
                                child<QComboBox>("comboPidChannel")->currentText(),
                                child<QComboBox>("comboPidZoom")->currentText()};
        QCOMPARE(shown, QStringList({device, "9600", "CH4", QStringLiteral("Y轴缩放")}));
    }

    void exportsAndSaves()
    {
        receive(report(1, 1, "0a000000") + report(1, 2, "0c000000"));
        saveTo("btnPidExport", QString()); // "取消"
        QVERIFY(m_notices->isEmpty());
        saveTo("btnPidExport", file("a.csv"));
        QCOMPARE(lastNotice(), QString("文件已导出：") + file("a.csv"));
        QVERIFY(contentOf(file("a.csv")).contains("\n1,12,10,2\n\n\n"));
        for (const auto &[name, magic] : {std::pair{"p.png", "\x89PNG"}, std::pair{"p.pdf", "%PDF"}}) {
            saveTo("btnPidPicture", file(name));
            QCOMPARE(lastNotice(), QString("图片已保存：") + file(name));
            QVERIFY(contentOf(file(name)).startsWith(magic));
        }
    }

    void exportsLongCurvesBetweenEvents()
    {
        const auto record = [this](int channels) {
            for (int channel = 0; channel < channels; ++channel)
                for (int i = 0; i < 100000; ++i)
                    recorder()->addActual(channel, -i, i);
        };
        record(5);
        saveTo("btnPidExport", file("a.csv"));
        QVERIFY(m_notices->isEmpty() && !QFile::exists(file("a.csv"))); // more than fits into a moment
        click("btnPidExport");
        QVERIFY(lastNotice().contains(QString("尚未完成")));
        click("btnPidClear"); // the file has what was shown
        QTRY_VERIFY_WITH_TIMEOUT(lastNotice().startsWith(QString("文件已导出：")), 60000);
        QCOMPARE(contentOf(file("a.csv")).count('\n'), 1 + 5 * (2 + 100000 + 2));

        record(1);
        saveTo("btnPidExport", file("b.csv"));
        QVERIFY(m_page->saveBeforeExit()); // the rest at once
        QVERIFY(QFile::exists(file("b.csv")));
        saveTo("btnPidExport", file("b.csv/below.csv"));
        QVERIFY(!m_page->saveBeforeExit());
        QVERIFY(m_page->saveBeforeExit()); // the user knows
    }

    void reportsWhatCannotBeSaved()
    {
        receive(report(1, 2, "0c000000").repeated(1000));
        const QString old = file("old.csv");
        QVERIFY(writeFile(old, "old"));
        saveTo("btnPidExport", old + "/below.csv");
        QVERIFY(lastNotice().startsWith(old + QString("/below.csv 保存失败：")));
        QVERIFY(!lastNotice().endsWith("："));

        // As on a full disk: the file there stays as it was.
        std::optional<FullDisk> full(4096);
        saveTo("btnPidExport", old);
        saveTo("btnPidPicture", old);
        saveTo("btnPidPicture", file("new.pdf"));
        full.reset();
        QCOMPARE(m_questions->asked.count(QString("文件保存失败!")), 4);
        QVERIFY(!QFile::exists(file("new.pdf")));
        QCOMPARE(contentOf(old), QByteArray("old"));
    }

private:
    void type(const char *field, const QString &text)
    {
        child<QLineEdit>(field)->selectAll();
        QTest::keyClicks(child<QLineEdit>(field), text);
    }
    void press(const char *field, Qt::Key key) { QTest::keyClick(child<QLineEdit>(field), key); }
    // Of the fields, in the order of their names: "P/I/D".
    QString texts(const QList<const char *> &fields = {"editP", "editI", "editD"}) const
    {
        QStringList all;
        for (const char *field : fields)
            all << child<QLineEdit>(field)->text();
        return all.join('/');
    }
    QString integers() const { return texts({"editTarget", "editPeriod"}); }
    QString startText() const { return child<QPushButton>("btnPidStart")->text(); }
    bool isOpen() const { return child<QPushButton>("btnPidOpen")->text() == QString("关闭串口"); }
    void select(int channel) { child<QComboBox>("comboPidChannel")->setCurrentIndex(channel - 1); }
    void open()
    {
        child<QComboBox>("comboPidPort")->setEditText(m_board->device());
        doubleClick("btnPidOpen");
        QCOMPARE(lastNotice(), QString("串口[%1]打开成功!").arg(m_board->device()));
        QVERIFY(isOpen());
    }

    void receive(const QByteArray &bytes) { m_page->SltRecvFromSerialport(bytes); }
    QByteArray sentGains() { return m_board->read(23).mid(10, 12).toHex(); }
    PidPlot *plot() const { return child<PidPlot>("pidPlot"); }
    PidRecorder *recorder() const { return m_page->findChild<PidRecorder *>(); }
    const PidSamples &samples(int channel) const { return recorder()->samples().at(size_t(channel - 1)); }
    QString file(const QString &name) const { return m_root->filePath(name); }
    void saveTo(const char *button, const QString &fileName)
    {
        chooseFile(fileName);
        click(button);
    }

    std::unique_ptr<PtyPeer> m_board;
    std::unique_ptr<Questions> m_questions;
};

QTEST_MAIN(TestPidPage)
#include "test_pid_page.moc"
