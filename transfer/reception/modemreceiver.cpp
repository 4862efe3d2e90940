#include "modemreceiver.h"

#include "checksum.h"
#include "ymodem.h"

#include <algorithm>
#include <limits>

namespace {

constexpr int kRequestMs = 3000;     // between two requests to begin
constexpr int kWaitMs = 60 * 1000;   // for a sender to begin
constexpr int kPacketMs = 10 * 1000; // for the next packet
constexpr int kGapMs = 1000;         // within a packet
// A line that has been quiet for so long carries nothing of the last packet any
// more: a reply into the middle of it would be answered twice.
constexpr int kQuietMs = 100;
constexpr int kNoiseMs = 10 * 1000; // of a line that is never quiet
constexpr int kEotMs = 3000;        // for the second end of a file
constexpr int kMaxErrors = 20;
constexpr int kRequestsPerCheck = 4; // then the other check is asked for

constexpr int kHeaderBytes = 3;
constexpr int kSmallData = 128;
constexpr char kBackspace = '\b';
constexpr char kByteMask = '\xFF';

QByteArray bytesOf(std::initializer_list<Ymodem::Code> codes)
{
    QByteArray bytes;
    for (const Ymodem::Code code : codes)
        bytes += static_cast<char>(code);
    return bytes;
}

// Decimal digits; -1 where there are none, the largest number for larger ones.
qint64 announcedSize(const QByteArray &text)
{
    constexpr qint64 max = std::numeric_limits<qint64>::max();
    qint64 size = -1;
    for (const char digit : text) {
        if (digit < '0' || digit > '9')
            break;
        const int value = digit - '0';
        const qint64 before = std::max<qint64>(size, 0);
        size = before > (max - value) / 10 ? max : before * 10 + value;
    }
    return size;
}

} // namespace

void ModemReceiver::start(const Settings &settings, qint64 nowMs)
{
    Sink *sink = m_sink;
    *this = ModemReceiver(sink);
    m_settings = settings;
    m_state = settings.protocol == Protocol::Ymodem ? State::Header : State::Data;
    m_nowMs = nowMs;
    m_startMs = nowMs;
    request();
}

int ModemReceiver::receive(const QByteArray &bytes, qint64 nowMs)
{
    if (!isRunning())
        return 0;
    m_nowMs = nowMs;
    m_input += bytes;
    while (isRunning() && consume()) {
    }
    if (isRunning())
        return bytes.size();
    const int unused = std::min(m_input.size(), bytes.size());
    m_input.clear();
    return bytes.size() - unused;
}

void ModemReceiver::timeOut(qint64 nowMs)
{
    if (!isRunning() || nowMs < m_dueMs)
        return;
    m_nowMs = nowMs;
    if (m_eotPending) {
        m_eotPending = false;
        m_input.clear();
        if (m_eotRefused)
            return acceptEot();
        m_eotRefused = true;
        reply(bytesOf({Ymodem::Nak}));
        return wait(kEotMs);
    }
    if (m_distrusts) {
        m_distrusts = false;
        return askAgain(m_fault);
    }
    if (!m_input.isEmpty()) { // the rest of a packet is missing
        if (!m_anyPacket)
            m_sink->passOn(m_input);
        m_input.clear();
        return askAgain(Fault::Incomplete);
    }
    if (m_eotRefused)
        return acceptEot(); // a sender that sends an end once
    if (!m_anyPacket)
        return m_nowMs - m_startMs >= kWaitMs ? refuse(End::NoSender) : request();
    askAgain(Fault::Silence);
}

void ModemReceiver::cancel()
{
    if (!isRunning())
        return;
    m_state = State::Off;
    m_input.clear();
    m_sink->reply(QByteArray(5, static_cast<char>(Ymodem::Can)));
}

// ---- items

// Handles the first item of the input; false where more has to arrive.
bool ModemReceiver::consume()
{
    if (m_input.isEmpty())
        return false;
    if (m_distrusts) {
        m_input.clear();
        if (m_nowMs - m_distrustMs > kNoiseMs)
            refuse(End::TooManyErrors);
        else
            wait(kQuietMs);
        return false;
    }
    if (m_eotPending)
        return consumeEot();
    switch (m_input.at(0)) {
    case Ymodem::Soh:
    case Ymodem::Stx:
        return consumePacket();
    case Ymodem::Can:
        return consumeCancel();
    case Ymodem::Eot:
        return consumeEot();
    default:
        return consumeOther();
    }
}

