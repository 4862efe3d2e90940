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

void Ymodem::transmitStep()
{
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
    sendCancel();
}

void Ymodem::resetTransfer()
{
    clearCounters();
    m_sequence = 0;
    m_receiveState = 0;
    m_receivedCount = 0;
    m_stage = Idle;
}

// ---- what the receiver says

// One byte, or Soh or Stx for a complete packet; None when nothing is complete.
Ymodem::uint8 Ymodem::receiveItem()
{
    if (m_receiveState == 1)
        return receiveRest(kHeader + blockZeroSize + kCheck);
    if (m_receiveState == 2)
        return receiveRest(kHeader + largestData + kCheck);
    if (readBytes(m_received.data(), 1) == 0)
        return None;
    m_receivedCount = 1;
    if (m_received[0] == Soh) {
        m_receiveState = 1;
        return receiveRest(kHeader + blockZeroSize + kCheck);
    }
    if (m_received[0] == Stx) {
        m_receiveState = 2;
        return receiveRest(kHeader + largestData + kCheck);
    }
    return m_received[0];
}

Ymodem::uint8 Ymodem::receiveRest(uint32 packetSize)
{
    const uint32 wanted = packetSize - m_receivedCount;
    m_receivedCount += std::min(wanted, readBytes(m_received.data() + m_receivedCount, wanted));
    if (m_receivedCount < packetSize)
        return None;
    m_receiveState = 0;
    return m_received[0];
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
        cancel();
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
    std::fill_n(m_buffer.begin() + kHeader, largestData, uint8(0));
    *length = 0;
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
        clearCounters();
        break;
    case Eot:
        m_sequence = 2;
        buildEot();
        clearCounters();
        break;
    default:
        cancel();
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
        clearCounters();
        sendBuffer();
        break;
    case Eot:
        m_stage = Finishing;
        buildEot();
        clearCounters();
        sendBuffer();
        break;
    default:
        cancel();
    }
}

// An empty block 0 says that there are no more files.
void Ymodem::sendEmptyBlockZero()
{
    std::fill_n(m_buffer.begin() + kHeader, blockZeroSize, uint8(0));
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
    cancel();
    uint32 length = 0;
    statusCallback(status, m_buffer.data() + kHeader, &length);
}

void Ymodem::receiverCancelled()
{
    clearCounters();
    m_stage = Idle;
    uint32 length = 0;
    statusCallback(Abort, m_buffer.data() + kHeader, &length);
}

void Ymodem::cancel()
{
    clearCounters();
    m_sequence = 0;
    m_stage = Idle;
    sendCancel();
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

void Ymodem::sendCancel()
{
    std::array<uint8, 5> bytes;
    bytes.fill(Can);
    writeBytes(bytes.data(), static_cast<uint32>(bytes.size()));
}
