#include "workarea.h"

#include "codecbar.h"
#include "curvesplit.h"
#include "findbar.h"
#include "formpanel.h"
#include "logfind.h"
#include "placeholdertext.h"
#include "qtterminalwidget.h"
#include "receivestore.h"
#include "stateindicator.h"
#include "viewmenu.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <utility>

namespace {

constexpr int kCountPeriodMs = 250;
constexpr int kShownPattern = 60; // characters

} // namespace

WorkArea::WorkArea(QtSendBoxWidget::Owner owner, const QString &stem, const QString &closedHint,
                   const QString &openHint, QWidget *page)
    : QWidget(page)
    , m_page(page)
    , m_closedHint(closedHint)
    , m_openHint(openHint)
    , m_fold(new QPushButton(QStringLiteral("隐藏配置界面"), this))
    , m_state(new StateIndicator(this))
    , m_waiting(new QLabel(this))
    , m_gathering(new QLabel(this))
    , m_counts(new QWidget(this))
    , m_sendLabel(new QLabel(m_counts))
    , m_recvLabel(new QLabel(m_counts))
    , m_top(new QHBoxLayout)
    , m_tools(new QHBoxLayout)
    , m_findButton(new QPushButton(QStringLiteral("查找"), this))
    , m_stopped(new QPushButton(QStringLiteral("已停止显示"), this))
    , m_terminal(new QtTerminalWidget(this))
    , m_view(new ViewMenu(this))
    , m_codecBar(new CodecBar(this))
    , m_findBar(new FindBar(this))
    , m_find(new LogFind(m_terminal, m_findBar))
    , m_received(new ReceiveStore(m_terminal, stem, page))
    , m_sendBox(new QtSendBoxWidget(owner, this))
    , m_codec(Settings::instance().textCodec)
    , m_countTimer(this)
{
    buildUi();
    m_countTimer.setSingleShot(true);
    connect(&m_countTimer, &QTimer::timeout, this, &WorkArea::flushAndCount);
    connect(m_terminal, &QtTerminalWidget::clearRequested, this, &WorkArea::clearRequested);
    addShortcut(int(Qt::CTRL) + Qt::Key_L, [this] { emit clearRequested(); });
    addShortcut(int(Qt::CTRL) + Qt::Key_F, [this] { m_find->open(); });
    addShortcut(Qt::Key_F3, [this] { m_find->next(); });
    addShortcut(int(Qt::SHIFT) + Qt::Key_F3, [this] { m_find->previous(); });
    connect(m_view, &ViewMenu::changed, this, [this] { m_terminal->setView(m_view->options()); });
    connect(m_view, &ViewMenu::aboutToShow, this, [this] {
        m_view->setSavable(m_terminal->textCursor().hasSelection(), m_terminal->filter() != nullptr);
    });
    connect(m_view, &ViewMenu::saveSelectedRequested, m_received, &ReceiveStore::saveSelected);
    connect(m_view, &ViewMenu::saveFilteredRequested, m_received, &ReceiveStore::saveFiltered);
    connect(m_view, &ViewMenu::showAgainRequested, this, &WorkArea::showAgain);
    connect(m_terminal, &QtTerminalWidget::sequencesSeen, this, [this] {
        emit notify(
            Notice::information(QStringLiteral("收到ANSI转义序列，可在“视图”菜单中打开“解释ANSI转义序列”")));
    });
    page->addActions(m_view->menu()->actions());
    connect(m_view, &ViewMenu::changed, m_curves, &CurveSplit::load);
    connect(m_curves, &CurveSplit::choiceChanged, m_view, &ViewMenu::load);
    connect(m_curves, &CurveSplit::notify, this, &WorkArea::notify);
    connect(m_findButton, &QPushButton::clicked, m_find, &LogFind::open);
    connect(m_terminal, &QtTerminalWidget::textReceived, m_codecBar, &CodecBar::watch);
    connect(m_codecBar, &CodecBar::codecWanted, this, [this](int codec) {
        m_wasCodecWanted = true;
        emit codecWanted(codec);
    });
    connect(this, &WorkArea::codecSwitched, this, &WorkArea::handleCodec);
    connect(m_terminal, &QtTerminalWidget::recordFailed, this, [this] {
        emit notify(Notice::error(QStringLiteral("无法写入缓存文件，后续显示内容将无法保存为文本文件！")));
    });
    connect(m_terminal, &QtTerminalWidget::ruleGaveUp, this, [this](const QString &pattern) {
        emit notify(Notice::error(
            QStringLiteral("着色规则[%1]过于复杂，本次运行已停用！").arg(pattern.left(kShownPattern))));
    });
    connect(m_received, &ReceiveStore::notify, this, &WorkArea::notify);
    connect(m_sendBox, &QtSendBoxWidget::notify, this, &WorkArea::notify);
}

