#include "zipmaker.h"

#include "checksum.h"

namespace {

QByteArray little(quint64 value, int size)
{
    QByteArray bytes;
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
    return bytes;
}

} // namespace

QByteArray makeZip(const QVector<ZipPart> &parts, const ZipLies &lies)
{
    QByteArray archive;
    QByteArray directory;
    for (const ZipPart &part : parts) {
        const bool lied = &part == &parts.first();
        // Without the length and the frame of a zlib stream.
        const QByteArray packed = part.deflated ? qCompress(part.content).mid(6).chopped(4) : part.content;
        const int at = lies.sharedBytes ? 0 : archive.size();
        const quint16 flags = lied ? lies.flags : 0;
        const int method = lied && lies.method >= 0 ? lies.method : part.deflated ? 8 : 0;
        const qint64 size = lied && lies.size >= 0 ? lies.size : part.content.size();
        const quint32 crc = Crc::of(CrcModels::crc32, part.content.constData(), part.content.size()) ^
                            (lied ? lies.crcError : 0);
        const QByteArray extra = lied ? lies.extra : QByteArray();
        const auto common = [&](const QByteArray &name) {
            return little(20, 2) + little(flags, 2) + little(static_cast<quint64>(method), 2) + little(0, 4) +
                   little(crc, 4) + little(static_cast<quint64>(packed.size()), 4) +
                   little(static_cast<quint64>(size), 4) + little(static_cast<quint64>(name.size()), 2) +
                   little(static_cast<quint64>(extra.size()), 2);
        };
        const QByteArray headerName = lied && !lies.headerName.isEmpty() ? lies.headerName : part.name;
        archive += "PK\x03\x04" + common(headerName) + headerName + extra + packed;
        directory += "PK\x01\x02" + little(lied ? lies.madeBy : 0x0314, 2) + common(part.name) +
                     little(static_cast<quint64>(extra.size()), 2) + little(0, 4) +
                     little(quint64(part.unixMode) << 16 | (lied ? lies.dosAttributes : 0), 4) +
                     little(static_cast<quint64>(at), 4) + part.name + extra + extra;
    }
    const auto count = little(static_cast<quint64>(parts.size()), 2);
    return archive + directory + "PK\x05\x06" + little(0, 4) + count + count +
           little(static_cast<quint64>(directory.size()), 4) +
           little(static_cast<quint64>(archive.size()), 4) +
           little(static_cast<quint64>(lies.comment.size()), 2) + lies.comment;
}
