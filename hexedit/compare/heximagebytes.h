#pragma once

// The bytes of another document at the addresses of this one, whose runs may lie
// elsewhere: at each offset of this document stands the other one's byte of the same
// address. Where it has none, a byte that differs stands in for it.

#include "hexaddressmap.h"
#include "hexbytes.h"

class HexImageBytes : public HexBytes
{
public:
    // `document` outlives this, and is read for what stands in.
    HexImageBytes(const HexDocument *document, const HexAddressMap &addresses, HexDocument other,
                  const HexAddressMap &otherAddresses);

    // After the document has got other addresses or another size.
    void place(const HexAddressMap &addresses);
    qint64 size() const override { return m_document->size(); }
    const char *span(qint64 address, qint64 *inRow) const override;
    bool isAbsent(qint64 address) const override;
    // Bytes of the other document at addresses that this one does not have.
    qint64 elsewhere() const;

private:
    struct Piece // of the other document, at an offset of this one
    {
        qint64 begin;
        qint64 end;
        qint64 offset;
    };
    // The first piece that ends behind the offset.
    std::vector<Piece>::const_iterator pieceAt(qint64 offset) const;

    const HexDocument *m_document;
    HexDocument m_other;
    HexRuns m_otherRuns;
    std::vector<Piece> m_pieces; // in order, without overlap
    mutable QByteArray m_standIn;
};
