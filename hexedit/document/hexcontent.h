#pragma once

// The bytes that are edited, with caret, selection and mode, and the edits that
// keys, text and the clipboard make. Owns the document and the addresses of its
// bytes. All else here counts offsets from 0 to the size, where the caret can
// stand as well. Knows no widget and no key.

#include "hexaddressmap.h"
#include "hexdocument.h"

#include <QString>
#include <optional>
#include <utility>

class HexContent
{
public:
    using Step = HexDocument::Step;
    struct Range
    {
        qint64 begin;
        qint64 end;
        qint64 length() const { return end - begin; }
    };

    void setDocument(HexDocument document, qint64 address);
    void setAddresses(HexAddressMap addresses) { m_addresses = std::move(addresses); }
    const HexAddressMap &addresses() const { return m_addresses; }
    // Bytes put over those at the begin of the selection would not stay in the
    // run there, whose addresses are fixed.
    bool leavesRun(qint64 count) const;
    HexDocument &document() { return m_document; }
    const HexDocument &document() const { return m_document; }
    qint64 size() const { return m_document.size(); }

    // ---- caret and selection, which lies between the anchor and the caret
    qint64 caret() const { return m_caret; }
    qint64 anchor() const { return m_anchor; }
    Range selection() const;
    bool hasSelection() const { return m_anchor != m_caret; }
    bool isSelected(qint64 address) const;
    void moveCaret(qint64 address, bool keepAnchor = false);
    void select(qint64 anchor, qint64 caret);
    // On the second digit of the caret's byte.
    bool isOnLowDigit() const { return m_isOnLowDigit; }
    void moveToLowDigit();

    // ---- mode
    bool isInText() const { return m_isInText; } // typing goes to the text column
    void setInText(bool inText);
    bool isOverwrite() const { return m_isOverwrite; }
    void setOverwrite(bool overwrite);
    // How text becomes bytes and back: an index of TextCodec.
    int codec() const { return m_codec; }
    void setCodec(int codec) { m_codec = codec; }
    bool isAsciiOnly() const { return m_isAsciiOnly; }
    void setAsciiOnly(bool asciiOnly) { m_isAsciiOnly = asciiOnly; }
    int shownCodec() const; // of HexCharacters: what the text column shows

    // With the rest of the characters that it begins or ends in.
    Range withWholeCharacters(Range range) const;

    // ---- edits
    // Digits in the hexadecimal column, where other characters are ignored.
    // False where nothing was typed.
    bool typeText(const QString &text);
    qint64 typedLength(const QString &text) const; // bytes that it overwrites at once
    bool canEraseDigit() const { return m_isOnLowDigit && m_beforeDigit; }
    void eraseDigit(); // the first digit of a byte, which was typed last
    // At the caret, over the bytes there or between them as the mode says.
    void putBytes(const QByteArray &bytes, Step step);
    void replaceSelection(const QByteArray &bytes); // in both modes
    void deleteSelection();
    void deleteAt(qint64 address);
    // After an edit of the document itself.
    void endEdit(qint64 caret);

private:
    void edit(Range range, const QByteArray &bytes, Step step, qint64 caret);
    void typeDigit(int digit);
    Range editedSelection() const;
    bool isInsideCharacter(qint64 address) const; // not at its first byte

    HexDocument m_document;
    HexAddressMap m_addresses;
    qint64 m_caret = 0;
    qint64 m_anchor = 0;
    bool m_isOnLowDigit = false;
    std::optional<QByteArray> m_beforeDigit; // the byte that a first digit was typed over, if any
    bool m_isInText = false;
    bool m_isOverwrite = true;
    int m_codec = 0;
    bool m_isAsciiOnly = false;
};
