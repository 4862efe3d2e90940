#include "ymodem.h"

#include "checksum.h"

#include <algorithm>

namespace {

constexpr std::uint32_t kHeader = 3; // bytes before the data
constexpr std::uint32_t kCheck = 2;  // bytes after it

} // namespace

Ymodem::Ymodem(uint32 repeatDivider, uint32 silenceLimit, uint32 errorLimit)
    : m_repeatDivider(repeatDivider)
    , m_silenceLimit(silenceLimit)
    , m_errorLimit(errorLimit)
{
}

// ---- from outside

void Ymodem::transmitStep(bool isTimed)
{
    m_isTimed = isTimed;
    if (m_stage == Idle) {
        resetTransfer();
        m_stage = Establishing;
        return;
    }
    const uint8 item = receiveItem();
    if (item == Can || item == 'A' || item == 'a') {
        receiverCancelled();
        return;
    }
    switch (m_stage) {
    case Establishing:
        stepEstablishing(item);
        break;
    case Established:
        stepEstablished(item);
        break;
    case Transmitting:
        stepTransmitting(item);
        break;
    case Finishing:
        stepFinishing(item);
        break;
    default:
        stepFinished(item);
        break;
    }
}

void Ymodem::abortTransfer()
{
    resetTransfer();
    std::array<uint8, 5> bytes;
    bytes.fill(Can);
    writeBytes(bytes.data(), static_cast<uint32>(bytes.size()));
}

void Ymodem::resetTransfer()
{
    clearCounters();
    m_skipped = 0;
    m_stage = Idle;
}

// ---- what the receiver says

// One byte; None where nothing arrived. A packet is no answer and is skipped.
Ymodem::uint8 Ymodem::receiveItem()
{
    if (m_skipped == 0) {
        uint8 byte = None;
        readBytes(&byte, 1);
        if (byte != Soh && byte != Stx)
            return byte;
        m_skipped = kHeader + (byte == Soh ? blockZeroSize : largestData) + kCheck - 1;
    }
    std::array<uint8, largestData> bytes;
    m_skipped -= readBytes(bytes.data(), std::min<uint32>(m_skipped, largestData));
    return None;
}

// ---- stages

void Ymodem::stepEstablishing(uint8 item)
{
    if (item != Request) {
        stayedSilent(false);
        return;
    }
    std::fill_n(m_buffer.begin() + kHeader, blockZeroSize, uint8(0));
    uint32 length = blockZeroSize;
    switch (statusCallback(Establish, m_buffer.data() + kHeader, &length)) {
    case Ack:
        m_sequence = 0;
        buildPacket(m_sequence, blockZeroSize);
        keepBlockZero();
        m_stage = Established;
        clearCounters();
        sendBuffer();
        break;
    case Eot:
        sendEmptyBlockZero();
        break;
    default:
        abortTransfer();
    }
}

// Block 0 is out. Its Ack fetches the next packet, and the Request that
// follows sends it. A sequence number above 0 says that it has been fetched:
// one more Ack must not fetch again, for what was kept would be lost.
void Ymodem::stepEstablished(uint8 item)
{
    const bool fetched = m_sequence != 0;
    if (item == Ack && !fetched) {
        fetchFirstData();
    } else if (item == Request && fetched) {
        beginData();
    } else if (item == Request || item == Nak) {
        repeatOnRequest(m_blockZero.data(), static_cast<uint32>(m_blockZero.size()));
    } else {
        // The receiver has not asked for what was fetched: it is not repeated.
        stayedSilent(!fetched);
    }
}

void Ymodem::stepTransmitting(uint8 item)
{
    if (item == Ack) {
        fetchNextData();
    } else if (item == Nak || item == Request) {
        m_requests += item == Request ? 1 : 0;
        repeatOnRequest(m_buffer.data(), m_bufferLength);
    } else {
        stayedSilent(true);
    }
}

void Ymodem::stepFinishing(uint8 item)
{
    switch (item) {
    case Nak:
        sendBuffer();
        break;
    case Ack:
        m_stage = Establishing;
        clearCounters();
        break;
    case Request:
        sendEmptyBlockZero();
        break;
    default:
        stayedSilent(true);
    }
}