// The other page may have changed what is shown.
void WorkArea::showEvent(QShowEvent *event)
{
    reloadView();
    QWidget::showEvent(event);
    // The first time: once the splitter has its height.
    if (m_choices && m_sendHeights.isEmpty())
        QMetaObject::invokeMethod(this, &WorkArea::restoreSendHeight, Qt::QueuedConnection);
}

void WorkArea::restoreSendHeight()
{
    if (m_choices->sendHeight <= 0 || !m_sendHeights.isEmpty())
        return;
    const int height = m_choices->sendHeight;
    m_sendHeights.insert(m_sendPage, height);
    m_split->setSizes({m_split->height() - m_split->handleWidth() - height, height});
}

void WorkArea::remember(Settings::AreaChoices *choices)
{
    m_choices = choices;
    if (choices->isFolded)
        fold();
    connect(m_split, &QSplitter::splitterMoved, this,
            [this] { m_choices->sendHeight.change(m_sendBox->height()); });
}

void WorkArea::reloadView()
{
    m_view->load();
}

void WorkArea::reloadCodec()
{
    m_sendBox->showBytes();
    const int codec = Settings::instance().textCodec;
    m_codecBar->reload();
    if (std::exchange(m_codec, codec) != codec)
        emit codecSwitched();
}

// What was shown in the wrong codec is made again when the user switched because
// of it; otherwise the user may want that.
void WorkArea::handleCodec()
{
    if (std::exchange(m_wasCodecWanted, false))
        showAgain();
    else if (!m_terminal->received().isEmpty())
        emit notify(Notice::information(
            QStringLiteral("编码已切换，“视图”菜单中的“按当前编码重新显示”可重新解码已接收的内容")));
}

void WorkArea::addShortcut(const QKeySequence &key, const std::function<void()> &action)
{
    auto *shortcut = new QShortcut(key, m_page);
    shortcut->setContext(Qt::WidgetWithChildrenShortcut);
    connect(shortcut, &QShortcut::activated, this, action);
}

void WorkArea::addTool(QWidget *tool)
{
    m_tools->addWidget(tool);
    setTabOrder(m_view, tool);
}

void WorkArea::addBar(QWidget *bar)
{
    m_bars->addWidget(bar);
}

void WorkArea::addCommand(QAction *action)
{
    m_view->menu()->addSeparator();
    m_view->menu()->addAction(action);
}

void WorkArea::showHint(bool open)
{
    if (open) {
        m_terminal->beginTimes();
        m_codecBar->begin();
    }
    m_terminal->setPlaceholderText(open ? m_openHint : m_closedHint);
}

bool WorkArea::showsSent() const
{
    return m_view->options().showsSent;
}

void WorkArea::showSent(const QByteArray &bytes, bool hex, bool isLogMode)
{
    if (showsSent() && !bytes.isEmpty())
        m_terminal->showSent(bytes, hex, isLogMode);
}

void WorkArea::showAgain()
{
    if (!m_terminal->showAgain())
        emit notify(
            Notice::error(QStringLiteral("因磁盘空间不足，部分接收内容已不在缓存中，无法重新显示！")));
}

void WorkArea::showStopped(bool stopped)
{
    m_stopped->setVisible(stopped);
}

void WorkArea::showSendPage(int index)
{
    if (isVisible())
        m_sendHeights.insert(m_sendPage, m_sendBox->height());
    m_sendPage = index;
    m_sendBox->setCurrentPage(index);
    const int height = m_sendHeights.value(index, 1);
    m_split->setSizes({m_split->height() - m_split->handleWidth() - height, height});
}

void WorkArea::buildUi()
{
    showHint(false);
    m_terminal->setAccessibleName(QStringLiteral("接收区"));
    PlaceholderText::keepFaint(m_terminal);

    m_split = new QSplitter(Qt::Vertical, this);
    m_split->setObjectName(QStringLiteral("splitRecvSend"));
    m_split->setChildrenCollapsible(false);
    m_curves = new CurveSplit(m_terminal, buildDisplay(), m_split);
    m_split->addWidget(m_curves);
    m_split->addWidget(m_sendBox);
    m_split->setStretchFactor(0, 1);
    m_split->setStretchFactor(1, 0);
    m_split->setSizes({400, 1}); // the send box as low as it can be

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addLayout(buildTop());
    column->addWidget(m_split, 1);
}

QWidget *WorkArea::buildDisplay()
{
    auto *display = new QWidget(this);
    auto *column = new QVBoxLayout(display);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(m_terminal, 1);
    column->addWidget(m_codecBar);
    column->addWidget(m_findBar);
    m_bars = column;
    return display;
}

