#include "qtmessagetip.h"
#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>

namespace {

const auto kRecord = QStringLiteral("record");
const auto kMode = QStringLiteral("--mode");

QStringList echo(const Stage &stage)
{
    return {kMode, QStringLiteral("echo"), QStringLiteral("--record"), stage.file(kRecord)};
}

bool tipShows(const QString &text)
{
    const QtMessageTip *tip = QtMessageTip::current();
    return tip && tip->isVisible() && tip->text() == text;
}

} // namespace

void SendTour::refusesWithoutAPort()
{
    const auto question = QStringLiteral("请确认通信设备是否打开?");
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("hello")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    QVERIFY(tipShows(question));
    QtMessageTip::current()->sltTimeOut();

    auto *byItself = stage().find<QCheckBox>("checkAutoSend");
    QVERIFY(UserHand::click(byItself));
    QVERIFY(tipShows(question));
    QVERIFY(!byItself->isChecked());
    QCOMPARE(stage().sentShown(), qint64(0));
}

void SendTour::sendsTypedText()
{
    BoardProcess board(QStringLiteral("COM4"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, echo(stage())));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("GB18030")}));
    QVERIFY(stage().openPort(board));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("AT+温度?\nOK")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));

    const QByteArray bytes = QByteArray::fromHex("41542B CEC2B6C8 3F 0A 4F4B");
    WAIT_EQUAL(stage().content(kRecord), bytes);
    WAIT_EQUAL(stage().shownText(), QStringLiteral("AT+温度?\nOK"));
    WAIT_EQUAL(stage().sentShown(), qint64(bytes.size()));
    WAIT_EQUAL(stage().receivedShown(), qint64(bytes.size()));

    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")}));
    QVERIFY(UserHand::press(Qt::Key_Return, Qt::ControlModifier));
    WAIT_EQUAL(stage().content(kRecord), bytes + QByteArray::fromHex("41542B E6B8A9E5BAA6 3F 0A 4F4B"));
    WAIT_EQUAL(stage().shownText(), QStringLiteral("AT+温度?\nOKAT+温度?\nOK"));

    // What was typed is there at the next start.
    WAIT_EQUAL(stage().content(QStringLiteral("conf/ser_send_data.txt")), QByteArray("AT+温度?\nOK"));
}

void SendTour::sendsNewLines()
{
    BoardProcess board(QStringLiteral("COM4"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, echo(stage())));
    QVERIFY(stage().openPort(board));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("one\ntwo")));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkNewline")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    WAIT_EQUAL(stage().content(kRecord), QByteArray("one\ntwo\r\n"));
    WAIT_EQUAL(stage().shownText(), QStringLiteral("one\ntwo\n"));
}

