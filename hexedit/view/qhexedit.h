#pragma once

// An editor for bytes of any number: address, hexadecimal and text columns. Owns
// the content and the one piece of long work on it, during which the bytes can't
// be edited. Draws only the rows on
// display, and knows no file.

#include "hexclipboard.h"
#include "hexcontent.h"
#include "hexmark.h"
#include "hexviewport.h"
#include "slicedtask.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>

class HexDrag;
class HexEditCommands;
class QIODevice;

class QHexEdit : public QAbstractScrollArea
{
    Q_OBJECT

public:
    explicit QHexEdit(QWidget *parent = nullptr);

    // Both forget all edits.
    void setData(const QByteArray &bytes);
    void setDocument(HexDocument document, qint64 address = 0);
    // Those that are shown, from 0 after a new document. Bytes of fixed ones can be overwritten only.
    void setAddresses(HexAddressMap addresses);
    const HexAddressMap &addresses() const { return m_content.addresses(); }
    // More of the data, before the first edit.
    void appendData(const QByteArray &block);

    // Writes a range, to the end where no length is given. False when the
    // device accepted less.
    bool write(QIODevice &device, qint64 position = 0, qint64 count = -1) const;

    const HexContent &content() const { return m_content; }
    const HexDocument &document() const { return m_content.document(); }
    HexDocument &document() { return m_content.document(); } // call contentEdited() after an edit
    void contentEdited(qint64 address);
    SlicedTask *task() { return &m_task; }
    HexEditCommands *commands() { return m_commands; }
    // Why the bytes can't be edited, or replaced by another document, while work
    // is being done on them; for the user. Empty where they can.
    QString busyReason() const;
    QString editRefusal() const; // also where it is read-only
    // Why no byte can be put between others; empty where one can.
    QString insertRefusal() const;
    qint64 size() const { return m_content.size(); }
    qint64 address() const { return m_content.caret(); } // as an offset from 0, as all below
    qint64 shownAddress(qint64 offset) const { return addresses().addressOf(offset); }
    qint64 selectionBegin() const { return m_content.selection().begin; }
    qint64 selectionLength() const { return m_content.selection().length(); }
    bool isModified() const { return document().isModified(); }
    void setSaved();
    void setUnsaved();

    void goTo(qint64 address, bool keepAnchor = false);
    void select(qint64 address, qint64 length);
    // One undo step, in both modes.
    void replaceSelection(const QByteArray &bytes);
    // One undo step; caret and selection stay.
    void overwrite(qint64 address, const QByteArray &bytes);
    void copyAs(HexCopyText::Form form);

    bool isReadOnly() const { return m_readOnly; }
    // The reason is shown where an edit is refused.
    void setReadOnly(bool readOnly, const QString &reason = QString());
    bool isOverwrite() const { return m_content.isOverwrite(); }
    void setOverwrite(bool overwrite);
    // How text that is typed, pasted, copied and shown becomes bytes and back.
    void setTextCodec(int index);
    void setAsciiOnly(bool asciiOnly); // shows nothing else as text
    void setBytesPerRow(int bytes);    // 8 to 64; 0: as many as fit
    void setMarks(std::vector<HexMark> marks);
    void setPlaceholderText(const QString &text);
    void zoom(int steps); // 0 goes back to the beginning

    // For keys and mouse.
    HexViewport &view() { return m_view; }
    void placeCaret(const QPoint &point);
    void selectTo(qint64 anchor, qint64 caret); // scrolls to the caret
    void setInText(bool inText);
    void typeText(const QString &text);
    void erase(bool forwards); // the selection, or a byte beside the caret

    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

public slots:
    void undo();
    void redo();
    void copy(); // as the column shows it
    void copyHex();
    void copyText();
    void cut();
    void paste();
    void deleteSelection();
    void selectAll();

signals:
    void currentAddressChanged(qint64 address); // the one that is shown
    void currentSizeChanged(qint64 size);
    void contentChanged();
    void addressesChanged();
    void documentReplaced(); // by setDocument()
    void stateChanged();     // bytes, caret, selection, mode, work or whether it is modified

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    bool refuseEdit() const;
    bool refuseShift() const; // of the bytes behind, where they are overwritten
    bool refuseBeyondRun(qint64 count) const;

    void tellGrowth(qint64 before);
    void showEdit();
    void showState(); // notifies of what has changed since the last time
    void showSize();
    void updateLayout();

    HexContent m_content;
    SlicedTask m_task;
    HexClipboard m_clipboard;
    HexViewport m_view;
    HexEditCommands *m_commands = nullptr;
    HexDrag *m_drag = nullptr;
    std::vector<HexMark> m_marks;
    QString m_placeholder;
    bool m_readOnly = false;
    QString m_readOnlyReason;
    bool m_hasToldGrowth = false; // of this document
    bool m_caretOn = true;
    int m_zoom = 0;
    qint64 m_shownAddress = 0;
    qint64 m_shownSize = 0;
    QBasicTimer m_blink;
};
