#include "singlesendpage.h"

#include "fonts.h"
#include "hextext.h"
#include "qttexteditinput.h"
#include "textcodec.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

SingleSendPage::SingleSendPage(QWidget *parent)
    : QWidget(parent)
    , m_editor(new QtTextEditInput(this))
    , m_send(new QPushButton(QStringLiteral("发送"), this))
    , m_load(new QPushButton(QStringLiteral("加载文件"), this))
    , m_clear(new QPushButton(QStringLiteral("清空"), this))
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
    connect(m_clear, &QPushButton::clicked, m_editor, [this] {
        // An edit of the document, so that undo brings the text back.
        QTextCursor cursor(m_editor->document());
        cursor.select(QTextCursor::Document);
        cursor.removeSelectedText();
        m_editor->setFocus();
    });

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

void SingleSendPage::setText(const QString &text)
{
    m_editor->setPlainText(text);
}

void SingleSendPage::showFile(const QByteArray &content)
{
    QString text = TextCodec::decodeFile(content);
    if (m_editor->hexMode()) {
        int dropped = 0;
        text = QtTextEditInput::hexTextOf(text, &dropped);
        if (dropped > 0)
            text = HexText::render(content);
    }
    QTextCursor cursor(m_editor->document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
}