void SendTour::sendsHexadecimal()
{
    BoardProcess board(QStringLiteral("COM4"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, echo(stage())));
    QVERIFY(stage().openPort(board));
    QVERIFY(UserHand::click(stage().find<QWidget>("radioSendHex")));
    QVERIFY(UserHand::click(stage().find<QWidget>("radioRecvHex")));
    auto *editor = stage().find<QTextEdit>("textEditSend");
    QVERIFY(UserHand::typeInto(editor, QStringLiteral("0A 1b fF 7")));
    QVERIFY(UserHand::type(QStringLiteral("g")));
    QVERIFY(tipShows(QStringLiteral("当前在十六进制输入模式下，只能输入十六进制的字符。")));
    QCOMPARE(editor->toPlainText(), QStringLiteral("0A 1b fF 7"));

    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    QVERIFY(stage().waitForNotice(QStringLiteral("十六进制数据不完整或包含无效字符，末尾1个字符未发送！"),
                                  Notice::Error));
    WAIT_EQUAL(stage().content(kRecord), QByteArray("\x0A\x1B\xFF", 3));
    WAIT_EQUAL(stage().shownText(), QStringLiteral("0A 1B FF "));

    QVERIFY(UserHand::click(stage().find<QWidget>("checkNewline")));
    QVERIFY(UserHand::typeInto(editor, QStringLiteral("00")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    WAIT_EQUAL(stage().content(kRecord), QByteArray("\x0A\x1B\xFF\x00\x0D\x0A", 6));
    WAIT_EQUAL(stage().sentShown(), qint64(6));
}

void SendTour::sendsStoredRows()
{
    BoardProcess board(QStringLiteral("COM4"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, echo(stage())));
    QVERIFY(stage().openPort(board));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboSendPage"), QStringLiteral("多项发送")));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("multiEdit0"), QStringLiteral("AT+RST")));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("multiEdit9"), QStringLiteral("a#b")));
    QVERIFY(UserHand::click(stage().find<QWidget>("multiSend9")));
    WAIT_EQUAL(stage().content(kRecord), QByteArray("a#b"));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkNewline")));
    QVERIFY(UserHand::click(stage().find<QWidget>("multiSend0")));
    WAIT_EQUAL(stage().content(kRecord), QByteArray("a#bAT+RST\r\n"));

    QVERIFY(stage().closePort());
    QVERIFY(UserHand::click(stage().find<QWidget>("multiSend0")));
    QVERIFY(tipShows(QStringLiteral("请确认通信设备是否打开?")));
    WAIT_EQUAL(stage().sentShown(), qint64(11));
}

void SendTour::turnsAndKeepsRows()
{
    const auto list = QStringLiteral("conf/ser_multi_conf.txt");
    auto *first = stage().find<QLineEdit>("multiEdit0");
    auto *page = stage().find<QLineEdit>("pageEdit");
    auto *count = stage().find<QLabel>("pageCount");
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboSendPage"), QStringLiteral("多项发送")));
    QVERIFY(UserHand::typeInto(first, QStringLiteral("first page")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnNextPage")));
    QCOMPARE(page->text(), QStringLiteral("2"));
    QCOMPARE(first->text(), QString());
    QVERIFY(UserHand::typeInto(first, QStringLiteral("第二页")));

    QVERIFY(UserHand::click(stage().find<QWidget>("btnAddPage")));
    QCOMPARE(count->text(), QStringLiteral("/ 6"));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnLastPage")));
    QCOMPARE(page->text(), QStringLiteral("6"));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("multiEdit3"), QStringLiteral("last page")));
    QVERIFY(UserHand::typeInto(page, QStringLiteral("2")));
    QVERIFY(UserHand::press(Qt::Key_Return));
    QCOMPARE(first->text(), QStringLiteral("第二页"));
    QCOMPARE(stage().content(list), QByteArray("0#first page\n10#第二页\n53#last page\n"));

    // The second page goes, since the user agrees; what stood behind it moves down.
    auto *remove = stage().find<QPushButton>("btnDeletePage");
    QVERIFY(UserHand::inDialog([remove] { return UserHand::click(remove); },
                               [](QWidget *dialog) {
                                   return UserHand::click(
                                       dialog->findChild<QWidget *>(QStringLiteral("btnOk")));
                               }));
    QCOMPARE(count->text(), QStringLiteral("/ 5"));
    QCOMPARE(stage().content(list), QByteArray("0#first page\n43#last page\n"));

    QVERIFY(UserHand::click(stage().find<QWidget>("btnFirstPage")));
    QCOMPARE(first->text(), QStringLiteral("first page"));
    auto *clear = stage().find<QPushButton>("btnClearMulti");
    const auto answer = [clear](const char *button) {
        return UserHand::inDialog([clear] { return UserHand::click(clear); },
                                  [button](QWidget *dialog) {
                                      return UserHand::click(
                                          dialog->findChild<QWidget *>(QLatin1String(button)));
                                  });
    };
    QVERIFY(answer("btnCancel"));
    QCOMPARE(first->text(), QStringLiteral("first page"));
    QVERIFY(answer("btnOk"));
    QCOMPARE(first->text(), QString());
    QCOMPARE(stage().content(list), QByteArray("43#last page\n"));
}

void SendTour::sendsByItself()
{
    BoardProcess board(QStringLiteral("COM4"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, echo(stage())));
    QVERIFY(stage().openPort(board));
    auto *period = stage().find<QLineEdit>("editAutoInterval");
    QVERIFY(UserHand::typeInto(period, QStringLiteral("9")));
    QVERIFY(UserHand::press(Qt::Key_Return));
    QVERIFY(tipShows(QStringLiteral("自动发送周期不能小于10毫秒！")));
    QCOMPARE(period->text(), QStringLiteral("1000"));

    QVERIFY(UserHand::typeInto(period, QStringLiteral("20")));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("ping,")));
    auto *byItself = stage().find<QCheckBox>("checkAutoSend");
    QVERIFY(UserHand::click(byItself));
    WAIT_FOR(stage().content(kRecord).size() >= 40 * 5);
    QVERIFY(byItself->isChecked());

    QVERIFY(stage().closePort());
    QVERIFY(board.waitForEvent(QStringLiteral("host left")));
    QVERIFY(!byItself->isChecked());
    // Each byte that was counted went out, and nothing since.
    const QByteArray record = stage().content(kRecord);
    WAIT_EQUAL(stage().sentShown(), qint64(record.size()));
    QCOMPARE(record, QByteArray("ping,").repeated(record.size() / 5));
}

void SendTour::talksToAShell()
{
    BoardProcess board(QStringLiteral("COM5"), stage().portsFolder());
    QVERIFY(stage().plugIn(
        board, {kMode, QStringLiteral("shell"), QStringLiteral("--encoding"), QStringLiteral("gb18030")}));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("GB18030")}));
    QVERIFY(stage().openPort(board));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkNewline")));
    auto *editor = stage().find<QWidget>("textEditSend");
    QVERIFY(UserHand::typeInto(editor, QStringLiteral("led on")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    WAIT_EQUAL(stage().shownText(), QStringLiteral("LED 已打开\n"));
    QVERIFY(UserHand::typeInto(editor, QStringLiteral("led off")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    WAIT_EQUAL(stage().shownText(), QStringLiteral("LED 已打开\nLED 已关闭\n"));
}
