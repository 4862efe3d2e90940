#pragma once

#include <QScrollBar>
#include <QTextCursor>
#include <QTextEdit>

// Keeps a selection that reaches the end of the document from growing with
// what is inserted there.
class SelectionKeeper
{
public:
    explicit SelectionKeeper(QTextEdit *display)
        : m_display(display)
        , m_before(display->textCursor())
        , m_anchor(m_before.anchor())
        , m_position(m_before.position())
        , m_atEnd(m_before.hasSelection() &&
                  m_before.selectionEnd() == display->document()->characterCount() - 1)
    {
    }
    ~SelectionKeeper()
    {
        if (!m_atEnd)
            return;
        const int offset = m_display->verticalScrollBar()->value();
        m_before.setPosition(m_anchor);
        m_before.setPosition(m_position, QTextCursor::KeepAnchor);
        m_display->setTextCursor(m_before); // scrolls to it
        m_display->verticalScrollBar()->setValue(offset);
    }
    Q_DISABLE_COPY_MOVE(SelectionKeeper)

private:
    QTextEdit *m_display;
    QTextCursor m_before;
    int m_anchor;
    int m_position;
    bool m_atEnd;
};
