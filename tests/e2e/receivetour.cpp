#include "loglines.h"
#include "payload.h"
#include "qtterminalwidget.h"
#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTest>

using Boardsim::Encoding;

namespace {

constexpr quint32 kSeed = 7;
const auto kUtf8 = QStringLiteral("utf8");
const auto kGb18030 = QStringLiteral("gb18030");

// So many bytes in bursts, as the board sends them.
QStringList bursts(int total, const QString &encoding, int pauseMs = 30)
{
    return {QStringLiteral("--mode"), QStringLiteral("burst"),      QStringLiteral("--total"),
            QString::number(total),   QStringLiteral("--encoding"), encoding,
            QStringLiteral("--seed"), QString::number(kSeed),       QStringLiteral("--burst-pause"),
            QString::number(pauseMs)};
}

QByteArray sentBytes(int total, Encoding encoding)
{
    return Boardsim::Payload(encoding, kSeed).take(total);
}

// The lines of a payload that ends with a whole line.
QString sentText(int lines)
{
    QString text;
    for (int line = 0; line < lines; ++line)
        text += Boardsim::Payload::line(quint32(line), kSeed, Encoding::Utf8);
    return text;
}

QString asShown(QString text)
{
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

QString hexadecimal(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper() + ' ');
}

} // namespace

void ReceiveTour::showsTheLog()
{
    constexpr int linesPerSecond = 40;
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("log"), QStringLiteral("--seed"),
                                   QString::number(kSeed), QStringLiteral("--rate"),
                                   QString::number(linesPerSecond)}));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")}));
    QVERIFY(stage().openPort(board));
    WAIT_FOR(stage().shownText().count(QLatin1Char('\n')) >= 60);
    QVERIFY(stage().closePort());

    // The newest line is in sight, and nothing got selected.
    const QScrollBar *bar = stage().terminal()->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    WAIT_EQUAL(bar->value(), bar->maximum());
    QVERIFY(!stage().terminal()->textCursor().hasSelection());

    const QString shown = stage().shownText();
    QString expected;
    for (quint32 line = 0; expected.size() < shown.size(); ++line)
        expected += Boardsim::logLine(line, qint64(line) * 1000 / linesPerSecond, kSeed) + QLatin1Char('\n');
    QCOMPARE(shown, expected.left(shown.size()));
}

void ReceiveTour::showsChinese_data()
{
    QTest::addColumn<QString>("codec");
    QTest::addColumn<QString>("encoding");
    QTest::newRow("UTF-8") << QStringLiteral("UTF-8") << kUtf8;
    QTest::newRow("GB18030") << QStringLiteral("GB18030") << kGb18030;
}

void ReceiveTour::showsChinese()
{
    QFETCH(QString, codec);
    QFETCH(QString, encoding);
    Encoding boardEncoding = Encoding::Binary;
    QVERIFY(Boardsim::encodingFromName(encoding, &boardEncoding));
    const QString text = sentText(400);
    const int total = Boardsim::encoded(text, boardEncoding).size();

    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, bursts(total, encoding)));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), codec}));
    QVERIFY(stage().openPort(board));
    WAIT_EQUAL(stage().receivedShown(), qint64(total));
    QVERIFY(text.contains(QStringLiteral("温度")) && text.contains(QStringLiteral("转速")));
    WAIT_EQUAL(stage().shownText(), asShown(text));
}

void ReceiveTour::showsHexadecimal()
{
    constexpr int total = 5000;
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, bursts(total, QStringLiteral("binary"))));
    QVERIFY(UserHand::click(stage().find<QWidget>("radioRecvHex")));
    QVERIFY(stage().openPort(board));
    WAIT_EQUAL(stage().receivedShown(), qint64(total));
    WAIT_EQUAL(stage().shownText(), hexadecimal(sentBytes(total, Encoding::Binary)));
}

void ReceiveTour::showsTimeStamps()
{
    BoardProcess board(QStringLiteral("COM5"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("shell")}));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")}));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkTimeStamp")));
    QVERIFY(stage().openPort(board));
    // Each answer comes in one piece and gets one header.
    const auto answer = QStringLiteral("boardsim 1.0, 模拟开发板\n");
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("version\n")));
    for (int asked = 1; asked <= 3; ++asked) {
        QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
        WAIT_EQUAL(stage().shownText().count(answer), asked);
    }
    static const QRegularExpression header(
        QStringLiteral("\\[[0-2]\\d:[0-5]\\d:[0-5]\\d\\.\\d{3}\\] ASCII >\n"));
    QString shown = stage().shownText();
    QCOMPARE(shown.count(header), 3);
    QCOMPARE(shown.replace(header, QStringLiteral("> ")), (QStringLiteral("> ") + answer).repeated(3));
}