bool ModemReceiver::consumePacket()
{
    if (m_input.size() >= kHeaderBytes && (m_input.at(1) ^ m_input.at(2)) != kByteMask)
        return consumeOther();
    const int total = packetSize(m_input.at(0));
    if (m_input.size() < total) {
        wait(kGapMs);
        return false;
    }
    const int data = m_input.at(0) == Ymodem::Soh ? kSmallData : maxData;
    const QByteArray packet = m_input.left(total);
    m_input.remove(0, total);
    if (isCheckRight(packet.constData(), data))
        handlePacket(static_cast<uchar>(packet.at(1)), packet.constData() + kHeaderBytes, data);
    else
        distrust(Fault::BadCheck);
    return true;
}

bool ModemReceiver::isCheckRight(const char *packet, int data) const
{
    const char *check = packet + kHeaderBytes + data;
    if (isCrc()) {
        const quint32 crc = Crc::of(CrcModels::crc16Xmodem, packet + kHeaderBytes, data);
        return static_cast<uchar>(check[0]) == crc >> 8 && static_cast<uchar>(check[1]) == (crc & 0xFF);
    }
    quint8 sum = 0;
    for (int i = 0; i < data; ++i)
        sum = static_cast<quint8>(sum + static_cast<uchar>(packet[kHeaderBytes + i]));
    return static_cast<uchar>(*check) == sum;
}

// Two of them: a single one may be a flipped byte.
bool ModemReceiver::consumeCancel()
{
    if (m_input.size() < 2) {
        wait(kGapMs);
        return false;
    }
    if (m_input.at(1) != Ymodem::Can)
        return consumeOther();
    const auto end = std::find_if(m_input.cbegin(), m_input.cend(),
                                  [](char byte) { return byte != Ymodem::Can && byte != kBackspace; });
    m_input.remove(0, static_cast<int>(end - m_input.cbegin()));
    finish(End::SenderCancelled);
    return true;
}

// The end of a file whose size is not known is believed when the line is quiet
// behind it, and when it comes twice.
bool ModemReceiver::consumeEot()
{
    const bool isAlone =
        std::all_of(m_input.cbegin(), m_input.cend(), [](char byte) { return byte == Ymodem::Eot; });
    if (m_state == State::Header || (m_isFileOpen && m_size >= 0 && m_received == m_size)) {
        m_input.remove(0, 1);
        acceptEot();
        return true;
    }
    if (!isAlone) {
        m_eotPending = false;
        return consumeOther();
    }
    m_eotPending = true;
    wait(kQuietMs);
    return false;
}

bool ModemReceiver::consumeOther()
{
    if (m_anyPacket) {
        distrust(Fault::BadHeader);
        return true;
    }
    // One byte at least; a packet may begin behind it.
    const auto isHeader = [](char byte) {
        return byte == Ymodem::Soh || byte == Ymodem::Stx || byte == Ymodem::Can || byte == Ymodem::Eot;
    };
    const auto end = std::find_if(m_input.cbegin() + 1, m_input.cend(), isHeader);
    const int count = static_cast<int>(end - m_input.cbegin());
    m_sink->passOn(m_input.left(count));
    m_input.remove(0, count);
    return true;
}

// ---- packets

void ModemReceiver::handlePacket(int number, const char *data, int size)
{
    const bool isOther = m_settings.protocol == Protocol::Ymodem ? number == 1 : number == 0;
    m_eotRefused = false;
    if (!m_anyPacket && isOther)
        return refuse(End::OtherProtocol);
    m_anyPacket = true;
    if (m_state == State::Header) {
        if (number == 0)
            handleHeader(data, size);
        else
            refuse(End::OutOfStep);
        return;
    }
    if (number == m_next)
        return handleData(data, size);
    if (number != static_cast<quint8>(m_next - 1))
        return refuse(End::OutOfStep);
    // The reply to the last packet was lost.
    m_sink->noteFault(Fault::Repeated);
    if (m_isFirst)
        reply(bytesOf({Ymodem::Ack, Ymodem::Request}));
    else
        reply(bytesOf({Ymodem::Ack}));
    wait(m_isFirst ? kRequestMs : kPacketMs);
}

