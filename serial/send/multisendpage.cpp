#include "multisendpage.h"

#include "placeholdertext.h"
#include "qtmessagebox.h"
#include "qtpagebar.h"
#include "safefile.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>
#include <QValidator>

namespace {

constexpr qint64 kMaxBytes = 64LL * 1024 * 1024; // more than a thousand rows of 32767 characters

// Makes one line of pasted text: a line edit shows a line break as a space but
// keeps it, and in the file it would end the row.
class OneLine : public QValidator
{
public:
    using QValidator::QValidator;
    State validate(QString &input, int &position) const override
    {
        static const QRegularExpression atEnd(QStringLiteral("[\\r\\n]+$"));
        static const QRegularExpression between(QStringLiteral("[\\r\\n]+"));
        input.remove(atEnd).replace(between, QStringLiteral(" "));
        position = qMin(position, input.size());
        return Acceptable;
    }
};

} // namespace

MultiSendPage::MultiSendPage(const QString &fileName, QWidget *parent)
    : QWidget(parent)
    , m_fileName(fileName)
    , m_buttons(new QButtonGroup(this))
    , m_clear(new QPushButton(QStringLiteral("清除重填"), this))
    , m_pageBar(new QtPageBar(this))
{
    buildUi();
    m_pageBar->setDeleteGuard([this](int page) { return mayDelete(page); });
    connect(m_pageBar, &QtPageBar::deletePage, this, &MultiSendPage::onPageDeleted);
    load();
}

MultiSendPage::~MultiSendPage()
{
    storeShownPage();
}

void MultiSendPage::buildUi()
{
    setObjectName(QStringLiteral("widgetMultiSend"));
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(8, 8, 8, 0);
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    for (int i = 0; i < SendList::rowsPerPage; ++i) {
        auto *edit = new QLineEdit(this);
        edit->setObjectName(QStringLiteral("multiEdit%1").arg(i));
        edit->setProperty("id", i);
        edit->setAccessibleName(QStringLiteral("第%1项").arg(i + 1));
        edit->setPlaceholderText(QStringLiteral("请输入需要发送的数据"));
        PlaceholderText::keepFaint(edit);
        edit->setValidator(new OneLine(edit));
        m_edits.append(edit);
        auto *button = new QPushButton(QStringLiteral("%1").arg(i + 1), this);
        button->setObjectName(QStringLiteral("multiSend%1").arg(i));
        button->setToolTip(QStringLiteral("发送第%1项").arg(i + 1));
        button->setAccessibleName(button->toolTip());
        button->setFixedWidth(44); // "10" and the style's padding
        m_buttons->addButton(button, i);
        auto *row = new QHBoxLayout;
        row->setSpacing(4);
        row->addWidget(edit, 1);
        row->addWidget(button);
        grid->addLayout(row, i / 2, i % 2);
    }
    m_clear->setObjectName(QStringLiteral("btnClearMulti"));
    m_clear->setToolTip(QStringLiteral("清除当前页的全部数据"));
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_clear);
    bottom->addWidget(m_pageBar, 1);
    grid->addLayout(bottom, SendList::rowsPerPage / 2, 0, 1, 2);
    grid->setRowStretch(SendList::rowsPerPage / 2 + 1, 1);
}

void MultiSendPage::load()
{
    QByteArray content;
    QString error;
    if (SafeFile::read(m_fileName, kMaxBytes, &content, &error))
        m_rows.read(content);
    else // once the page has been connected
        QTimer::singleShot(0, this, [this, error] {
            emit notify(Notice::error(QStringLiteral("多项发送数据读取失败：%1").arg(error)));
        });
    m_pageBar->reset(m_rows.pageCount());
    showPage(1);
}

QString MultiSendPage::save()
{
    QByteArray content;
    QString error;
    bool saved = SafeFile::read(m_fileName, kMaxBytes, &content, &error);
    if (saved && !content.isNull())
        mergeFile(content);
    saved = saved && SafeFile::write(m_fileName, m_rows.write(), &error);
    if (saved)
        m_rows.setWritten();
    else
        emit notify(Notice::error(QStringLiteral("多项发送数据保存失败：%1").arg(error)));
    return error;
}

// Merges what another copy of the program or an editor has written meanwhile,
// except over rows that were changed here or are being typed.
void MultiSendPage::mergeFile(const QByteArray &content)
{
    const SendList before = m_rows;
    m_rows.merge(content);
    for (int i = 0; i < m_edits.size(); ++i) {
        const int index = SendList::index(m_shownPage, i);
        if (m_rows.row(index) != before.row(index) && m_edits.at(i)->text() == before.row(index))
            m_edits.at(i)->setText(m_rows.row(index));
    }
    while (m_pageBar->pageCount() < m_rows.lastFilledPage())
        m_pageBar->SltAddNewPage();
}

void MultiSendPage::showPage(int page)
{
    m_shownPage = page;
    for (int i = 0; i < m_edits.size(); ++i)
        m_edits.at(i)->setText(m_rows.row(SendList::index(page, i)));
}

QString MultiSendPage::storeShownPage()
{
    for (int i = 0; i < m_edits.size(); ++i)
        m_rows.setRow(SendList::index(m_shownPage, i), m_edits.at(i)->text());
    return m_rows.isChanged() ? save() : QString();
}

void MultiSendPage::turnTo(int page)
{
    if (m_deletedPage > 0)
        return; // it is the one shown; onPageDeleted() follows
    storeShownPage();
    showPage(page);
}

bool MultiSendPage::mayDelete(int page)
{
    storeShownPage();
    QByteArray content;
    QString error;
    if (SafeFile::read(m_fileName, kMaxBytes, &content, &error) && !content.isNull())
        mergeFile(content); // another copy may have filled the page
    if (m_rows.isFilled(page) &&
        QtMessageBox::question(this, QStringLiteral("询问"),
                               QStringLiteral("当前页的数据将一并删除，确认删除当前页吗？")) != 1)
        return false;
    m_deletedPage = page;
    return true;
}

void MultiSendPage::onPageDeleted(int current)
{
    m_rows.removePage(m_deletedPage);
    m_deletedPage = 0;
    showPage(current);
    if (m_rows.isChanged())
        save();
}

QString MultiSendPage::rowToSend(int place)
{
    storeShownPage();
    return m_edits.at(place)->text();
}

void MultiSendPage::storeRow(int place)
{
    m_rows.setRow(SendList::index(m_shownPage, place), m_edits.at(place)->text());
    if (m_rows.isChanged()) // also by an attempt that failed
        save();
}

void MultiSendPage::clearPage()
{
    const QString question = QStringLiteral("确认清除当前页的全部数据吗？");
    if (QtMessageBox::question(this, QStringLiteral("询问"), question) != 1)
        return;
    storeShownPage();
    m_rows.clearPage(m_shownPage);
    showPage(m_shownPage);
    if (m_rows.isChanged())
        save();
}
