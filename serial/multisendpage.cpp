#include "serial/multisendpage.h"

#include "app/apppaths.h"
#include "app/safefile.h"
#include "shell/base/placeholdertext.h"
#include "shell/base/qtmessagebox.h"
#include "shell/base/qtpagebar.h"

#include <QButtonGroup>
#include <QFile>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QValidator>

namespace {

constexpr qint64 kMostBytes = 64LL * 1024 * 1024; // a thousand rows of 32767 characters fit in

// Makes one line of what is pasted: a line edit shows a line break as a space
// but keeps it, and in the file it would end the row and begin another one.
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
    connect(m_pageBar, &QtPageBar::addPage, this, [this](int count) { m_pageCount = count; });
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
        edit->setPlaceholderText(QStringLiteral("请输入需要发送的数据"));
        PlaceholderText::keepFaint(edit);
        edit->setValidator(new OneLine(edit));
        m_edits.append(edit);
        auto *button = new QPushButton(QStringLiteral("%1").arg(i + 1), this);
        button->setObjectName(QStringLiteral("multiSend%1").arg(i));
        button->setToolTip(QStringLiteral("发送第%1项").arg(i + 1));
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
    QFile file(m_fileName);
    if (file.open(QIODevice::ReadOnly))
        m_rows.read(file.read(kMostBytes));
    m_pageCount = m_rows.pageCount();
    m_pageBar->reset(m_pageCount);
    showPage(1);
}

void MultiSendPage::save()
{
    AppPaths::makeFolders(); // they may be gone
    // Written beside the old file and put in its place at the end: a full disk
    // leaves the old rows.
    QString error;
    if (!SafeFile::write(m_fileName, m_rows.write(), &error))
        emit signalNotify(QStringLiteral("多项发送数据保存失败: %1").arg(error), 255);
}

void MultiSendPage::showPage(int page)
{
    m_shownPage = page;
    for (int i = 0; i < m_edits.size(); ++i)
        m_edits.at(i)->setText(m_rows.row(SendList::index(page, i)));
}

void MultiSendPage::storeShownPage()
{
    bool changed = false;
    for (int i = 0; i < m_edits.size(); ++i)
        changed = m_rows.setRow(SendList::index(m_shownPage, i), m_edits.at(i)->text()) || changed;
    if (changed)
        save();
}

void MultiSendPage::turnTo(int page)
{
    // The page bar turns before it tells that the last page was deleted.
    if (m_pageBar->pageCount() < m_pageCount)
        m_deletedPage = m_shownPage;
    else
        storeShownPage();
    showPage(page);
}

void MultiSendPage::onPageDeleted(int current, int count)
{
    const int deleted = m_deletedPage > 0 ? m_deletedPage : current;
    m_deletedPage = 0;
    m_pageCount = count;
    m_rows.removePage(deleted);
    save();
    showPage(current);
}

QString MultiSendPage::rowToSend(int place)
{
    storeShownPage();
    return m_edits.at(place)->text();
}

void MultiSendPage::storeRow(int place)
{
    if (m_rows.setRow(SendList::index(m_shownPage, place), m_edits.at(place)->text()))
        save();
}

void MultiSendPage::clearPage()
{
    const QString question = QStringLiteral("确认清除当前页的全部数据吗?");
    if (QtMessageBox::question(this, QStringLiteral("询问"), question) != 1)
        return;
    storeShownPage();
    if (m_rows.clearPage(m_shownPage))
        save();
    showPage(m_shownPage);
}
