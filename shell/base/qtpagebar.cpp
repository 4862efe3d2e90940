#include "qtpagebar.h"

#include "qtmessagetip.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegExpValidator>

QtPageBar::QtPageBar(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(5, 5, 0, 5);
    layout->setSpacing(10);
    layout->addStretch();
    addButton(QStringLiteral("btnAddPage"), QStringLiteral("添加一页"), &QtPageBar::SltAddNewPage);
    addButton(QStringLiteral("btnDeletePage"), QStringLiteral("删除当前页"),
              &QtPageBar::SltDeleteCurrentPage);
    addButton(QStringLiteral("btnFirstPage"), QStringLiteral("首页"), &QtPageBar::SltJumpFirshPage);
    QPushButton *previous =
        addButton(QStringLiteral("btnPrevPage"), QStringLiteral("<"), &QtPageBar::SltPrevPage);
    previous->setToolTip(QStringLiteral("上一页"));
    previous->setAccessibleName(previous->toolTip());

    m_pageEdit = new QLineEdit(this);
    m_pageEdit->setObjectName(QStringLiteral("pageEdit"));
    m_pageEdit->setAccessibleName(QStringLiteral("页码"));
    m_pageEdit->setFixedSize(24, 22);
    m_pageEdit->setAlignment(Qt::AlignCenter);
    m_pageEdit->setTextMargins(-3, 0, -3, 0); // two digits, not cut by the field's inner margins
    m_pageEdit->setValidator(new QRegExpValidator(QRegExp(QStringLiteral("[0-9]{1,2}")), m_pageEdit));
    m_pageEdit->setToolTip(QStringLiteral("输入页码后按回车跳转"));
    connect(m_pageEdit, &QLineEdit::returnPressed, this, &QtPageBar::SltJumpPage);
    layout->addWidget(m_pageEdit);

    m_countLabel = new QLabel(this);
    m_countLabel->setObjectName(QStringLiteral("pageCount"));
    m_countLabel->setFixedSize(24, 22);
    m_countLabel->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_countLabel);

    QPushButton *next =
        addButton(QStringLiteral("btnNextPage"), QStringLiteral(">"), &QtPageBar::SltNextPage);
    next->setToolTip(QStringLiteral("下一页"));
    next->setAccessibleName(next->toolTip());
    addButton(QStringLiteral("btnLastPage"), QStringLiteral("尾页"), &QtPageBar::SltJumpLastPage);
    reset(m_count);
}

void QtPageBar::reset(int pageCount)
{
    m_count = qBound(1, pageCount, maxPages);
    m_current = 1;
    m_pageEdit->setText(QString::number(m_current));
    showCount();
}

void QtPageBar::setCurrentPage(int page)
{
    if (page < 1 || page > m_count || page == m_current)
        return;
    m_current = page;
    showCurrentPage();
}

void QtPageBar::SltAddNewPage()
{
    if (m_count < maxPages)
        ++m_count;
    showCount();
    emit addPage(m_count);
}

void QtPageBar::SltDeleteCurrentPage()
{
    if (m_count <= 1) {
        if (m_deleteOnly)
            m_deleteOnly();
        return;
    }
    // A number that was typed without jumping there names another page.
    m_pageEdit->setText(QString::number(m_current));
    if (m_mayDelete && !m_mayDelete(m_current))
        return;
    --m_count;
    showCount();
    if (m_current == m_count + 1) {
        --m_current;
        showCurrentPage();
    }
    emit deletePage(m_current, m_count);
}

void QtPageBar::SltJumpFirshPage()
{
    if (m_current == 1)
        return;
    m_current = 1;
    showCurrentPage();
}

void QtPageBar::SltPrevPage()
{
    if (m_current <= 1)
        return;
    --m_current;
    showCurrentPage();
}

void QtPageBar::SltJumpPage()
{
    const int page = m_pageEdit->text().toInt();
    if (page != 0 && page <= m_count) {
        m_current = page;
        emit signalChangePage(m_current);
        return;
    }
    QtMessageTip::showBelow(m_pageEdit, QStringLiteral("当前设置超出范围！"));
}

void QtPageBar::SltNextPage()
{
    if (m_current >= m_count)
        return;
    ++m_current;
    showCurrentPage();
}

void QtPageBar::SltJumpLastPage()
{
    if (m_current == m_count)
        return;
    m_current = m_count;
    showCurrentPage();
}

QPushButton *QtPageBar::addButton(const QString &objectName, const QString &text, void (QtPageBar::*slot)())
{
    auto *button = new QPushButton(text, this);
    button->setObjectName(objectName);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, slot);
    layout()->addWidget(button);
    return button;
}

void QtPageBar::showCurrentPage()
{
    m_pageEdit->setText(QString::number(m_current));
    emit signalChangePage(m_current);
}

// The label keeps its size; a count that does not fit gets smaller figures.
void QtPageBar::showCount()
{
    const QString text = QStringLiteral("/ %1").arg(m_count);
    QFont labelFont = font();
    for (int size = 12; size >= 8; --size) {
        labelFont.setPixelSize(size);
        if (QFontMetrics(labelFont).horizontalAdvance(text) <= m_countLabel->width())
            break;
    }
    m_countLabel->setFont(labelFont);
    m_countLabel->setText(text);
}
