#include "singlesendpage.h"

#include "fonts.h"
#include "qttexteditinput.h"
#include "safefile.h"
#include "sendtext.h"
#include "textcodec.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int kSaveDelayMs = 500;

} // namespace

SingleSendPage::SingleSendPage(const QString &fileName, QWidget *parent)
    : QWidget(parent)
    , m_fileName(fileName)
    , m_editor(new QtTextEditInput(this))
    , m_send(new QPushButton(QStringLiteral("发送"), this))
    , m_load(new QPushButton(QStringLiteral("加载文件"), this))
    , m_clear(new QPushButton(QStringLiteral("清空"), this))
{
    buildUi();
    loadText();
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(kSaveDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, &SingleSendPage::saveChanges);
    connect(m_editor, &QTextEdit::textChanged, this, [this] {
        m_changed = true;
        m_saveTimer.start();
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
    auto *buttons = new QVBoxLayout;
    buttons->setSpacing(4);
    buttons->addWidget(m_send);
    buttons->addWidget(m_load);
    buttons->addWidget(m_clear);
    buttons->addStretch();
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(4, 4, 8, 4);
    row->setSpacing(8);
    row->addWidget(m_editor, 1);
    row->addLayout(buttons);
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
