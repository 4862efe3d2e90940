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

signals:
    void showErrorHint();
    void pasteRefused(); // longer than SendText::maxCharacters

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    bool m_hexMode = false;
};
