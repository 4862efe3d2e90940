#include "framechecksum.h"

#include <QVector>

struct FrameChecksum::Kind
{
    const char *name;
    Method method;
    CrcModel model;
};

const QVector<FrameChecksum::Kind> &FrameChecksum::kinds()
{
    static const QVector<Kind> all{
        {"sum8", Method::Sum, CrcModels::crc8},
        {"xor8", Method::Xor, CrcModels::crc8},
        {"crc-8", Method::Crc, CrcModels::crc8},
        {"crc-16/modbus", Method::Crc, CrcModels::crc16Modbus},
        {"crc-16/xmodem", Method::Crc, CrcModels::crc16Xmodem},
        {"crc-16/ccitt-false", Method::Crc, CrcModels::crc16CcittFalse},
        {"crc-32", Method::Crc, CrcModels::crc32},
    };
    return all;
}

FrameChecksum::FrameChecksum(Method method, const CrcModel &model)
    : m_method(method)
    , m_model(model)
    , m_crc(model)
{
}

QStringList FrameChecksum::names()
{
    QStringList names;
    for (const Kind &kind : kinds())
        names.append(QLatin1String(kind.name));
    return names;
}

std::optional<FrameChecksum> FrameChecksum::named(const QString &name)
{
    for (const Kind &kind : kinds()) {
        if (name.compare(QLatin1String(kind.name), Qt::CaseInsensitive) == 0)
            return FrameChecksum(kind.method, kind.model);
    }
    return {};
}

void FrameChecksum::add(const QByteArray &bytes)
{
    if (m_method == Method::Crc)
        m_crc.add(bytes.constData(), bytes.size());
    else if (m_method == Method::Sum)
        for (const char byte : bytes)
            m_byte = static_cast<quint8>(m_byte + static_cast<quint8>(byte));
    else
        for (const char byte : bytes)
            m_byte = static_cast<quint8>(m_byte ^ static_cast<quint8>(byte));
}

QByteArray FrameChecksum::bytes() const
{
    if (m_method != Method::Crc)
        return QByteArray(1, static_cast<char>(m_byte));
    QByteArray bytes;
    const quint32 value = m_crc.value();
    for (int shift = m_model.width - 8; shift >= 0; shift -= 8) {
        const char byte = static_cast<char>(value >> shift);
        if (m_model.reflectOut)
            bytes.prepend(byte);
        else
            bytes.append(byte);
    }
    return bytes;
}
