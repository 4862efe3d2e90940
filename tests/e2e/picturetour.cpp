#include "shell/base/qtmessagetip.h"
#include "tests/e2e/stage.h"
#include "tests/e2e/tours.h"
#include "tests/e2e/userhand.h"

#include <QComboBox>
#include <QDir>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QTabBar>
#include <QTest>

namespace {

struct Skin
{
    const char *name;
    QString text;
};
const Skin kSkins[] = {
    {"dark", QStringLiteral("深色")}, {"light", QStringLiteral("浅色")}, {"yellow", QStringLiteral("黄色")}};
const char *const kTools[] = {"serial", "camera", "network", "pid", "hexedit"};

void addSkins()
{
    QTest::addColumn<QString>("skin");
    QTest::addColumn<QString>("text");
    for (const Skin &skin : kSkins)
        QTest::newRow(skin.name) << QString::fromLatin1(skin.name) << skin.text;
}

// Whether the screen shows the window, small things in front of it aside.
bool shows(const QImage &screen, const QImage &window)
{
    if (screen.size() != window.size())
        return false;
    int seen = 0;
    int equal = 0;
    for (int y = 0; y < window.height(); y += 7) {
        for (int x = 0; x < window.width(); x += 7, ++seen)
            equal += (screen.pixel(x, y) | 0xFF000000) == (window.pixel(x, y) | 0xFF000000);
    }
    return equal >= seen * 8 / 10;
}

// What the screen shows at a window's place, as soon as it has come to rest.
// A new window takes a while to be placed and painted.
QPixmap onScreen(QWidget *widget)
{
    QWidget *window = widget->window();
    QPixmap last;
    const bool rested = QTest::qWaitFor([&] {
        const QRect place(window->mapToGlobal({0, 0}), window->size());
        const QPixmap now =
            window->screen()->grabWindow(0, place.x(), place.y(), place.width(), place.height());
        const bool still = !last.isNull() && now.toImage() == last.toImage();
        last = now;
        return still && shows(now.toImage(), window->grab().toImage());
    });
    return rested ? last : QPixmap();
}

} // namespace

PictureTour::PictureTour(const QString &folder)
    : m_folder(folder)
{
    QDir().mkpath(folder);
}

void PictureTour::save(const QString &name, const QPixmap &picture) const
{
    QVERIFY(!picture.isNull());
    QVERIFY(picture.save(QStringLiteral("%1/%2.png").arg(m_folder, name)));
}

bool PictureTour::chooseSkin(const QString &skin)
{
    return stage().chooseSetting({QStringLiteral("主题"), skin}) &&
           stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")});
}

void PictureTour::tools_data()
{
    addSkins();
}

void PictureTour::tools()
{
    QFETCH(QString, skin);
    QFETCH(QString, text);
    QVERIFY(chooseSkin(text));
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("log"), QStringLiteral("--rate"),
                                   QStringLiteral("15")}));
    QVERIFY(stage().openPort(board));
    QVERIFY(
        UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("AT+VERSION\n读取温度")));
    WAIT_FOR(stage().shownText().count(QLatin1Char('\n')) >= 30);
    auto *tabs = stage().find<QTabBar>("toolTabs");
    for (int i = 0; i < tabs->count(); ++i) {
        QVERIFY(UserHand::clickAt(tabs, tabs->tabRect(i).center()));
        save(QStringLiteral("%1-%2").arg(QLatin1String(kTools[i]), skin), onScreen(tabs));
    }
    if (skin == QLatin1String("dark")) { // as a window is at the least
        QVERIFY(UserHand::clickAt(tabs, tabs->tabRect(0).center()));
        stage().window().resize(800, 500);
        WAIT_EQUAL(stage().window().size(), QSize(800, 500));
        save(QStringLiteral("serial-small"), onScreen(tabs));
    }
}