void ReceiveTour::showsTheLatestInLogMode()
{
    const QString text = sentText(1500);
    const QByteArray bytes = text.toUtf8();
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, bursts(bytes.size(), kUtf8)));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")}));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkLogMode")));
    QVERIFY(stage().openPort(board));
    WAIT_EQUAL(stage().receivedShown(), qint64(bytes.size()));
    // The newest 20480 bytes; what the cut left of a first line is set aside.
    const auto wholeLines = [](const QString &shown) {
        return shown.mid(shown.indexOf(QLatin1Char('\n')) + 1);
    };
    const QString expected = asShown(QString::fromUtf8(bytes.right(20480)));
    WAIT_EQUAL(wholeLines(stage().shownText()), wholeLines(expected));
    QVERIFY(qAbs(stage().shownText().size() - expected.size()) <= 2);
}

void ReceiveTour::countsWhileNotShowing()
{
    constexpr int total = 20000;
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, bursts(total, kUtf8)));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkStopShow")));
    QVERIFY(stage().openPort(board));
    WAIT_EQUAL(stage().receivedShown(), qint64(total));
    QCOMPARE(stage().shownText(), QString());

    // The bytes are there all the same.
    Stage::answerFileDialogs(stage().file(QStringLiteral("hidden.bin")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSaveRecv")));
    QVERIFY(stage().waitForNotice(QStringLiteral("文件保存完成!"), Notice::Information));
    QCOMPARE(stage().content(QStringLiteral("hidden.bin")), sentBytes(total, Encoding::Utf8));
}

void ReceiveTour::savesText()
{
    auto *save = stage().find<QPushButton>("btnSaveRecv");
    QVERIFY(UserHand::click(save));
    QVERIFY(stage().waitForNotice(QStringLiteral("当前无数据需要保存！"), Notice::Information));

    const QString text = sentText(200);
    const int total = Boardsim::encoded(text, Encoding::Gb18030).size();
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, bursts(total, kGb18030)));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("GB18030")}));
    QVERIFY(stage().openPort(board));
    WAIT_EQUAL(stage().shownText(), asShown(text));

    // Through the real file dialog, by typing a name.
    const QString name = stage().file(QStringLiteral("接收.txt"));
    QVERIFY(UserHand::inDialog([save] { return UserHand::click(save); },
                               [&name](QWidget *dialog) {
                                   auto *field = dialog->findChild<QWidget *>(QStringLiteral("fileNameEdit"));
                                   return UserHand::typeInto(field, name) && UserHand::press(Qt::Key_Return);
                               }));
    QVERIFY(stage().waitForNotice(QStringLiteral("文件保存完成!"), Notice::Information));
    QCOMPARE(stage().content(QStringLiteral("接收.txt")),
             Boardsim::encoded(asShown(text), Encoding::Gb18030));
}

void ReceiveTour::savesBytes()
{
    constexpr int total = 20000;
    BoardProcess board(QStringLiteral("COM5"), stage().portsFolder());
    QVERIFY(stage().plugIn(board,
                           {QStringLiteral("--mode"), QStringLiteral("shell"), QStringLiteral("--encoding"),
                            QStringLiteral("binary"), QStringLiteral("--seed"), QString::number(kSeed)}));
    QVERIFY(stage().openPort(board));
    const auto flood = [this] {
        return UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("flood 20000\n")) &&
               UserHand::press(Qt::Key_Return, Qt::ControlModifier);
    };
    QVERIFY(flood());
    WAIT_EQUAL(stage().receivedShown(), qint64(total));
    // The bytes are those of the whole session, whatever is shown.
    QVERIFY(UserHand::click(stage().find<QWidget>("btnClearRecv")));
    QVERIFY(stage().closePort());
    QVERIFY(stage().openPort(board));
    QVERIFY(flood());
    WAIT_EQUAL(stage().receivedShown(), qint64(2 * total));

    Stage::answerFileDialogs(stage().file(QStringLiteral("data.bin")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSaveRecv")));
    QVERIFY(stage().waitForNotice(QStringLiteral("文件保存完成!"), Notice::Information));
    const QByteArray flooded = sentBytes(total, Encoding::Binary);
    QCOMPARE(stage().content(QStringLiteral("data.bin")), flooded + flooded);
}

void ReceiveTour::clears()
{
    constexpr int total = 3000;
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, bursts(total, kUtf8)));
    QVERIFY(stage().openPort(board));
    WAIT_EQUAL(stage().receivedShown(), qint64(total));
    WAIT_FOR(!stage().shownText().isEmpty());
    QVERIFY(UserHand::click(stage().find<QWidget>("btnClearRecv")));
    QCOMPARE(stage().shownText(), QString());
    QCOMPARE(stage().receivedShown(), qint64(total));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnClearCount")));
    QCOMPARE(stage().receivedShown(), qint64(0));
    QCOMPARE(stage().sentShown(), qint64(0));
}
