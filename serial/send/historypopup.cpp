#include "historypopup.h"

#include "fonts.h"
#include "placeholdertext.h"
#include "qtmessagebox.h"
#include "senttexts.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {

constexpr QSize kSize(420, 260);
constexpr int kShownCharacters = 200;

// One line of it.
QString shownText(const SendHistory::Entry &entry)
{
    QString text = entry.text.left(kShownCharacters);
    text.replace(QLatin1Char('\n'), QChar(0x21B5));
    return entry.isHex ? QStringLiteral("[HEX] ") + text : text;
}

} // namespace

HistoryPopup::HistoryPopup(SentTexts *texts, QWidget *parent)
    : QFrame(parent, Qt::Popup)
    , m_texts(texts)
    , m_search(new QLineEdit(this))
    , m_list(new QListWidget(this))
    , m_clear(new QPushButton(QStringLiteral("清空历史"), this))
{
    setObjectName(QStringLiteral("historyPopup"));
    setAttribute(Qt::WA_StyledBackground);
    m_search->setObjectName(QStringLiteral("editHistorySearch"));
    m_search->setPlaceholderText(QStringLiteral("输入文字查找"));
    PlaceholderText::keepFaint(m_search);
    m_search->setAccessibleName(QStringLiteral("查找发送历史"));
    m_list->setObjectName(QStringLiteral("listHistory"));
    m_list->setAccessibleName(QStringLiteral("发送历史"));
    m_list->setFont(Fonts::monospace());
    m_list->setToolTip(QStringLiteral("单击或按Enter放入编辑区，Delete删除"));
    m_clear->setObjectName(QStringLiteral("btnClearHistory"));
    m_search->installEventFilter(this);
    m_list->installEventFilter(this);
    auto *top = new QHBoxLayout;
    top->addWidget(m_search, 1);
    top->addWidget(m_clear);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(8, 8, 8, 8);
    column->setSpacing(4);
    column->addLayout(top);
    column->addWidget(m_list, 1);
    connect(m_search, &QLineEdit::textChanged, this, &HistoryPopup::fill);
    connect(m_list, &QListWidget::itemClicked, this, &HistoryPopup::choose);
    connect(m_clear, &QPushButton::clicked, this, &HistoryPopup::clearAll);
}

void HistoryPopup::showAbove(const QWidget *button)
{
    m_search->clear();
    fill();
    resize(kSize);
    const QRect screen = button->screen()->availableGeometry();
    QPoint corner = button->mapToGlobal(QPoint(button->width() - width(), -height()));
    if (corner.y() < screen.top())
        corner.setY(button->mapToGlobal(QPoint(0, button->height())).y());
    move(qMax(screen.left(), corner.x()), corner.y());
    show();
    m_search->setFocus();
}

void HistoryPopup::fill()
{
    m_list->clear();
    const QVector<SendHistory::Entry> &entries = m_texts->entries();
    for (int i = 0; i < entries.size(); ++i) {
        if (!entries.at(i).text.contains(m_search->text(), Qt::CaseInsensitive))
            continue;
        auto *item = new QListWidgetItem(shownText(entries.at(i)), m_list);
        item->setData(Qt::UserRole, i);
    }
    m_list->setCurrentRow(0);
    m_clear->setEnabled(!entries.isEmpty());
}

bool HistoryPopup::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QFrame::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent *>(event)->key();
    const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (isEnter)
        choose();
    else if (key == Qt::Key_Delete && watched == m_list)
        removeCurrent();
    else if ((key == Qt::Key_Down || key == Qt::Key_Up) && watched == m_search)
        m_list->setCurrentRow(
            qBound(0, m_list->currentRow() + (key == Qt::Key_Down ? 1 : -1), m_list->count() - 1));
    else
        return QFrame::eventFilter(watched, event);
    return true;
}

void HistoryPopup::choose()
{
    if (const QListWidgetItem *item = m_list->currentItem()) {
        const SendHistory::Entry entry = m_texts->entries().at(item->data(Qt::UserRole).toInt());
        hide();
        emit chosen(entry);
    }
}

void HistoryPopup::removeCurrent()
{
    if (const QListWidgetItem *item = m_list->currentItem()) {
        const int row = m_list->currentRow();
        m_texts->remove(m_texts->entries().at(item->data(Qt::UserRole).toInt()));
        fill();
        m_list->setCurrentRow(qMin(row, m_list->count() - 1));
    }
}

void HistoryPopup::clearAll()
{
    hide();
    if (QtMessageBox::question(parentWidget(), QStringLiteral("询问"),
                               QStringLiteral("确认清空全部发送历史吗？")) == 1)
        m_texts->clear();
}
