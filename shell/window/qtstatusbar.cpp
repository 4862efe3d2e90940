#include "qtstatusbar.h"

#include "noticelist.h"
#include "pagelamp.h"
#include "qtcountlabel.h"
#include "qtwidgetbase.h"
#include "statuslabel.h"

#include <QActionGroup>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QStyleOption>

namespace {

constexpr int kMaxTipCharacters = 300; // the list of recent notices has the rest
constexpr int kTipBreak = 16;          // a long name may be broken there

QString tipText(const PostedNotice &notice)
{
    QString text = notice.text.simplified();
    if (text.size() > kMaxTipCharacters)
        text = text.left(kMaxTipCharacters) + QStringLiteral("…");
    QString html;
    for (int i = 0; i < text.size(); i += kTipBreak)
        html += text.mid(i, kTipBreak).toHtmlEscaped() + QChar(0x200B);
    return QStringLiteral("<p>%1</p><p>%2 · 单击查看最近的提示</p>")
        .arg(html, notice.time.toString(QStringLiteral("hh:mm:ss")));
}

} // namespace

QtStatusBar::QtStatusBar(QWidget *parent)
    : QWidget(parent)
    , m_errorHold(this)
    , m_shown(this)
    , m_notice(new StatusLabel(this))
    , m_sent(new QtCountLabel(QStringLiteral("发送字节数"), this))
    , m_received(new QtCountLabel(QStringLiteral("接收字节数"), this))
    , m_logLamp(new PageLamp(QStringLiteral("会话日志正在记录，共%1个"), this))
    , m_answerLamp(new PageLamp(QStringLiteral("自动应答已启用，共%1个页面"), this))
    , m_codec(new QPushButton(this))
    , m_clear(new QPushButton(QStringLiteral("清空计数"), this))
{
    setObjectName(QStringLiteral("statusBar"));
    setFixedHeight(32);
    m_sent->setObjectName(QStringLiteral("sentCount"));
    m_received->setObjectName(QStringLiteral("receivedCount"));
    m_clear->setObjectName(QStringLiteral("btnClearCount"));
    m_clear->setToolTip(QStringLiteral("将当前页面的收发字节数清零"));

    m_logLamp->setObjectName(QStringLiteral("labelLogLamp"));
    m_answerLamp->setObjectName(QStringLiteral("labelAnswerLamp"));

    m_codec->setObjectName(QStringLiteral("btnCodec"));
    m_codec->setFlat(true);
    m_codec->setToolTip(QStringLiteral("收发文本的编码"));
    m_codec->setMenu(new QMenu(m_codec));

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 3, 8, 3);
    layout->setSpacing(16);
    layout->addWidget(m_notice, 1);
    layout->addWidget(m_answerLamp);
    layout->addWidget(m_logLamp);
    layout->addWidget(m_codec);
    layout->addWidget(m_sent);
    layout->addWidget(m_received);
    layout->addWidget(m_clear);

    m_errorHold.setSingleShot(true);
    m_errorHold.setInterval(errorHoldMs);
    connect(&m_errorHold, &QTimer::timeout, this, &QtStatusBar::sltEndErrorHold);
    m_shown.setSingleShot(true);
    connect(&m_shown, &QTimer::timeout, this, &QtStatusBar::sltEndNotice);
    connect(m_notice, &StatusLabel::clicked, this, &QtStatusBar::sltShowRecent);
    connect(m_clear, &QPushButton::clicked, this, &QtStatusBar::clearCount);
}

void QtStatusBar::showCounts(const QStringList &counts)
{
    QtCountLabel *labels[] = {m_sent, m_received};
    for (int i = 0; i < 2; ++i) {
        if (i < counts.size())
            labels[i]->setCount(counts.at(i));
        else
            labels[i]->clearCount();
    }
}

void QtStatusBar::setCodecs(const QStringList &names)
{
    QMenu *menu = m_codec->menu();
    auto *group = new QActionGroup(menu);
    for (int i = 0; i < names.size(); ++i) {
        QAction *action = menu->addAction(names.at(i));
        action->setCheckable(true);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, i] { emit codecChosen(i); });
    }
}

void QtStatusBar::showCodec(int index)
{
    QAction *action = m_codec->menu()->actions().at(index);
    action->setChecked(true);
    m_codec->setText(action->text());
    m_codec->setAccessibleName(QStringLiteral("文本编码 %1").arg(action->text()));
}

void QtStatusBar::showLog(const QObject *page, const QString &text, bool isFailing)
{
    m_logLamp->setState(page, text, isFailing);
}

void QtStatusBar::showAnswers(const QObject *page, const QString &text, bool isFailing)
{
    m_answerLamp->setState(page, text, isFailing);
}

void QtStatusBar::showSystemNotify(const QString &text, int kind)
{
    const Notice notice{text, kind == Notice::Information ? Notice::Information : Notice::Error};
    if (m_log.add({notice, QDateTime::currentDateTime(), qobject_cast<QtWidgetBase *>(sender())}))
        showCurrent();
}

void QtStatusBar::sltEndErrorHold()
{
    m_errorHold.stop();
    if (m_log.endHold())
        showCurrent();
    else
        endForeignNotice();
}

void QtStatusBar::sltEndNotice()
{
    m_log.endCurrent();
    m_notice->showIdle();
}

void QtStatusBar::showPage(const QObject *page)
{
    m_page = page;
    m_logLamp->showPage(page);
    m_answerLamp->showPage(page);
    if (!m_log.isHolding())
        endForeignNotice();
}

void QtStatusBar::endForeignNotice()
{
    const QObject *page = m_log.current().page;
    if (page && m_page && page != m_page)
        sltEndNotice();
}

void QtStatusBar::sltShowRecent()
{
    if (!m_log.recent().isEmpty())
        NoticeList::showAbove(m_notice, m_log.recent());
}

void QtStatusBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}

void QtStatusBar::showCurrent()
{
    const PostedNotice &notice = m_log.current();
    m_notice->showNotice(notice.text, notice.isError());
    m_notice->setToolTip(tipText(notice));
    m_shown.start(notice.isError() ? errorShownMs : informationShownMs);
    if (m_log.isHolding())
        m_errorHold.start();
}
