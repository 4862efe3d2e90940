#include "singlesendpage.h"

#include "fonts.h"
#include "historypopup.h"
#include "qttexteditinput.h"
#include "safefile.h"
#include "sendformatbar.h"
#include "sendtext.h"
#include "senttexts.h"
#include "textcodec.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kSaveDelayMs = 500;

} // namespace

SingleSendPage::SingleSendPage(const QString &fileName, const QString &historyFile, QWidget *parent)
    : QWidget(parent)
    , m_fileName(fileName)
    , m_editor(new QtTextEditInput(this))
    , m_send(new QPushButton(QStringLiteral("发送"), this))
    , m_load(new QPushButton(QStringLiteral("加载文件"), this))
    , m_clear(new QPushButton(QStringLiteral("清空"), this))
    , m_history(new QPushButton(QStringLiteral("历史"), this))
    , m_format(new QPushButton(QStringLiteral("格式"), this))
    , m_formatBar(new SendFormatBar(this))
    , m_sent(new SentTexts(historyFile, this))
{
    buildUi();
    connectHistory();
    loadText();
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(kSaveDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, &SingleSendPage::saveChanges);
    connect(m_editor, &QTextEdit::textChanged, this, [this] {
        m_changed = true;
        m_saveTimer.start();
        if (!m_isWalking)
            m_sent->endWalk();
    });
    connect(m_clear, &QPushButton::clicked, this, [this] {
        replaceText(QString());
        m_editor->setFocus();
    });
}

SingleSendPage::~SingleSendPage()
{
    saveChanges();
}

void SingleSendPage::buildUi()
{
    setObjectName(QStringLiteral("widgetSingleSend"));
    setAttribute(Qt::WA_StyledBackground);
    m_editor->setFont(Fonts::monospace());
    m_editor->setMinimumHeight(72);
    m_editor->setAccessibleName(QStringLiteral("发送区"));
    m_send->setObjectName(QStringLiteral("btnSingleSend"));
    m_send->setToolTip(QStringLiteral("发送编辑区的数据（Ctrl+Enter）"));
    m_load->setObjectName(QStringLiteral("btnLoadDataFile"));
    m_load->setToolTip(QStringLiteral("将文件内容加载到编辑区"));
    m_clear->setObjectName(QStringLiteral("btnClearSend"));
    m_clear->setToolTip(QStringLiteral("清空编辑区"));
    m_send->setShortcut(QKeySequence(int(Qt::CTRL) + Qt::Key_Return));
    m_history->setObjectName(QStringLiteral("btnSendHistory"));
    m_history->setToolTip(QStringLiteral("发送过的数据；在编辑区首行按↑、末行按↓也可取出"));
    m_format->setObjectName(QStringLiteral("btnSendFormat"));
    m_format->setToolTip(QStringLiteral("行尾、转义字符、校验码，实际发送的字节"));
    auto *row = new QHBoxLayout;
    row->setContentsMargins(4, 4, 8, 4);
    row->setSpacing(8);
    row->addWidget(m_editor, 1);
    row->addLayout(buildButtons());
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(row, 1);
    column->addWidget(m_formatBar);
}

QLayout *SingleSendPage::buildButtons()
{
    auto *buttons = new QGridLayout;
    buttons->setSpacing(4);
    buttons->addWidget(m_send, 0, 0, 1, 2);
    buttons->addWidget(m_history, 1, 0);
    buttons->addWidget(m_format, 1, 1);
    buttons->addWidget(m_load, 2, 0);
    buttons->addWidget(m_clear, 2, 1);
    buttons->setRowStretch(3, 1);
    return buttons;
}

void SingleSendPage::connectHistory()
{
    connect(m_sent, &SentTexts::notify, this, &SingleSendPage::notify);
    connect(m_editor, &QtTextEditInput::olderWanted, this, [this](bool *hasOne) { walk(1, hasOne); });
    connect(m_editor, &QtTextEditInput::newerWanted, this, [this](bool *hasOne) { walk(-1, hasOne); });
    connect(m_editor, &QtTextEditInput::sendWanted, m_send, &QPushButton::click);
    connect(m_formatBar, &SendFormatBar::enterSendsChanged, m_editor, &QtTextEditInput::setEnterSends);
    connect(m_format, &QPushButton::clicked, this, [this] { m_formatBar->setOpen(!m_formatBar->isOpen()); });
    connect(m_history, &QPushButton::clicked, this, [this] {
        if (!m_historyPopup) {
            m_historyPopup = new HistoryPopup(m_sent, this);
            connect(m_historyPopup, &HistoryPopup::chosen, this, [this](const SendHistory::Entry &entry) {
                emit hexWanted(entry.isHex);
                replaceText(entry.text);
                m_editor->setFocus();
            });
        }
        m_historyPopup->showAbove(m_history);
    });
}

void SingleSendPage::walk(int direction, bool *hasOne)
{
    QString text = this->text();
    *hasOne = m_sent->step(direction, m_editor->hexMode(), &text);
    if (!*hasOne)
        return;
    m_isWalking = true;
    replaceText(text);
    m_isWalking = false;
    m_editor->moveCursor(direction > 0 ? QTextCursor::Start : QTextCursor::End);
    m_editor->moveCursor(QTextCursor::EndOfLine);
}

void SingleSendPage::keepSent(bool isHex)
{
    m_sent->add({text(), isHex});
}

QString SingleSendPage::text() const
{
    return m_editor->toPlainText();
}

void SingleSendPage::replaceText(const QString &text)
{
    QTextCursor cursor(m_editor->document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
}

void SingleSendPage::loadText()
{
    QByteArray content;
    if (SafeFile::read(m_fileName, 20 * SendText::maxCharacters, &content, &m_readError))
        m_editor->setPlainText(TextCodec::decodeFile(content));
    else // once the page has been connected
        QTimer::singleShot(0, this, [this] {
            emit notify(Notice::error(QStringLiteral("发送数据读取失败：%1").arg(m_readError)));
        });
}

QString SingleSendPage::saveChanges()
{
    m_saveTimer.stop();
    if (!m_changed)
        return QString();
    // A text that could not be read is not written over.
    QString error = QFileInfo::exists(m_fileName) ? m_readError : QString();
    if (error.isEmpty() && SafeFile::write(m_fileName, text().toUtf8(), &error))
        m_changed = false;
    else
        emit notify(Notice::error(QStringLiteral("发送数据保存失败：%1").arg(error)));
    return error;
}
