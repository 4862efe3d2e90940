#pragma once

// A checksum that belongs to a file: over which bytes, where it stands and in which byte
// order. Places are written as the user types them ("0", "end-4"), so that they move with
// the end of the file.

#include "hexaddressmap.h"
#include "hexdigest.h"
#include "hexdocument.h"

#include <QJsonObject>

struct HexRule
{
    QString digest; // name, see HexDigest
    QString crc;    // parameters of a CRC without a name
    QString begin = QStringLiteral("0");
    QString end = QStringLiteral("end-4"); // behind the last byte
    QString at = QStringLiteral("end-4");
    bool isLittleEndian = true;
    bool renews = false; // when the file is saved

    struct Places // offsets
    {
        qint64 begin = 0;
        qint64 end = 0;
        qint64 at = 0;
        int bytes = 0; // of the checksum
    };
    // Offsets in a document of that size whose bytes have these addresses. Nothing where
    // they are outside of it or have a gap, or where the checksum stands among its own bytes.
    std::optional<Places> places(const HexAddressMap &addresses, qint64 size) const;
    // The value as it stands in the file.
    QByteArray ordered(const QByteArray &value) const;

    QString text() const; // for the user
    QJsonObject toJson() const;
    static std::optional<HexRule> fromJson(const QJsonObject &object);
};

// Computes a checksum over a range, a slice at a time. The document must not change
// meanwhile.
class HexDigestJob
{
public:
    HexDigestJob(const HexDocument &document, HexDigest digest, qint64 begin, qint64 end);

    bool step(); // false at the end
    int permille() const;
    QByteArray value() const { return m_digest.value(); }

private:
    const HexDocument &m_document;
    HexDigest m_digest;
    qint64 m_begin;
    qint64 m_end;
    qint64 m_at;
};
