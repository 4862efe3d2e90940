#pragma once

// The send editor. In hexadecimal mode it takes only the keys of hexadecimal
// text and asks its page for a hint at every other one; pasted and dropped
// text is reduced to hexadecimal digits.

#include <QTextEdit>

class QtTextEditInput : public QTextEdit
{
    Q_OBJECT

public:
    explicit QtTextEditInput(QWidget *parent = nullptr);

    // The most characters that a paste, a drop or a file may bring; laying out
    // more than that would hold up the window. Larger data belongs in a file.
    static constexpr int mostCharacters = 200 * 1000;

    void setHexMode(bool hex) { m_hexMode = hex; }
    bool hexMode() const { return m_hexMode; }

    // What hexadecimal mode keeps of a text: digits, in pairs as they stand,
    // line ends and other white space as one space each, "0x" and separators
    // dropped. `dropped` counts characters that were neither.
    static QString hexTextOf(const QString &text, int *dropped);

signals:
    void showErrorHint();
    void pasteRefused(); // longer than mostCharacters

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    bool m_hexMode = false;
};
