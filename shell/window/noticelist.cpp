#include "noticelist.h"

#include "framegeometry.h"

#include <QListWidget>
#include <QScreen>
#include <QVBoxLayout>
#include <QVariant>

namespace {
constexpr int kMinWidth = 320;
constexpr int kMaxVisible = 10;
constexpr int kMaxHeight = 320;
constexpr int kMargins = 40; // of an item and the scroll bar
constexpr int kIsError = Qt::UserRole;
} // namespace

NoticeList::NoticeList(const QVector<PostedNotice> &notices, QWidget *parent)
    : QFrame(parent, Qt::Popup)
    , m_list(new QListWidget(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("noticeList"));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setWordWrap(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setAccessibleName(QStringLiteral("最近的提示"));
    for (int i = notices.size() - 1; i >= 0; --i) {
        const PostedNotice &notice = notices.at(i);
        const QString mark = notice.isError() ? QStringLiteral("[错误] ") : QString();
        auto *item = new QListWidgetItem(notice.time.toString(QStringLiteral("hh:mm:ss")) +
                                             QStringLiteral("  ") + mark + notice.text.simplified(),
                                         m_list);
        item->setData(kIsError, notice.isError());
    }
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    layout->addWidget(m_list);
    setFocusProxy(m_list);
}

void NoticeList::setErrorColor(const QColor &color)
{
    m_errorColor = color;
    for (int i = 0; i < m_list->count(); ++i)
        if (m_list->item(i)->data(kIsError).toBool())
            m_list->item(i)->setForeground(color);
}

// As wide as the longest notice, where there is room; longer ones are wrapped.
void NoticeList::fitInto(int maxWidth)
{
    ensurePolished();
    m_list->ensurePolished();
    int width = kMinWidth;
    for (int i = 0; i < m_list->count(); ++i)
        width = qMax(width, m_list->fontMetrics().horizontalAdvance(m_list->item(i)->text()) + kMargins);
    width = qMin(width, maxWidth);
    // Only a list of its width knows how many lines a long notice takes.
    resize(width, kMaxHeight);
    layout()->activate();
    int needed = 6;
    for (int i = 0; i < qMin(m_list->count(), kMaxVisible); ++i)
        needed += m_list->visualItemRect(m_list->item(i)).height();
    resize(width, qMin(needed, kMaxHeight));
}

void NoticeList::showAbove(QWidget *anchor, const QVector<PostedNotice> &notices)
{
    auto *list = new NoticeList(notices, anchor);
    list->fitInto(qMax(kMinWidth, anchor->window()->width() - 16));
    const QPoint corner = anchor->mapToGlobal({0, -list->height() - 4});
    list->move(
        FrameGeometry::keptInside({corner, list->size()}, anchor->screen()->availableGeometry()).topLeft());
    list->show();
    list->setFocus();
}
