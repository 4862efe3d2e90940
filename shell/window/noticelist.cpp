#include "shell/window/noticelist.h"

#include "shell/base/framegeometry.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QScreen>
#include <QVBoxLayout>
#include <QVariant>

namespace {
constexpr int listWidth = 460;
constexpr int mostVisible = 10;
constexpr int mostHeight = 320;
} // namespace

NoticeList::NoticeList(const QVector<Notice> &notices, QWidget *parent)
    : QFrame(parent, Qt::Popup)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("noticeList"));
    auto *list = new QListWidget(this);
    list->setFrameShape(QFrame::NoFrame);
    list->setWordWrap(true);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    for (int i = notices.size() - 1; i >= 0; --i) {
        const Notice &notice = notices.at(i);
        const QString mark = notice.isError() ? QStringLiteral("[错误] ") : QString();
        list->addItem(notice.time.toString(QStringLiteral("hh:mm:ss")) + QStringLiteral("  ") + mark +
                      notice.text.simplified());
    }
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    layout->addWidget(list);
    ensurePolished();
    list->ensurePolished();
    // Only a list of its width knows how many lines a long notice takes.
    resize(listWidth, mostHeight);
    layout->activate();
    int needed = 6;
    for (int i = 0; i < qMin(list->count(), mostVisible); ++i)
        needed += list->visualItemRect(list->item(i)).height();
    resize(listWidth, qMin(needed, mostHeight));
    setFocusProxy(list);
}

void NoticeList::showAbove(QWidget *anchor, const QVector<Notice> &notices)
{
    auto *list = new NoticeList(notices, anchor);
    const QPoint corner = anchor->mapToGlobal({0, -list->height() - 4});
    list->move(
        FrameGeometry::keptInside({corner, list->size()}, anchor->screen()->availableGeometry()).topLeft());
    list->show();
    list->setFocus();
}

void NoticeList::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QFrame::keyPressEvent(event);
}
