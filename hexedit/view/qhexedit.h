#pragma once

// An editor for bytes of any number: address, hexadecimal and text columns.
// It owns the document and the one long piece of work on it, during which the
// bytes can't be edited; it draws only the rows on display, and knows no file.

#include "hexdocument.h"
#include "hexlayout.h"
#include "slicedtask.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <optional>

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
    // More of the data, before the first edit.
    void appendData(const QByteArray &block);

    // Writes a range, to the end where no length is given. False when the
    // device took less.
    bool write(QIODevice &device, qint64 position = 0, qint64 count = -1) const;

    const HexDocument &document() const { return m_document; }
    HexDocument &document() { return m_document; } // call contentEdited() after an edit
    void contentEdited(qint64 address);
    SlicedTask *task() { return &m_task; }
    HexEditCommands *commands() { return m_commands; }
    // Why the bytes can't be edited, or replaced by another document, while work
    // is being done on them; for the user. Empty where they can.
    QString busyReason() const;
    QString editRefusal() const; // also where it is read-only
    qint64 size() const { return m_document.size(); }
    qint64 address() const { return m_caret; }
    qint64 selectionBegin() const { return qMin(m_anchor, m_caret); }
    qint64 selectionLength() const { return qAbs(m_anchor - m_caret); }
    bool isModified() const { return m_document.isModified(); }
    void setSaved();
    void setUnsaved();

    void goTo(qint64 address);
    void select(qint64 address, qint64 length);
    // In the place of the selection, whatever the mode; a step of undo.
    void replaceSelection(const QByteArray &bytes);

    bool isReadOnly() const { return m_readOnly; }
    // The reason is shown where an edit is refused.
    void setReadOnly(bool readOnly, const QString &reason = QString());
    bool isOverwrite() const { return m_overwrite; }
    void setOverwrite(bool overwrite);
    // How text that is typed, pasted, copied and shown becomes bytes and back.
    void setTextCodec(int index);
    void setAsciiOnly(bool asciiOnly); // shows nothing else as text
    void setPlaceholderText(const QString &text);
    void zoom(int steps); // 0 goes back to the beginning

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
    void currentAddressChanged(qint64 address);
    void currentSizeChanged(qint64 size);
    void contentChanged();
    void stateChanged(); // bytes, caret, selection, mode, work or whether it is modified

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
    // qhexedit.cpp
    void edit(qint64 address, qint64 length, const QByteArray &bytes, HexDocument::Step step, qint64 caret);
    void moveCaret(qint64 address, bool keepAnchor);
    void showState(); // tells what has changed since the last time
    void showSize();
    void ensureVisible();
    void updateLayout();
    void updateScrollBars();
    int visibleRows() const;
    qint64 topRow() const;

    // qhexeditinput.cpp
    bool moveByKey(const QKeyEvent *event);
    bool editByKey(const QKeyEvent *event);
    bool refuseEdit() const;
    bool refuseShift() const; // of the bytes behind, where they are overwritten
    void typeDigit(int digit);
    void takeDigitBack();
    void typeText(const QString &text);
    void putBytes(const QByteArray &bytes, HexDocument::Step step);
    void deleteAt(qint64 address);
    void dragTo(const QPoint &point);
    HexLayout::Place placeAt(const QPoint &point) const;
    qint64 addressOf(const HexLayout::Place &place) const;
    void setInText(bool inText);

    // qhexeditclip.cpp
    struct Range
    {
        qint64 begin;
        qint64 end;
    };
    bool copyAs(bool text);
    Range withWholeCharacters(Range range) const;
    Range editedRange() const;                    // the selection, in the text column with whole characters
    bool isInsideCharacter(qint64 address) const; // not at its first byte

    // qhexeditpaint.cpp
    void paintHeader(QPainter &painter) const;
    void paintRow(QPainter &painter, int row, qint64 address) const;
    void paintByte(QPainter &painter, int row, qint64 address, quint8 byte, bool changed) const;
    void paintText(QPainter &painter, int row, qint64 address) const;
    bool isSelected(qint64 address) const;
    QColor colorOf(qint64 address) const;
    void paintCaret(QPainter &painter) const;
    QPoint contentOrigin() const; // of the first row

    HexDocument m_document;
    SlicedTask m_task;
    HexEditCommands *m_commands = nullptr;
    HexLayout m_layout;
    QString m_placeholder;
    qint64 m_caret = 0;
    qint64 m_anchor = 0;
    bool m_lowDigit = false;
    std::optional<QByteArray> m_beforeDigit; // what the first digit of a byte was typed over
    bool m_inText = false;
    bool m_overwrite = true;
    bool m_readOnly = false;
    QString m_readOnlyReason;
    bool m_caretOn = true;
    int m_codec = 0;
    bool m_asciiOnly = false;
    int m_zoom = 0;
    qint64 m_shownAddress = 0;
    qint64 m_shownSize = 0;
    qint64 m_dragFrom = -1;
    QPoint m_dragPoint;
    QBasicTimer m_blink;
    QBasicTimer m_dragScroll;
};