void Ymodem::stepFinished(uint8 item)
{
    if (item == Ack) {
        resetTransfer();
        uint32 length = 0;
        statusCallback(Finish, m_buffer.data() + kHeader, &length);
    } else if (item == Nak || item == Request) {
        repeatOnRequest(m_buffer.data(), m_bufferLength);
    } else {
        stayedSilent(true);
    }
}

// ---- what is sent next

Ymodem::uint8 Ymodem::fetchData(uint32 *length)
{
    clearCounters();
    std::fill_n(m_buffer.begin() + kHeader, largestData, uint8(0));
    const uint8 answer = statusCallback(Transmit, m_buffer.data() + kHeader, length);
    *length = std::min<uint32>(*length, largestData);
    return answer;
}

void Ymodem::fetchFirstData()
{
    uint32 length = 0;
    switch (fetchData(&length)) {
    case Ack:
        m_sequence = 1;
        buildPacket(m_sequence, length);
        break;
    case Eot:
        m_sequence = 2;
        buildEot();
        break;
    default:
        abortTransfer();
    }
}

void Ymodem::beginData()
{
    m_stage = Established + m_sequence; // Transmitting with data, Finishing with an Eot
    clearCounters();
    sendBuffer();
}

void Ymodem::fetchNextData()
{
    uint32 length = 0;
    switch (fetchData(&length)) {
    case Ack:
        ++m_sequence;
        buildPacket(m_sequence, length);
        sendBuffer();
        break;
    case Eot:
        m_stage = Finishing;
        buildEot();
        sendBuffer();
        break;
    default:
        abortTransfer();
    }
}

// An empty block 0 says that there are no more files. The data in the buffer are
// zeros, since the callback that answered Eot filled in nothing.
void Ymodem::sendEmptyBlockZero()
{
    buildPacket(0, blockZeroSize);
    m_stage = Finished;
    clearCounters();
    sendBuffer();
}

// ---- when it does not go on

void Ymodem::repeatOnRequest(uint8 *packet, uint32 length)
{
    if (++m_errors > m_errorLimit)
        giveUp();
    else
        writeBytes(packet, length);
}

void Ymodem::stayedSilent(bool mayRepeat)
{
    if (!m_isTimed)
        return;
    ++m_steps;
    const std::uint64_t period = std::uint64_t(m_repeatDivider) + 1;
    if (m_steps / period > m_silenceLimit)
        giveUp();
    else if (mayRepeat && m_steps % period == 0)
        sendBuffer();
}

void Ymodem::giveUp()
{
    const Status status = m_stage == Establishing ? Timeout : Error;
    abortTransfer();
    uint32 length = 0;
    statusCallback(status, m_buffer.data() + kHeader, &length);
}

void Ymodem::receiverCancelled()
{
    resetTransfer();
    uint32 length = 0;
    statusCallback(Abort, m_buffer.data() + kHeader, &length);
}

void Ymodem::clearCounters()
{
    m_steps = 0;
    m_errors = 0;
    m_requests = 0;
}

// ---- bytes

// Around the data that is already in the buffer.
void Ymodem::buildPacket(uint8 sequence, uint32 length)
{
    uint8 *packet = m_buffer.data();
    packet[0] = length <= blockZeroSize ? Soh : Stx;
    packet[1] = sequence;
    packet[2] = static_cast<uint8>(0xFF - sequence);
    const std::uint32_t crc =
        Crc::of(CrcModels::crc16Xmodem, reinterpret_cast<const char *>(packet + kHeader), length);
    packet[kHeader + length] = static_cast<uint8>(crc >> 8);
    packet[kHeader + length + 1] = static_cast<uint8>(crc & 0xFF);
    m_bufferLength = kHeader + length + kCheck;
}

void Ymodem::buildEot()
{
    m_buffer[0] = Eot;
    m_bufferLength = 1;
}

void Ymodem::keepBlockZero()
{
    std::copy_n(m_buffer.begin(), m_blockZero.size(), m_blockZero.begin());
}

void Ymodem::sendBuffer()
{
    writeBytes(m_buffer.data(), m_bufferLength);
}
