#include "hexclip.h"

#include "hexparse.h"
#include "textcodec.h"

namespace {
const QString kBytes = QStringLiteral("application/x-korvex-bytes");
const QString kText = QStringLiteral("text/plain");
} // namespace

HexClip::HexClip(const QByteArray &bytes, As as, int codec)
    : m_bytes(bytes)
    , m_as(as)
    , m_codec(codec)
{
}

HexClip::HexClip(const QByteArray &bytes, HexCopyText::Form form, const HexRuns &runs)
    : m_bytes(bytes)
    , m_form(form)
    , m_runs(runs)
{
}

bool HexClip::isExactText() const
{
    // Many programs end a text at a zero.
    return m_as == As::Hex || (!m_bytes.contains('\0') && TextCodec::encode(text(), m_codec) == m_bytes);
}

std::optional<QByteArray> HexClip::exactBytes(const QMimeData *data)
{
    if (!data || !data->hasFormat(kBytes))
        return std::nullopt;
    return data->data(kBytes);
}

QStringList HexClip::formats() const
{
    return {kBytes, kText};
}

bool HexClip::hasFormat(const QString &mimeType) const
{
    return formats().contains(mimeType);
}

QVariant HexClip::retrieveData(const QString &mimeType, QVariant::Type) const
{
    if (mimeType == kBytes)
        return m_bytes;
    return mimeType == kText ? QVariant(text()) : QVariant();
}

QString HexClip::text() const
{
    if (m_form)
        return HexCopyText::text(m_bytes, *m_form, m_runs);
    if (m_as == As::Hex)
        return HexParse::text(m_bytes);
    const QString text = TextCodec::decode(m_bytes, m_codec);
    // A decoder drops the mark at the beginning; here it is a character like any other.
    const bool marked = m_codec == TextCodec::Utf8 && m_bytes.startsWith("\xEF\xBB\xBF");
    return marked ? QChar(QChar::ByteOrderMark) + text : text;
}