QLayout *WorkArea::buildTop()
{
    m_findButton->setObjectName(QStringLiteral("btnLogFind"));
    m_findButton->setToolTip(QStringLiteral("在全部接收内容中查找（Ctrl+F）"));
    m_stopped->setObjectName(QStringLiteral("btnResumeShow"));
    m_stopped->setToolTip(QStringLiteral("仍在接收、计数和记录，点击恢复显示"));
    m_stopped->hide();
    connect(m_stopped, &QPushButton::clicked, this, &WorkArea::resumeRequested);
    m_fold->setObjectName(QStringLiteral("btnFold"));
    m_recvLabel->setObjectName(QStringLiteral("labelRecvCount"));
    m_sendLabel->setObjectName(QStringLiteral("labelSendCount"));
    m_waiting->setMinimumWidth(1); // is cut before a button is
    m_gathering->setObjectName(QStringLiteral("labelGathering"));
    m_gathering->setProperty("kind", QStringLiteral("hint"));
    m_gathering->setToolTip(QStringLiteral("线路空闲达到“断帧间隔”后，这些数据才计数和显示"));
    m_gathering->hide();
    m_waiting->setObjectName(QStringLiteral("labelWaiting"));
    m_waiting->setProperty("kind", QStringLiteral("error"));
    m_waiting->hide();
    auto *counts = new QHBoxLayout(m_counts);
    counts->setContentsMargins(8, 0, 8, 0);
    counts->setSpacing(16);
    counts->addWidget(m_sendLabel);
    counts->addWidget(m_recvLabel);
    m_top->setSpacing(8);
    m_top->addWidget(m_fold);
    m_top->addWidget(m_findButton);
    m_top->addWidget(m_view);
    m_tools->setSpacing(8);
    m_top->addLayout(m_tools);
    m_top->addWidget(m_stopped);
    m_top->addStretch();
    m_top->addWidget(m_waiting);
    m_top->addWidget(m_gathering);
    m_top->addWidget(m_counts);
    m_top->addWidget(m_state);
    return m_top;
}

void WorkArea::placeBeside(FormPanel *panel, QWidget *lastField)
{
    m_panel = panel;
    auto *row = new QHBoxLayout(m_page);
    row->setContentsMargins(8, 4, 8, 6);
    row->setSpacing(8);
    row->addWidget(panel);
    row->addWidget(this, 1);
    // The area was made first, but follows the panel.
    QVector<QWidget *> parts;
    for (QWidget *part = m_fold; isAncestorOf(part); part = part->nextInFocusChain())
        if ((part->focusPolicy() & Qt::TabFocus) && !part->focusProxy())
            parts.append(part);
    for (QWidget *part : qAsConst(parts)) {
        setTabOrder(lastField, part);
        lastField = part;
    }
}

void WorkArea::fold()
{
    const bool hide = m_panel->isVisibleTo(m_page);
    m_panel->setVisible(!hide);
    m_fold->setText(hide ? QStringLiteral("显示配置界面") : QStringLiteral("隐藏配置界面"));
    if (m_choices)
        m_choices->isFolded.change(hide);
}

void WorkArea::refreshCounts()
{
    if (m_countTimer.isActive())
        return;
    const qint64 since = m_sinceCounts.isValid() ? m_sinceCounts.elapsed() : kCountPeriodMs;
    if (since >= kCountPeriodMs)
        flushAndCount();
    else
        m_countTimer.start(static_cast<int>(kCountPeriodMs - since));
}

void WorkArea::flushAndCount()
{
    m_received->flush();
    emit countsDue();
}

void WorkArea::showCounts(qint64 sent, qint64 received)
{
    m_countTimer.stop();
    m_sinceCounts.start();
    m_sendLabel->setText(QStringLiteral("发送字节: %1").arg(sent));
    m_recvLabel->setText(QStringLiteral("接收字节: %1").arg(received));
}

bool WorkArea::completeExport()
{
    return m_curves->completeExport();
}

void WorkArea::showWaiting(const QString &text)
{
    m_waiting->setText(text);
    m_waiting->setVisible(!text.isEmpty());
    fitCounts();
}

void WorkArea::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitCounts();
}

// The status bar has them as well.
void WorkArea::fitCounts()
{
    m_counts->hide();
    const int room = width() - m_top->sizeHint().width() - m_top->spacing();
    m_counts->setVisible(m_waiting->isHidden() && room >= m_counts->sizeHint().width());
}

void WorkArea::showGathering(qint64 bytes)
{
    m_gathering->setText(QStringLiteral("正在接收… %1 字节").arg(bytes));
    m_gathering->setVisible(bytes > 0);
}