void PictureTour::sendPages()
{
    BoardProcess board(QStringLiteral("COM5"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("shell")}));
    QVERIFY(chooseSkin(QStringLiteral("浅色")));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkTimeStamp")));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkNewline")));
    QVERIFY(stage().openPort(board));
    auto *pages = stage().find<QComboBox>("comboSendPage");
    QVERIFY(UserHand::choose(pages, QStringLiteral("多项发送")));
    const QString commands[] = {QStringLiteral("help"), QStringLiteral("version"), QStringLiteral("led on"),
                                QStringLiteral("adc")};
    int place = 0;
    for (const QString &command : commands) {
        QVERIFY(UserHand::typeInto(
            stage().find<QWidget>(qPrintable(QStringLiteral("multiEdit%1").arg(place))), command));
        const qint64 before = stage().receivedShown();
        QVERIFY(UserHand::click(stage().find<QWidget>(qPrintable(QStringLiteral("multiSend%1").arg(place)))));
        WAIT_FOR(stage().receivedShown() > before);
        ++place;
    }
    save(QStringLiteral("multisend"), onScreen(pages));
    QVERIFY(UserHand::choose(pages, QStringLiteral("发送文件")));
    save(QStringLiteral("filesend"), onScreen(pages));
    QVERIFY(UserHand::choose(pages, QStringLiteral("单项发送")));
    QVERIFY(UserHand::click(stage().find<QWidget>("radioRecvHex")));
    QVERIFY(UserHand::click(stage().find<QWidget>("radioSendHex")));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("61 64 63 0D 0A 7")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    WAIT_FOR(stage().shownText().contains(QStringLiteral("HEX >")));
    save(QStringLiteral("hexadecimal"), onScreen(pages));
}

void PictureTour::menus_data()
{
    addSkins();
}

void PictureTour::menus()
{
    QFETCH(QString, skin);
    QFETCH(QString, text);
    QVERIFY(chooseSkin(text));
    auto *settings = stage().find<QPushButton>("btnSettings");
    const auto take = [this, skin](const char *name) {
        return [this, skin, name] {
            save(QStringLiteral("%1-%2").arg(QLatin1String(name), skin), onScreen(&stage().window()));
        };
    };
    QVERIFY(UserHand::visitMenu(settings, {QStringLiteral("数据缓存"), QStringLiteral("自动保存")},
                                take("menu-settings")));
    QVERIFY(UserHand::visitMenu(stage().find<QPushButton>("btnHelpMenu"), {QStringLiteral("检查版本更新")},
                                take("menu-help")));
}

void PictureTour::dialogs_data()
{
    addSkins();
}

void PictureTour::dialogs()
{
    QFETCH(QString, skin);
    QFETCH(QString, text);
    QVERIFY(chooseSkin(text));
    const auto visit = [this, &skin](const char *name, const std::function<bool()> &opens) {
        return UserHand::inDialog(opens, [this, &skin, name](QWidget *dialog) {
            save(QStringLiteral("%1-%2").arg(QLatin1String(name), skin), onScreen(dialog));
            return UserHand::press(Qt::Key_Escape);
        });
    };
    QVERIFY(visit("messagebox", [this] { return stage().chooseSetting({QStringLiteral("恢复默认设置")}); }));
    QVERIFY(visit("style", [this] { return stage().chooseSetting({QStringLiteral("接收区设置")}); }));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("数据")));
    QVERIFY(visit("file", [this] { return UserHand::click(stage().find<QWidget>("btnLoadDataFile")); }));
}

void PictureTour::tips()
{
    QVERIFY(chooseSkin(QStringLiteral("浅色")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    QVERIFY(QtMessageTip::current() && QtMessageTip::current()->isVisible());
    save(QStringLiteral("tip-notice"), onScreen(&stage().window()));

    auto *period = stage().find<QLineEdit>("editAutoInterval");
    QVERIFY(UserHand::typeInto(period, QStringLiteral("5")));
    QVERIFY(UserHand::press(Qt::Key_Return));
    QCOMPARE(QtMessageTip::current()->tipStyle(), QtMessageTip::Bubble);
    save(QStringLiteral("tip-bubble"), onScreen(&stage().window()));
}
