#include "hexrecord.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr int kMaxBytes = 260; // of the longest record, Intel's

constexpr quint8 kNoDigit = 0xFF;

constexpr std::array<quint8, 256> makeDigits()
{
    std::array<quint8, 256> digits{};
    for (size_t i = 0; i < digits.size(); ++i) {
        const int code = static_cast<int>(i);
        digits[i] = static_cast<quint8>(code >= '0' && code <= '9'   ? code - '0'
                                        : code >= 'A' && code <= 'F' ? code - 'A' + 10
                                        : code >= 'a' && code <= 'f' ? code - 'a' + 10
                                                                     : kNoDigit);
    }
    return digits;
}

constexpr std::array<quint8, 256> kDigits = makeDigits();

int byteAt(const char *pair)
{
    const int high = kDigits[static_cast<quint8>(pair[0])];
    const int low = kDigits[static_cast<quint8>(pair[1])];
    return high == kNoDigit || low == kNoDigit ? -1 : high << 4 | low;
}

bool hasOnlyDigits(const char *text, int length)
{
    return std::all_of(text, text + length,
                       [](char character) { return kDigits[static_cast<quint8>(character)] != kNoDigit; });
}

void appendByte(int byte, QByteArray *text)
{
    static const char digits[] = "0123456789ABCDEF";
    text->append(digits[byte >> 4]);
    text->append(digits[byte & 15]);
}

bool isKnown(HexForm form, const HexRecord &record)
{
    if (form == HexForm::SRecord)
        return HexRecord::addressBytesOf(record.type) > 0;
    switch (record.type) {
    case HexRecord::Data:
        return true;
    case HexRecord::End:
        return record.length == 0;
    case HexRecord::Segment:
    case HexRecord::Linear:
        return record.length == 2;
    case HexRecord::SegmentStart:
    case HexRecord::LinearStart:
        return record.length == 4;
    default:
        return false;
    }
}

} // namespace

int HexRecord::addressBytesOf(int type)
{
    constexpr int bytes[] = {2, 2, 3, 4, 0, 2, 3, 4, 3, 2};
    return type >= 0 && type < 10 ? bytes[type] : 0;
}

int HexRecord::maxLength(HexForm form, int addressBytes)
{
    return form == HexForm::SRecord ? 254 - addressBytes : 255;
}

HexRecord::Problem HexRecord::parse(HexForm form, const char *line, int length, HexRecord *record)
{
    const bool isIntel = form == HexForm::IntelHex;
    const int before = isIntel ? 1 : 2; // ":" or "S" and the type
    const bool begins = length > 0 && (isIntel ? line[0] == ':' : line[0] == 'S' || line[0] == 's');
    if (!begins || (!isIntel && length > 1 && (line[1] < '0' || line[1] > '9')))
        return Problem::NoRecord;
    const int count = length >= before + 2 ? byteAt(line + before) : -1;
    const int total = isIntel ? count + 5 : count + 1;
    if (count < 0 || length < before + 2 * total)
        return hasOnlyDigits(line + 1, length - 1) ? Problem::Truncated : Problem::NoRecord;

    quint8 bytes[kMaxBytes] = {};
    const char *pair = line + before;
    int sum = 0;
    for (int i = 0; i < total; ++i, pair += 2) {
        const int byte = byteAt(pair);
        if (byte < 0)
            return Problem::NoRecord;
        bytes[i] = static_cast<quint8>(byte);
        sum += byte;
    }
    record->type = isIntel ? bytes[3] : line[1] - '0';
    const int addressBytes = isIntel ? 2 : addressBytesOf(record->type);
    const int dataBegin = isIntel ? 4 : 1 + addressBytes;
    record->length = total - 1 - dataBegin;
    if (record->length < 0 || !isKnown(form, *record))
        return Problem::NoRecord;
    record->address = 0;
    for (int i = 0; i < addressBytes; ++i)
        record->address = record->address << 8 | bytes[1 + i];
    std::memcpy(record->bytes, bytes + dataBegin, static_cast<size_t>(record->length));
    record->isSumRight = (sum & 0xFF) == (isIntel ? 0 : 0xFF);
    if (length == before + 2 * total)
        return Problem::None;
    return record->isSumRight ? Problem::Trailing : Problem::NoRecord;
}

void HexRecord::append(HexForm form, int type, quint32 address, const QByteArray &bytes, QByteArray *text)
{
    const bool isIntel = form == HexForm::IntelHex;
    const int addressBytes = isIntel ? 2 : addressBytesOf(type);
    int sum = 0;
    const auto put = [&](int byte) {
        appendByte(byte, text);
        sum += byte;
    };
    text->append(isIntel ? ':' : 'S');
    if (!isIntel)
        text->append(static_cast<char>('0' + type));
    put(isIntel ? bytes.size() : addressBytes + bytes.size() + 1);
    for (int shift = 8 * (addressBytes - 1); shift >= 0; shift -= 8)
        put(static_cast<int>(address >> shift & 0xFF));
    if (isIntel)
        put(type);
    for (const char byte : bytes)
        put(static_cast<quint8>(byte));
    appendByte(isIntel ? -sum & 0xFF : ~sum & 0xFF, text);
}
