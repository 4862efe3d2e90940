// The serial page from its buttons to the wire and back, against a
// pseudo-terminal as the board.

#include "serialpagetest.h"

#include "apppaths.h"
#include "bytespool.h"
#include "qttexteditinput.h"
#include "settings.h"
#include "skin.h"
#include "stateindicator.h"
#include "waitfor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QSplitter>

class TestSerialPage : public SerialPageTest
{
    Q_OBJECT

private slots:
    void opensAndClosesWithNotices()
    {
        auto *display = child<QtTerminalWidget>("recvBrowser");
        const QString howToBegin = display->placeholderText();
        openPort();
        QCOMPARE(lastNotice(), QStringLiteral("串口[%1]打开成功!").arg(m_board->device()));
        QCOMPARE(lastKind(), 0);
        QVERIFY(display->placeholderText().contains(QStringLiteral("等待数据")));
        QVERIFY(isPortShownOpen());
        QVERIFY(child<StateIndicator>("stateIndicator")->isOn());
        QVERIFY(!isEnabled("comboPort") && !isEnabled("comboBaudRate"));
        click("btnOpen");
        QCOMPARE(lastNotice(), QStringLiteral("串口[%1]已关闭!!").arg(m_board->device()));
        QCOMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("打开串口"));
        QVERIFY(isEnabled("comboPort"));
        QVERIFY(!child<StateIndicator>("stateIndicator")->isOn());
        QCOMPARE(display->placeholderText(), howToBegin);
        doubleClick("btnOpen");
        QVERIFY(isPortShownOpen());
    }

    void namesWhatCannotBeOpened()
    {
        const QString baudRate = child<QComboBox>("comboBaudRate")->currentText();
        child<QComboBox>("comboBaudRate")->setEditText(QString());
        openPort();
        QCOMPARE(m_notices->count(), 1);
        QCOMPARE(lastNotice(), QStringLiteral("波特率为空或不是正整数，串口未打开！"));
        QVERIFY(!QSettings(AppPaths::configFile(), QSettings::IniFormat).contains("Serialport/BaudRate"));
        child<QComboBox>("comboBaudRate")->setEditText(baudRate);
        child<QComboBox>("comboPort")->setEditText(QString());
        click("btnOpen");
        QCOMPARE(lastError(), QStringLiteral("当前系统未检测到任何串口，请重试!!!"));
        openPort("no port at all");
        QCOMPARE(lastNotice(), QStringLiteral("串口[no port at all]打开失败!!!"));
        // What the system refuses comes with the reason.
        openPort(QStringLiteral("COM98 适配器"));
        QCOMPARE(noticeBefore(), QStringLiteral("串口[COM98 适配器]打开失败!!!"));
        QVERIFY(lastError().startsWith(QStringLiteral("串口不存在")));
        QVERIFY(isEnabled("comboPort"));

        // A port that another page of this program has.
        SerialportWidget other;
        other.findChild<QComboBox *>("comboPort")->setEditText(m_board->device());
        other.findChild<QAbstractButton *>("btnOpen")->click();
        openPort();
        QCOMPARE(lastNotice(), QStringLiteral("串口已在“串口调试助手”中打开，请先在那里关闭"));
    }

    void stepsFromTheShownBaudRate()
    {
        const std::tuple<const char *, Qt::Key, const char *> steps[] = {
            {"115200", Qt::Key_Down, "128000"}, {"115400", Qt::Key_Down, "128000"},
            {"115400", Qt::Key_Up, "115200"},   {"4000000", Qt::Key_Down, "4000000"},
            {"5000000", Qt::Key_Up, "4000000"}, {"", Qt::Key_Down, "1200"}};
        auto *box = child<QComboBox>("comboBaudRate");
        for (const auto &[typed, key, then] : steps) {
            box->setCurrentIndex(20);
            box->setEditText(typed);
            QTest::keyClick(box, key);
            QCOMPARE(box->currentText(), QString(then));
            box->setCurrentIndex(20);
            box->setEditText(typed);
            box->showPopup(); // on the rate shown, where the list has it
            QCOMPARE(box->currentIndex(), box->findText(typed) < 0 ? 20 : box->findText(typed));
            box->hidePopup();
        }
    }

    // The window goes on, and the port is closed when its last bytes have left.
    void closesWhenTheLastBytesHaveLeft()
    {
        openPort();
        const QByteArray bytes(300000, 'x');
        m_page->SltWriteDataToSerialport(bytes);
        const QSignalSpy closed(m_page.get(), &SerialportWidget::signalClosed);
        click("btnOpen");
        QCOMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("正在关闭…"));
        QVERIFY(!isEnabled("btnOpen"));
        QVERIFY(child<QAbstractButton>("btnOpen")->toolTip().contains(QStringLiteral("正在等待")));
        m_page->SltOpenSerialport(); // by the keyboard: not yet
        QVERIFY(lastNotice().contains(QStringLiteral("请稍候")));
        m_page->SltWriteDataToSerialport("no more");
        QVERIFY(!m_page->isClosed()); // quitting waits
        QCOMPARE(m_board->read(bytes.size(), 20000), bytes);
        QTRY_COMPARE(lastNotice(), QStringLiteral("串口[%1]已关闭!!").arg(m_board->device()));
        QCOMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("打开串口"));
        QVERIFY(isEnabled("btnOpen") && closed.count() == 1);
        openPort();
        receive("back");
    }

    // A line without a pause counts and shows nothing; but it says that it is busy.
    void saysThatItIsReceiving()
    {
        openPort();
        auto *label = child<QLabel>("labelGathering");
        child<QSpinBox>("spinQuietTime")->setValue(1000);
        QVERIFY(m_board->write("a"));
        QVERIFY(QTest::qWaitFor(
            [&] {
                m_page->sltInterruptDetection(); // as often as a line that has no pause
                return label->text() == QStringLiteral("正在接收… 1 字节");
            },
            20000));
        QVERIFY(label->isVisible());
        QCOMPARE(received(), qint64(0));
        QTRY_COMPARE_WITH_TIMEOUT(received(), qint64(1), 20000);
        QVERIFY(!label->isVisible());
        QCOMPARE(child<QLabel>("labelRecvCount")->text(), QStringLiteral("接收字节: 1")); // at once
    }

    void writesTheChosenParameters()
    {
        child<QComboBox>("comboBaudRate")->setEditText("250000");
        child<QComboBox>("comboStopBits")->setCurrentIndex(2);
        openPort();
        QSettings file(AppPaths::configFile(), QSettings::IniFormat);
        QCOMPARE(file.value("Serialport/BaudRate").toInt(), 250000);
        QCOMPARE(file.value("Serialport/DataBit").toInt(), 8);
        QCOMPARE(file.value("Serialport/StopBit").toInt(), 2);
        QCOMPARE(file.value("Serialport/Parity").toInt(), 0);
        click("btnOpen");

        // One and a half stop bits are refused by the system; the port stays open
        // and the user is told.
        child<QComboBox>("comboStopBits")->setCurrentIndex(1);
        openPort();
        QCOMPARE(noticeBefore(), QStringLiteral("串口[%1]打开成功!").arg(m_board->device()));
        QVERIFY(lastError().contains(QStringLiteral("停止位 1.5")));
        receive("works");
        QCOMPARE(shown(), QStringLiteral("works"));
    }

    void showsTheStoredDefaults()
    {
        const auto texts = [this] {
            QString all;
            for (const char *box : {"comboBaudRate", "comboDataBits", "comboStopBits", "comboParity"})
                all += child<QComboBox>(box)->currentText() + ' ';
            return all.trimmed();
        };
        Settings::SerialDefaults &defaults = Settings::instance().serial;
        defaults.baudRate = 1234567;
        defaults.stopBits = 0; // no entry has that text
        m_page->reloadSettings();
        QCOMPARE(texts(), QStringLiteral("1234567 8 1 无校验"));

        // An open port's parameters are shown until it closes.
        openPort();
        defaults.baudRate = 9600;
        defaults.dataBits = 5;
        defaults.stopBits = 2;
        defaults.parity = 1;
        m_page->reloadSettings();
        QCOMPARE(texts(), QStringLiteral("1234567 8 1 无校验"));
        click("btnOpen");
        QCOMPARE(texts(), QStringLiteral("9600 5 2 奇校验"));
    }

    void hintsAreFaintAndTabsGoFromThePanelToTheWork()
    {
        Skin::apply(1);
        for (const char *name : {"recvBrowser", "textEditSend", "multiEdit9"}) {
            const QPalette colors = child<QWidget>(name)->palette();
            QCOMPARE(colors.color(QPalette::PlaceholderText).rgb(), colors.color(QPalette::Text).rgb());
            QVERIFY2(colors.color(QPalette::PlaceholderText).alpha() < 200, name);
        }
        qApp->setStyleSheet(QString());
    }

    void aNewListClosesThePort()
    {
        m_page->SltSerialportChanged({"COM1 a", "COM2 b"});
        child<QComboBox>("comboPort")->setCurrentIndex(1);
        m_page->SltSerialportChanged({"COM0 new", "COM1 a", "COM2 b"});
        QCOMPARE(child<QComboBox>("comboPort")->currentText(), QStringLiteral("COM2 b"));
        openPort();
        const QString name = m_board->device();
        m_page->SltSerialportChanged({"COM1 a", name});
        QVERIFY(isPortShownOpen());
        QCOMPARE(child<QComboBox>("comboPort")->currentText(), name);
        // What came before counts, even when the line was not quiet yet.
        QVERIFY(m_board->write("tail"));
        m_page->SltSerialportChanged({"COM1 a", name + QStringLiteral(" 描述")});
        QCOMPARE(received(), qint64(4));
        QCOMPARE(lastError(), QStringLiteral("当前串口已拔出，请重新打开!"));
        QCOMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("打开串口"));
        m_page->SltSerialportChanged({"COM1 a"});
        QCOMPARE(m_notices->count(), 2); // told once
    }

    void aHangUpClosesThePort()
    {
        openPort();
        child<QtTextEditInput>("textEditSend")->setPlainText("ping");
        click("checkAutoSend");
        m_board->hangUp();
        QTRY_COMPARE(lastNotice(), QStringLiteral("当前串口已拔出，请重新打开!"));
        QCOMPARE(lastKind(), 255);
        QVERIFY(!child<QAbstractButton>("checkAutoSend")->isChecked());
        QCOMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("打开串口"));
        m_board = std::make_unique<PtyPeer>(); // and another board works
        openPort();
        receive("back");
        QCOMPARE(shown(), QStringLiteral("back"));
        QCOMPARE(m_notices->count(), 3); // each once
    }

    void waitsForALostDevice()
    {
        const QTemporaryDir folder;
        qputenv("KORVEX_VIRTUAL_PORTS", folder.path().toLocal8Bit());
        QVERIFY(QFile::link(m_board->device(), folder.filePath("COM3")));
        click("checkReconnect");
        openPort("COM3 虚拟串口");
        QVERIFY(isPortShownOpen());
        m_page->SltSerialportChanged({"COM3 虚拟串口", "COM9 another"}); // closes nothing
        receive("first");
        QCOMPARE(child<QComboBox>("comboPort")->currentText(), QStringLiteral("COM3 虚拟串口"));

        QVERIFY(QFile::remove(folder.filePath("COM3")));
        m_page->SltSerialportChanged({"COM9 another"});
        QCOMPARE(lastNotice(), QStringLiteral("串口[COM3]已断开，正在等待设备恢复"));
        QCOMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("停止等待"));
        QVERIFY(child<QLabel>("labelWaiting")->text().startsWith(QStringLiteral("正在等待COM3，自")));
        QCOMPARE(child<QComboBox>("comboPort")->currentText(), QStringLiteral("COM3"));
        QVERIFY(!isEnabled("comboPort"));
        child<QtTextEditInput>("textEditSend")->setPlainText("ping");
        click("btnSingleSend");
        QCOMPARE(m_page->counts().at(0), QStringLiteral("0"));
        QVERIFY(QFile::link(m_board->device(), folder.filePath("COM3")));
        QTRY_COMPARE(lastNotice(), QStringLiteral("串口[COM3]已重新连接"));
        QVERIFY(isPortShownOpen() && child<QLabel>("labelWaiting")->isHidden());
        receive("second");

        m_board->hangUp();
        QTRY_COMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("停止等待"));
        click("btnOpen");
        QCOMPARE(lastNotice(), QStringLiteral("已停止等待串口[COM3]"));
        QCOMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("打开串口"));
        QVERIFY(isEnabled("comboPort"));
        qunsetenv("KORVEX_VIRTUAL_PORTS");
    }

    // All choices but those that start something.
    void remembersItsPanel()
    {
        m_page->SltSerialportChanged({"COM1 a", "COM2 b"});
        child<QComboBox>("comboPort")->setCurrentIndex(1);
        emit child<QComboBox>("comboPort")->activated(1);
        child<QGroupBox>("linesGroup")->setChecked(true);
        for (const char *box : {"checkReconnect", "radioRecvHex", "checkTimeStamp", "checkLogMode",
                                "checkStopShow", "checkNewline", "radioSendHex", "checkDtr", "btnFold"})
            click(box);
        child<QSpinBox>("spinQuietTime")->setValue(25);
        child<QComboBox>("comboSendPage")->setCurrentIndex(1);
        child<QComboBox>("comboFlowControl")->setCurrentIndex(2);
        child<QCheckBox>("checkRts")->setCheckState(Qt::Checked);
        child<QLineEdit>("editAutoInterval")->setText("250");
        emit child<QLineEdit>("editAutoInterval")->editingFinished();

        m_page.reset();
        Settings::instance() = Settings();
        Settings::load(); // as the next start does
        m_page = std::make_unique<SerialportWidget>();
        m_page->SltSerialportChanged({"COM1 a", "COM2 b"});
        QCOMPARE(child<QComboBox>("comboPort")->currentText(), QStringLiteral("COM2 b"));
        for (const char *box : {"checkReconnect", "radioRecvHex", "checkTimeStamp", "checkLogMode",
                                "checkNewline", "radioSendHex"})
            QVERIFY2(child<QAbstractButton>(box)->isChecked(), box);
        for (const char *box : {"checkStopShow", "checkDtr"})
            QVERIFY2(!child<QAbstractButton>(box)->isChecked(), box);
        QVERIFY(child<QGroupBox>("linesGroup")->isChecked());
        QCOMPARE(child<QSpinBox>("spinQuietTime")->value(), 25);
        QCOMPARE(child<QComboBox>("comboSendPage")->currentIndex(), 1);
        QCOMPARE(child<QComboBox>("comboFlowControl")->currentIndex(), 2);
        QCOMPARE(child<QCheckBox>("checkRts")->checkState(), Qt::Checked);
        QCOMPARE(child<QLineEdit>("editAutoInterval")->text(), QStringLiteral("250"));
        QCOMPARE(child<QAbstractButton>("btnFold")->text(), QStringLiteral("显示配置界面"));
    }

    void keepsProfiles()
    {
        const auto choose = [this](const QString &entry) {
            QMenu *menu = child<QPushButton>("btnProfiles")->menu();
            emit menu->aboutToShow();
            for (QAction *action : menu->findChildren<QAction *>())
                if (action->text() == entry)
                    return action->trigger();
            QFAIL("no such entry");
        };
        DialogAnswers::instance().name = [](auto) { return QStringLiteral("电机/A&B"); };
        m_page->SltSerialportChanged({"COM1 a", "COM2 b"});
        child<QComboBox>("comboPort")->setCurrentIndex(1);
        child<QComboBox>("comboBaudRate")->setCurrentText("921600");
        child<QComboBox>("comboParity")->setCurrentIndex(2);
        child<QGroupBox>("linesGroup")->setChecked(true);
        click("checkDtr");
        click("radioRecvHex");
        choose("保存为方案…");
        QCOMPARE(lastNotice(), QStringLiteral("方案[电机/A&B]已保存"));
        QStringList entries;
        emit child<QPushButton>("btnProfiles")->menu()->aboutToShow();
        for (const QAction *action : child<QPushButton>("btnProfiles")->menu()->actions())
            entries += action->isSeparator() ? "-" : action->text() + (action->isChecked() ? " x" : "");
        QCOMPARE(entries.join('|'), QStringLiteral("电机/A&&B x|-|保存为方案…|导入…|导出|删除"));

        child<QComboBox>("comboBaudRate")->setCurrentText("9600");
        child<QComboBox>("comboParity")->setCurrentIndex(0);
        for (const char *box : {"checkDtr", "radioRecvText"})
            click(box);
        m_page->SltSerialportChanged({"COM1 a"});
        choose("电机/A&&B");
        QCOMPARE(noticeBefore(), QStringLiteral("已选用方案[电机/A&B]"));
        QCOMPARE(lastError(), QStringLiteral("方案中的串口[COM2]现在不存在"));
        m_page->SltSerialportChanged({"COM1 a", "COM2 b"});
        const auto chosen = [this] {
            return QString("%1 %2 %3 %4 %5")
                .arg(child<QComboBox>("comboPort")->currentText().left(4),
                     child<QComboBox>("comboBaudRate")->currentText())
                .arg(child<QComboBox>("comboParity")->currentIndex())
                .arg(child<QAbstractButton>("checkDtr")->isChecked())
                .arg(child<QAbstractButton>("radioRecvHex")->isChecked());
        };
        const QString expected = "COM2 921600 2 0 1";
        QCOMPARE(chosen(), expected);
        // What was opened last is not what was chosen.
        Settings::load();
        QCOMPARE(Settings::instance().serial.baudRate.value(), 115400);
        QVERIFY(!Settings::instance().serialPage.dtr);

        // Handed on as a file, changed by hand, and back.
        const QString file = m_root->filePath("motor.ini");
        chooseFile(file);
        const auto chooseFirst = [this](int submenu) {
            emit child<QPushButton>("btnProfiles")->menu()->aboutToShow();
            const auto menus = child<QPushButton>("btnProfiles")->menu()->findChildren<QMenu *>();
            menus.at(submenu)->actions().first()->trigger();
            emit child<QPushButton>("btnProfiles")->menu()->aboutToShow();
            return child<QPushButton>("btnProfiles")->menu()->actions().first()->text();
        };
        chooseFirst(0);
        Questions questions(1);
        choose("导入…");
        QCOMPARE(questions.asked, QStringList(QStringLiteral("方案“电机/A&B”已存在，是否覆盖？")));
        QCOMPARE(lastNotice(), QStringLiteral("已选用方案[电机/A&B]"));
        QCOMPARE(chosen(), expected);
        QSettings(file, QSettings::IniFormat).setValue("Serialport/BaudRate", "fast");
        choose("导入…");
        QCOMPARE(lastError(), QStringLiteral("方案[电机/A&B]中有1个值无效，保持原样：Serialport/BaudRate"));
        QCOMPARE(chosen(), expected);
        writeFile(file, "no profile");
        choose("导入…");
        QCOMPARE(lastError(), QStringLiteral("无法导入“motor.ini”：不是有效的方案文件"));

        openPort();
        choose("电机/A&&B");
        QCOMPARE(lastError(), QStringLiteral("方案[电机/A&B]未选用：请先关闭串口"));
        for (const int answer : {2, 1}) {
            Questions removing(answer);
            QCOMPARE(chooseFirst(1), QString(answer == 2 ? "电机/A&&B" : "保存为方案…"));
        }
        DialogAnswers::instance().name = nullptr;
    }

    // Although nothing is shown; and no byte of the last moment is missing.
    void logsTheSession()
    {
        const QString file = m_root->filePath("board.log");
        chooseFile(file);
        click("btnSessionLog");
        child<QComboBox>("comboLogForm")->setCurrentIndex(0);
        click("checkLogAppend");
        click("checkSessionLog");
        openPort();
        click("checkStopShow");
        receive("one");
        click("btnOpen");
        WAIT_FOR(!isPortShownOpen());
        openPort();
        m_board->write("two");
        m_page.reset();
        QCOMPARE(contentOf(file), QByteArray("onetwo"));
        m_page = std::make_unique<SerialportWidget>(); // goes on, as remembered
        openPort();
        receive("three");
        WAIT_EQUAL(contentOf(file), QByteArray("onetwothree"));
    }

    void showsHexTextAndTimes()
    {
        openPort();
        click("radioRecvHex");
        receive("\x0A\x1B\xFF");
        QCOMPARE(shown(), QStringLiteral("0A 1B FF "));
        click("radioRecvText");
        receive("\xce\xc2"); // GB18030 is the default
        QCOMPARE(shown(), QStringLiteral("0A 1B FF 温"));
        click("btnClearRecv");
        receive(QByteArray("\0\x1b[0m", 5));
        QCOMPARE(shown(), QString::fromLatin1("\0\x1b[0m", 5));
        click("btnClearRecv");
        click("checkTimeStamp");
        receive("one");
        click("radioRecvHex");
        receive("\x01");
        const QString stamp = QStringLiteral("\\[\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\]");
        const QRegularExpression plain("^" + stamp + " ASCII >\none" + stamp + " HEX >\n01 $");
        QVERIFY2(plain.match(shown()).hasMatch(), qPrintable(shown()));

        click("btnClearRecv");
        click("checkLogMode");
        click("radioRecvText");
        receive("a");
        click("radioRecvHex");
        receive("\x02");
        const QRegularExpression log("^\n" + stamp + " ASCII >\na\n" + stamp + " Hex >\n02 $");
        QVERIFY2(log.match(shown()).hasMatch(), qPrintable(shown()));
    }

    void countsWhatItDoesNotShow()
    {
        openPort();
        const QSignalSpy refreshes(m_page.get(), &SerialportWidget::signalRefresCounts);
        click("checkStopShow");
        receive("hidden");
        QCOMPARE(shown(), QString());
        QTRY_COMPARE(child<QLabel>("labelRecvCount")->text(), QStringLiteral("接收字节: 6"));
        QTRY_VERIFY(!refreshes.isEmpty());
        QCOMPARE(refreshes.last().at(0).toInt(), 0);
        const int before = refreshes.count();
        for (int i = 0; i < 100; ++i)
            m_page->SltWriteDataToSerialport("x");
        QVERIFY(refreshes.count() < before + 50); // not for each
        m_page->clearCounts();
        QCOMPARE(m_page->counts(), (QStringList{"0", "0"}));
        QCOMPARE(child<QLabel>("labelRecvCount")->text(), QStringLiteral("接收字节: 0"));
        QCOMPARE(m_page->spool().read(0, 100), QByteArray("hidden"));
    }

    void sendsAndCounts()
    {
        m_page->SltWriteDataToSerialport("dropped");
        QCOMPARE(m_page->counts().at(0), QStringLiteral("0"));
        openPort();
        auto *editor = child<QtTextEditInput>("textEditSend");
        editor->setPlainText("AT");
        click("checkNewline");
        click("btnSingleSend");
        QCOMPARE(m_board->read(4), QByteArray("AT\r\n"));
        click("radioSendHex");
        editor->setPlainText("00 ff");
        click("btnSingleSend");
        QCOMPARE(m_board->read(4), QByteArray("\x00\xff\r\n", 4));
        QTRY_COMPARE(child<QLabel>("labelSendCount")->text(), QStringLiteral("发送字节: 8"));

        // What is not accepted does not count.
        m_page->SltWriteDataToSerialport(QByteArray(17 * 1024 * 1024, 'x'));
        QCOMPARE(m_page->counts().at(0), QStringLiteral("8"));
        QCOMPARE(lastError(), QStringLiteral("设备长时间未接收数据，本次数据未发送！"));
    }

    // On all pages; an export that is not finished is completed before the program ends.
    void showsCurvesAndExportsThemBeforeItCloses()
    {
        const auto choose = [](const QMenu *menu, const QString &entry) {
            for (QAction *action : menu->actions())
                if (action->text() == entry)
                    action->trigger();
        };
        choose(child<QPushButton>("btnView")->menu(), "数值曲线");
        SerialportWidget other;
        other.show();
        QVERIFY(other.findChild<QWidget *>("curvePane"));
        Settings::instance().textCodec.set(0);
        QByteArray lines;
        for (int i = 0; i < 30000; ++i)
            lines += "a=" + QByteArray::number(i) + "\r\n";
        child<QtTerminalWidget>("recvBrowser")->showReceived(lines, {}, false);
        QTRY_COMPARE_WITH_TIMEOUT(child<QLabel>("labelCurveCounts")->text(), "已用 30000 行，跳过 0 行",
                                  30000);
        const QString file = m_root->filePath("curves.csv");
        chooseFile(file);
        choose(child<QPushButton>("btnCurveMore")->menu(), "导出CSV…");
        QVERIFY(!QFile::exists(file));
        QVERIFY(m_page->saveBeforeExit());
        QVERIFY(contentOf(file).endsWith(",29999\r\n"));
        click("btnCurveClose");
        other.hide();
        other.show();
        QTRY_VERIFY(!child<QWidget>("curvePane") && !other.findChild<QWidget *>("curvePane"));
    }

    void keepsTheHeightOfEachSendPage()
    {
        m_page->resize(800, 600);
        auto *split = child<QSplitter>("splitRecvSend");
        auto *pages = child<QComboBox>("comboSendPage");
        const auto height = [split] { return split->sizes().at(1); };
        const int lowest = height();
        pages->setCurrentIndex(1); // ten rows, which need more
        QTRY_VERIFY(height() > lowest);
        pages->setCurrentIndex(0);
        QTRY_COMPARE(height(), lowest);
        split->setSizes({300, 200});
        const int chosen = height();
        pages->setCurrentIndex(1);
        pages->setCurrentIndex(0);
        QTRY_COMPARE(height(), chosen);
    }
};

QTEST_MAIN(TestSerialPage)
#include "test_serialpage.moc"
