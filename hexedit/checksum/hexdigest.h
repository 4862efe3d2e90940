#pragma once

// A checksum of the user's choice over bytes that are added in slices: a CRC with a name
// or with parameters, a sum, or a hash. Parameters of the named CRCs: catalogue of
// parametrised CRC algorithms (reveng.sourceforge.io).

#include "checksum.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

class HexDigest
{
public:
    // The names, in the order of the user's list; customCrc is one of them.
    static QStringList names();
    static QString customCrc();
    static bool isHash(const QString &name); // a row of bytes, not a number
    // "width,polynomial,initial,reflected in,reflected out,final": the first one decimal,
    // 3 to 32, the others hexadecimal, those of reflecting 0 or 1.
    static std::optional<CrcModel> crcOf(const QString &text);
    static QString crcText(const QString &name); // of a named CRC; else empty

    // crc: for customCrc only. Nothing where there is no such name or it is no CRC.
    static std::optional<HexDigest> make(const QString &name, const QString &crc);

    void add(const char *bytes, int count);
    QByteArray value() const; // most significant byte first

private:
    struct Kind;
    static const std::vector<Kind> &kinds();
    static const Kind *find(const QString &name);

    explicit HexDigest(const Kind &kind, const CrcModel &model);

    const Kind *m_kind;
    int m_bytes; // of the value
    std::optional<Crc> m_crc;
    std::unique_ptr<QCryptographicHash> m_hash;
    quint64 m_sum = 0;
};
