#pragma once

// The send editor. In hexadecimal mode it accepts only the keys of hexadecimal
// text and asks its page for a hint at every other one; pasted and dropped text
// is reduced to hexadecimal digits.

#include <QTextEdit>

class QtTextEditInput : public QTextEdit
{
    Q_OBJECT

public:
    explicit QtTextEditInput(QWidget *parent = nullptr);

    void setHexMode(bool hex) { m_hexMode = hex; }
    bool hexMode() const { return m_hexMode; }
    // Enter asks to send, and Shift+Enter makes a line.
    void setEnterSends(bool sends) { m_enterSends = sends; }

signals:
    void showErrorHint();
    void pasteRefused(); // longer than SendText::maxCharacters
    void sendWanted();   // by Enter
    // Up in the first line, Down in the last one. The receiver says whether it has
    // one; without, the key does what it always does.
    void olderWanted(bool *hasOne);
    void newerWanted(bool *hasOne);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    bool isHistoryKey(const QKeyEvent *event);

    bool m_hexMode = false;
    bool m_enterSends = false;
};
