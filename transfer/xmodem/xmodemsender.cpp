#include "xmodemsender.h"

#include "checksum.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr std::uint32_t kHeader = 3;
constexpr std::uint32_t kCancelling = 2; // Can in a row: one may be a flipped byte
// After so many refusals of the first packet the receiver expects the other check: a
// letter of its prompt was read as its request.
constexpr std::uint32_t kRefusals = 3;

} // namespace

XmodemSender::XmodemSender(uint32 silenceLimit, uint32 errorLimit)
    : m_silenceLimit(silenceLimit)
    , m_errorLimit(errorLimit)
{
}

void XmodemSender::reset()
{
    m_stage = Stage::Waiting;
    m_steps = 0;
    m_errors = 0;
    m_cans = 0;
    m_usesCrc = true;
    m_isFirst = true;
    m_sequence = 0;
}

void XmodemSender::step(bool isTimed)
{
    uint8 item = Ymodem::None;
    const bool isSilent = readBytes(&item, 1) == 0;
    if (!isSilent)
        m_cans = item == Ymodem::Can ? m_cans + 1 : 0;
    if (m_cans >= kCancelling)
        return finish(Ymodem::Abort);
    if (!isAnswer(item))
        return countSilence(isTimed);
    switch (m_stage) {
    case Stage::Waiting:
        return stepWaiting(item);
    case Stage::Sending:
        return stepSending(item);
    case Stage::Ending:
        return stepEnding(item);
    }
}

bool XmodemSender::isAnswer(uint8 item) const
{
    switch (item) {
    case Ymodem::Ack:
        return m_stage != Stage::Waiting;
    case Ymodem::Nak:
        return true;
    case Ymodem::Request:
        return m_isFirst;
    default:
        return false;
    }
}

void XmodemSender::stepWaiting(uint8 item)
{
    m_usesCrc = item == Ymodem::Request;
    dropSurplus();
    if (m_cans >= kCancelling)
        return finish(Ymodem::Abort);
    uint32 length = 0;
    if (statusCallback(Ymodem::Establish, m_packet.data() + kHeader, &length) == Ymodem::Ack)
        fetch();
    else
        cancelReceiver();
}

void XmodemSender::stepSending(uint8 item)
{
    if (item == Ymodem::Ack) {
        m_isFirst = false;
        dropSurplus();
        if (m_cans < kCancelling)
            fetch();
        else
            finish(Ymodem::Abort);
        return;
    }
    const bool wasCrc = m_usesCrc;
    if (item == Ymodem::Request)
        m_usesCrc = true;
    else if (m_isFirst && m_errors % kRefusals == kRefusals - 1)
        m_usesCrc = !m_usesCrc;
    if (wasCrc != m_usesCrc)
        build();
    repeat();
}

void XmodemSender::stepEnding(uint8 item)
{
    if (item == Ymodem::Ack)
        finish(Ymodem::Finish);
    else
        repeat();
}

// A doubled answer would count for the next packet, and a request that has waited
// would have the first one sent twice.
void XmodemSender::dropSurplus()
{
    uint8 byte = Ymodem::None;
    while (m_cans < kCancelling && readBytes(&byte, 1) == 1)
        m_cans = byte == Ymodem::Can ? m_cans + 1 : 0;
}

// ---- packets

void XmodemSender::fetch()
{
    m_steps = 0;
    m_errors = 0;
    std::fill_n(m_packet.begin() + kHeader, Ymodem::largestData, filler);
    uint32 length = 0;
    switch (statusCallback(Ymodem::Transmit, m_packet.data() + kHeader, &length)) {
    case Ymodem::Ack:
        m_stage = Stage::Sending;
        ++m_sequence;
        m_dataLength = length <= Ymodem::blockZeroSize ? Ymodem::blockZeroSize : Ymodem::largestData;
        build();
        break;
    case Ymodem::Eot:
        m_stage = Stage::Ending;
        m_packet[0] = Ymodem::Eot;
        m_packetLength = 1;
        break;
    default:
        return cancelReceiver();
    }
    writeBytes(m_packet.data(), m_packetLength);
}

void XmodemSender::build()
{
    const uint8 *data = m_packet.data() + kHeader;
    uint8 *check = m_packet.data() + kHeader + m_dataLength;
    m_packet[0] = m_dataLength == Ymodem::blockZeroSize ? Ymodem::Soh : Ymodem::Stx;
    m_packet[1] = m_sequence;
    m_packet[2] = static_cast<uint8>(0xFF - m_sequence);
    if (m_usesCrc) {
        const std::uint32_t crc =
            Crc::of(CrcModels::crc16Xmodem, reinterpret_cast<const char *>(data), m_dataLength);
        check[0] = static_cast<uint8>(crc >> 8);
        check[1] = static_cast<uint8>(crc & 0xFF);
    } else {
        check[0] = static_cast<uint8>(std::accumulate(data, data + m_dataLength, 0U) & 0xFF);
    }
    m_packetLength = kHeader + m_dataLength + (m_usesCrc ? 2 : 1);
}

// ---- when it does not go on

void XmodemSender::repeat()
{
    m_steps = 0;
    if (++m_errors <= m_errorLimit) {
        writeBytes(m_packet.data(), m_packetLength);
        return;
    }
    cancelReceiver();
    finish(Ymodem::Error);
}

void XmodemSender::countSilence(bool isTimed)
{
    m_steps += isTimed ? 1 : 0;
    if (m_steps <= m_silenceLimit)
        return;
    const bool isWaiting = m_stage == Stage::Waiting;
    cancelReceiver();
    finish(isWaiting ? Ymodem::Timeout : Ymodem::Error);
}

void XmodemSender::cancelReceiver()
{
    std::array<uint8, 5> bytes;
    bytes.fill(Ymodem::Can);
    writeBytes(bytes.data(), static_cast<uint32>(bytes.size()));
    reset();
}

void XmodemSender::finish(Ymodem::Status status)
{
    reset();
    uint32 length = 0;
    statusCallback(status, m_packet.data() + kHeader, &length);
}
