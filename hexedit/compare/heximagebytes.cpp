#include "heximagebytes.h"

#include <algorithm>

namespace {
constexpr qint64 kStandIn = 1 << 16;
}

HexImageBytes::HexImageBytes(const HexDocument *document, const HexAddressMap &addresses, HexDocument other,
                             const HexAddressMap &otherAddresses)
    : m_document(document)
    , m_other(std::move(other))
    , m_otherRuns(otherAddresses.runs(m_other.size()))
{
    place(addresses);
}

void HexImageBytes::place(const HexAddressMap &addresses)
{
    m_pieces.clear();
    const HexRuns here = addresses.runs(m_document->size());
    const HexRuns &there = m_otherRuns;
    for (size_t i = 0, j = 0; i < here.size() && j < there.size();) {
        const qint64 begin = std::max(here[i].address, there[j].address);
        const qint64 hereEnd = here[i].address + here[i].length;
        const qint64 thereEnd = there[j].address + there[j].length;
        const qint64 end = std::min(hereEnd, thereEnd);
        if (begin < end)
            m_pieces.push_back({here[i].offset + begin - here[i].address,
                                here[i].offset + end - here[i].address,
                                there[j].offset + begin - there[j].address});
        if (hereEnd <= thereEnd)
            ++i;
        else
            ++j;
    }
}

std::vector<HexImageBytes::Piece>::const_iterator HexImageBytes::pieceAt(qint64 offset) const
{
    return std::upper_bound(m_pieces.begin(), m_pieces.end(), offset,
                            [](qint64 wanted, const Piece &piece) { return wanted < piece.end; });
}

bool HexImageBytes::isAbsent(qint64 address) const
{
    const auto piece = pieceAt(address);
    return piece == m_pieces.end() || address < piece->begin;
}

const char *HexImageBytes::span(qint64 address, qint64 *inRow) const
{
    const auto piece = pieceAt(address);
    if (piece != m_pieces.end() && address >= piece->begin) {
        const char *const bytes = m_other.span(piece->offset + address - piece->begin, inRow);
        *inRow = std::min(*inRow, piece->end - address);
        return bytes;
    }
    const qint64 end = piece == m_pieces.end() ? m_document->size() : piece->begin;
    m_standIn = m_document->read(address, static_cast<int>(std::min(kStandIn, end - address)));
    for (char &byte : m_standIn)
        byte = static_cast<char>(~byte);
    *inRow = m_standIn.size();
    return m_standIn.constData();
}

qint64 HexImageBytes::elsewhere() const
{
    qint64 common = 0;
    for (const Piece &piece : m_pieces)
        common += piece.end - piece.begin;
    return m_other.size() - common;
}
