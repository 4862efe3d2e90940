#include "hexpaste.h"

#include "textcodec.h"

#include <algorithm>

namespace {
constexpr int kHexSlice = 1 << 18; // characters
constexpr int kTextSlice = 1 << 16;
} // namespace

HexPaste::HexPaste(const QString &text, As as, int codec)
    : m_text(text)
    , m_as(as)
    , m_codec(codec)
    , m_hex(as == As::Hex ? text : QString())
{
}

HexPaste::State HexPaste::step()
{
    if (m_as == As::Text)
        return encodeSlice();
    switch (m_hex.read(kHexSlice)) {
    case HexParse::Reader::State::Running:
        return State::Running;
    case HexParse::Reader::State::Done:
        return State::Done;
    default:
        return State::Refused;
    }
}

HexPaste::State HexPaste::encodeSlice()
{
    int count = std::min(kTextSlice, m_text.size() - m_place);
    if (m_place + count < m_text.size() && m_text.at(m_place + count - 1).isHighSurrogate())
        ++count;
    const QString slice = m_text.mid(m_place, count);
    const QByteArray bytes = TextCodec::encode(slice, m_codec);
    // A replacement character stands for something that was lost before.
    if (slice.contains(QChar::ReplacementCharacter) ||
        StreamDecoder().decode(bytes.constData(), bytes.size(), m_codec) != slice)
        return State::Refused;
    m_bytes += bytes;
    m_place += count;
    return m_place < m_text.size() ? State::Running : State::Done;
}

QString HexPaste::refusal() const
{
    if (m_as == As::Hex)
        return QStringLiteral("剪贴板的内容不是十六进制数据，可在文本列中粘贴为文本");
    return QStringLiteral("未粘贴：剪贴板的文本含有不能用%1表示的字符，请复制为十六进制")
        .arg(QString::fromLatin1(TextCodec::name(m_codec)));
}

int HexPaste::permille() const
{
    const qint64 done = m_as == As::Hex ? m_hex.place() : m_place;
    return static_cast<int>(done * 1000 / std::max(m_text.size(), 1));
}
