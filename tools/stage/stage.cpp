#include "stage.h"

#include "apppaths.h"
#include "dialoganswers.h"
#include "qtcountlabel.h"
#include "qtmessagetip.h"
#include "qtstatusbar.h"
#include "qtterminalwidget.h"
#include "settings.h"
#include "skin.h"
#include "userhand.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QPushButton>
#include <QStackedWidget>
#include <QTabBar>
#include <QTcpServer>
#include <QTest>

namespace {

qint64 numberIn(const QLabel *label, const QString &caption)
{
    return label->text().startsWith(caption) ? label->text().mid(caption.size()).toLongLong() : -1;
}

} // namespace

Stage::Surroundings::Surroundings()
{
    qputenv("KORVEX_VIRTUAL_PORTS", ports.path().toLocal8Bit());
    AppPaths::setRoot(root.path());
    AppPaths::makeFolders();
    Settings::writeDefaults();
    Settings::load();
    Skin::apply(Settings::instance().skin);
}

Stage::Stage()
{
    m_window.resize(1100, 760);
    m_window.show();
    QObject::connect(&m_watch, &QTimer::timeout, &m_window, [this] { closeForgottenDialog(); });
    m_watch.start(kWaitLimitMs);
    m_ready = QTest::qWaitForWindowActive(&m_window, kWaitLimitMs);
}

Stage::~Stage()
{
    DialogAnswers::instance() = DialogAnswers();
    if (QtMessageTip *tip = QtMessageTip::current())
        tip->sltTimeOut();
}

// An unexpected dialog would block everything that follows.
void Stage::closeForgottenDialog()
{
    QWidget *dialog = QApplication::activeModalWidget();
    if (dialog && dialog == m_dialog) {
        qCritical().noquote() << "unexpected dialog" << dialog->windowTitle();
        m_hadForgottenDialog = true;
        dialog->close();
    }
    m_dialog = dialog;
}

QWidget *Stage::shownPage()
{
    return m_window.findChild<QStackedWidget *>(QStringLiteral("pageStack"))->currentWidget();
}

bool Stage::showTool(int index)
{
    auto *tabs = find<QTabBar>("toolTabs");
    return UserHand::clickAt(tabs, tabs->tabRect(index).center()) && tabs->currentIndex() == index;
}

QByteArray Stage::content(const QString &name) const
{
    QFile source(file(name));
    return source.open(QIODevice::ReadOnly) ? source.readAll() : QByteArray();
}

bool Stage::plugIn(BoardProcess &board, const QStringList &options)
{
    if (!board.start(options)) {
        qWarning().noquote() << "the board did not start:" << board.errors();
        return false;
    }
    auto *ports = find<QComboBox>("comboPort");
    const QString entry = board.port() + QStringLiteral(" 虚拟串口");
    return QTest::qWaitFor([&] { return ports->findText(entry) >= 0; }, kWaitLimitMs);
}

bool Stage::openPort(const BoardProcess &board)
{
    const QString text = QStringLiteral("串口[%1]打开成功!").arg(board.port());
    return UserHand::choose(find<QComboBox>("comboPort"), board.port() + QStringLiteral(" 虚拟串口")) &&
           UserHand::click(find<QPushButton>("btnOpen")) && waitForNotice(text, Notice::Information) &&
           isOpenShown();
}

bool Stage::closePort()
{
    return isOpenShown() && UserHand::click(find<QPushButton>("btnOpen")) &&
           QTest::qWaitFor([this] { return !isOpenShown(); }, kWaitLimitMs);
}

bool Stage::isOpenShown()
{
    return find<QPushButton>("btnOpen")->text() == QStringLiteral("关闭串口");
}

QtTerminalWidget *Stage::terminal()
{
    return find<QtTerminalWidget>("recvBrowser");
}

QString Stage::shownText()
{
    return terminal()->toPlainText();
}

qint64 Stage::sentShown()
{
    return numberIn(find<QLabel>("sentCount"), QStringLiteral("发送字节数: "));
}

qint64 Stage::receivedShown()
{
    return numberIn(find<QLabel>("receivedCount"), QStringLiteral("接收字节数: "));
}

Notice Stage::lastNotice()
{
    const auto &notices = find<QtStatusBar>("statusBar")->notices().recent();
    return notices.isEmpty() ? Notice() : Notice(notices.last());
}

bool Stage::waitForNotice(const QString &text, Notice::Kind kind)
{
    const bool came =
        QTest::qWaitFor([&] { return lastNotice().text == text && lastNotice().kind == kind; }, kWaitLimitMs);
    if (!came)
        qWarning().noquote() << "last notice:" << lastNotice().kind << lastNotice().text << "instead of"
                             << text;
    return came;
}

quint16 Stage::freePort()
{
    QTcpServer probe;
    probe.listen();
    return probe.serverPort();
}

bool Stage::chooseSetting(const QStringList &path)
{
    return UserHand::chooseFromMenu(find<QPushButton>("btnSettings"), path);
}

void Stage::answerFileDialogs(const QString &name)
{
    DialogAnswers::instance().fileNames = [name](DialogAnswers::FileMode, const QString &, const QString &,
                                                 const QString &) { return QStringList{name}; };
}