// Name, zero, size in decimal; no name ends the batch.
void ModemReceiver::handleHeader(const char *data, int size)
{
    const QByteArray field(data, size);
    const int nameEnd = field.indexOf('\0');
    const QByteArray name = field.left(nameEnd);
    m_errors = 0;
    if (name.isEmpty()) {
        reply(bytesOf({Ymodem::Ack}));
        return finish(End::Finished);
    }
    m_size = nameEnd < 0 ? -1 : announcedSize(field.mid(nameEnd + 1));
    if (!m_sink->beginFile(name, m_size))
        return refuse(End::Refused);
    m_isFileOpen = true;
    m_state = State::Data;
    m_next = 1;
    m_isFirst = true;
    m_received = 0;
    reply(bytesOf({Ymodem::Ack, Ymodem::Request}));
    wait(kRequestMs);
}

void ModemReceiver::handleData(const char *data, int size)
{
    if (!m_isFileOpen && !m_sink->beginFile(QByteArray(), -1)) // XModem's only one
        return refuse(End::Refused);
    m_isFileOpen = true;
    const qint64 left = m_size < 0 ? size : m_size - m_received;
    if (left <= 0)
        return refuse(End::TooLong);
    const int count = static_cast<int>(std::min<qint64>(size, left));
    if (!m_sink->storeBytes(data, count))
        return refuse(End::Refused);
    m_received += count;
    ++m_next;
    m_isFirst = false;
    m_errors = 0;
    reply(bytesOf({Ymodem::Ack}));
    wait(kPacketMs);
}

void ModemReceiver::acceptEot()
{
    m_eotRefused = false;
    if (m_state == State::Header) { // the reply to the last end was lost
        if (m_anyPacket)
            reply(bytesOf({Ymodem::Ack}));
        return request();
    }
    // An XModem file without a byte.
    if (!m_isFileOpen && !m_sink->beginFile(QByteArray(), -1))
        return refuse(End::Refused);
    m_isFileOpen = false;
    m_anyPacket = true;
    if (!m_sink->endFile(m_size < 0 || m_received == m_size))
        return refuse(End::Refused);
    reply(bytesOf({Ymodem::Ack}));
    if (m_settings.protocol == Protocol::Xmodem)
        return finish(End::Finished);
    m_state = State::Header;
    request();
}

// ---- replies

bool ModemReceiver::isCrc() const
{
    if (m_settings.protocol == Protocol::Ymodem)
        return true;
    // m_requests counts the one that is being answered.
    return m_settings.asksForCrc && (std::max(m_requests - 1, 0) / kRequestsPerCheck) % 2 == 0;
}

bool ModemReceiver::isAsking() const
{
    return m_state == State::Header || (m_settings.protocol == Protocol::Ymodem && m_isFirst);
}

int ModemReceiver::packetSize(char header) const
{
    return kHeaderBytes + (header == Ymodem::Soh ? kSmallData : maxData) + (isCrc() ? 2 : 1);
}

// Once a packet has arrived, its check is known.
void ModemReceiver::request()
{
    if (!m_anyPacket)
        ++m_requests;
    reply(bytesOf({isCrc() ? Ymodem::Request : Ymodem::Nak}));
    wait(kRequestMs);
}

void ModemReceiver::askAgain(Fault fault)
{
    m_sink->noteFault(fault);
    if (++m_errors > kMaxErrors)
        return refuse(fault == Fault::Silence ? End::Silent : End::TooManyErrors);
    if (!m_anyPacket || (isAsking() && fault == Fault::Silence))
        return request();
    reply(bytesOf({Ymodem::Nak}));
    wait(kPacketMs);
}

void ModemReceiver::distrust(Fault fault)
{
    m_distrusts = true;
    m_distrustMs = m_nowMs;
    m_fault = fault;
    m_input.clear();
    wait(kQuietMs);
}

void ModemReceiver::reply(const QByteArray &bytes)
{
    m_sink->reply(bytes);
}

void ModemReceiver::finish(End end)
{
    m_state = State::Off;
    m_sink->handleEnd(end);
}

void ModemReceiver::refuse(End end)
{
    cancel();
    m_sink->handleEnd(end);
}
