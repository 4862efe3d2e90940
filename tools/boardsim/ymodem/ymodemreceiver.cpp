#include "ymodemreceiver.h"

#include <QList>
#include <QTextCodec>

namespace Boardsim {

namespace {

constexpr char soh = 0x01; // begins a block of 128 bytes
constexpr char stx = 0x02; // begins a block of 1024 bytes
constexpr char eot = 0x04;
constexpr char ack = 0x06;
constexpr char nak = 0x15;
constexpr char can = 0x18;
constexpr char request = 'C';
constexpr char ackAlone[] = {ack, 0};
constexpr char ackAndRequest[] = {ack, request, 0};
constexpr char requestAlone[] = {request, 0};
constexpr char nakAlone[] = {nak, 0};
constexpr char cancellation[] = {can, can, 0};

constexpr int gapMs = 1000; // within a packet
constexpr int maxTimeouts = 10;
constexpr int cansThatCancel = 2;

quint16 crcOf(const QByteArray &field)
{
    unsigned crc = 0;
    for (const char byte : field) {
        crc ^= unsigned(quint8(byte)) << 8;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 0x8000U ? (crc << 1) ^ 0x1021U : crc << 1;
    }
    return quint16(crc);
}

bool isSound(const QByteArray &packet)
{
    const auto at = [&packet](int index) { return quint8(packet.at(index)); };
    const int crcAt = packet.size() - 2;
    return at(1) + at(2) == 0xff && crcOf(packet.mid(3, crcAt - 3)) == (at(crcAt) << 8 | at(crcAt + 1));
}

QString decoded(const QByteArray &name, Encoding encoding)
{
    if (encoding != Encoding::Gb18030) {
        QTextCodec::ConverterState state;
        const QString text =
            QTextCodec::codecForName("UTF-8")->toUnicode(name.constData(), name.size(), &state);
        if (state.invalidChars == 0 && state.remainingChars == 0)
            return text;
    }
    return QTextCodec::codecForName("GB18030")->toUnicode(name);
}

// What is left of a name once it can lead nowhere else.
QString plainName(const QString &name)
{
    QString plain =
        name.mid(qMax(name.lastIndexOf(QLatin1Char('/')), name.lastIndexOf(QLatin1Char('\\'))) + 1);
    for (QChar &character : plain) {
        if (!character.isPrint() && !character.isSurrogate())
            character = QLatin1Char('_');
    }
    plain.replace(QLatin1Char(':'), QLatin1Char('_'));
    return plain == QLatin1String(".") || plain == QLatin1String("..") ? QString() : plain;
}

// The number behind the name, -1 if there is none; false if it is something else.
bool readSize(const QByteArray &fields, qint64 *size)
{
    const QByteArray text = fields.split('\0').constFirst().split(' ').constFirst();
    bool ok = text.isEmpty();
    *size = ok ? -1 : text.toLongLong(&ok);
    return ok && (text.isEmpty() || *size >= 0);
}

} // namespace

YmodemReceiver::YmodemReceiver(const Settings &settings, Board &board)
    : m_settings(settings)
    , m_board(board)
    , m_noiseState(scrambled(settings.seed, 0))
{
}

void YmodemReceiver::start()
{
    m_state = State::Header;
    ask();
    setTimer();
}

void YmodemReceiver::stop()
{
    if (m_state == State::Data) {
        leaveFile(false);
        m_board.report(QStringLiteral("cancelled: the host is gone"));
    }
    m_state = State::Off;
    m_input.clear();
    m_files = 0;
    m_silent = false;
    m_board.setTimer(-1);
}

void YmodemReceiver::received(const QByteArray &bytes)
{
    if (m_state == State::Off || m_silent)
        return;
    m_input += bytes;
    while (consume()) {
    }
    setTimer();
}

// Removes one packet or control byte from the input; false if none is complete.
bool YmodemReceiver::consume()
{
    // Outside a batch, incoming bytes are mostly meant for other parts of the board.
    int at = 0;
    const auto isHeaderSoFar = [this, &at] {
        const auto matches = [this, &at](int offset, char byte) {
            return at + offset >= m_input.size() || m_input.at(at + offset) == byte;
        };
        return matches(1, '\x00') && matches(2, '\xff');
    };
    for (; at < m_input.size(); ++at) {
        const char byte = m_input.at(at);
        if ((byte == soh || byte == stx) && (m_state == State::Data || isHeaderSoFar())) {
            const int size = byte == soh ? 133 : 1029;
            const QByteArray packet = m_input.mid(at, size);
            m_cans = 0;
            m_input.remove(0, at + (packet.size() == size ? size : 0));
            if (packet.size() < size)
                return false;
            handlePacket(packet);
            return true;
        }
        m_cans = byte == can ? m_cans + 1 : 0;
        if (byte != eot && m_cans < cansThatCancel)
            continue;
        m_input.remove(0, at + 1);
        if (byte == eot)
            handleEot();
        else if (m_state == State::Data || m_files > 0)
            cancel(QStringLiteral("by the sender"), {});
        return true;
    }
    m_input.clear();
    return false;
}

void YmodemReceiver::handlePacket(const QByteArray &packet)
{
    const int number = quint8(packet.at(1));
    if (!isSound(packet)) {
        refuse(QStringLiteral("a broken block"));
        return;
    }
    m_timeOuts = 0;
    const QByteArray field = packet.mid(3, packet.size() - 5);
    if (m_state == State::Header || (m_next == 1 && number == 0)) {
        handleHeader(field);
    } else if (number == quint8(m_next)) {
        handleData(field);
    } else if (number == quint8(m_next - 1)) {
        m_board.report(QStringLiteral("repeated block %1").arg(m_next - 1));
        if (!misbehave(block(m_next - 1)))
            answer(block(m_next - 1), ackAlone);
    } else {
        cancel(QStringLiteral("block %1 instead of %2").arg(number).arg(quint8(m_next)), cancellation);
    }
}

void YmodemReceiver::handleHeader(const QByteArray &field)
{
    if (field.startsWith('\0')) { // no name; some senders leave a size behind it
        handleEnd();
        return;
    }
    if (misbehave(block(0)))
        return;
    if (m_state == State::Data && field == m_header)
        m_board.report(QStringLiteral("repeated block 0"));
    else if (!beginFile(field))
        return;
    answer(block(0), ackAndRequest);
}

bool YmodemReceiver::beginFile(const QByteArray &field)
{
    leaveFile(false);
    const int nameSize = field.indexOf('\0');
    m_name = plainName(decoded(field.left(nameSize), m_settings.encoding));
    if (nameSize < 0 || m_name.isEmpty() || !readSize(field.mid(nameSize + 1), &m_size) ||
        !m_board.beginFile(m_name)) {
        cancel(QStringLiteral("no such file can be stored"), cancellation);
        return false;
    }
    m_header = field;
    m_state = State::Data;
    m_next = 1;
    m_stored = 0;
    m_eotRefused = false;
    return true;
}

void YmodemReceiver::handleData(const QByteArray &field)
{
    if (misbehave(block(m_next)))
        return;
    const qint64 room = m_size < 0 ? field.size() : m_size - m_stored;
    const QByteArray wanted = field.left(int(qMin(room, qint64(field.size()))));
    if (!m_board.storeBytes(wanted)) {
        cancel(QStringLiteral("the file cannot be written"), cancellation);
        return;
    }
    m_stored += wanted.size();
    ++m_next;
    answer(block(m_next - 1), ackAlone);
}

void YmodemReceiver::handleEot()
{
    const YmodemPlace place{YmodemPlace::Eot, 0};
    m_timeOuts = 0;
    if (m_state == State::Header && m_files == 0)
        return; // of no transfer
    if (misbehave(place))
        return;
    if (m_state == State::Data) {
        if (m_settings.nakFirstEot && !m_eotRefused) {
            m_eotRefused = true;
            m_board.send(nakAlone);
            return;
        }
        QString size = QString::number(m_stored);
        if (m_stored < m_size)
            size += QStringLiteral(" of %1").arg(m_size);
        leaveFile(true);
        ++m_files;
        m_board.report(QStringLiteral("file %1 %2 bytes").arg(m_name, size));
    } else {
        m_board.report(QStringLiteral("repeated EOT"));
    }
    answer(place, ackAndRequest);
}

void YmodemReceiver::handleEnd()
{
    const YmodemPlace place{YmodemPlace::End, 0};
    if (misbehave(place))
        return;
    leaveFile(false); // an end behind a header breaks the file off
    m_board.report(QStringLiteral("batch end %1 files").arg(m_files));
    m_files = 0;
    answer(place, ackAlone);
}

void YmodemReceiver::timeOut()
{
    if (m_silent) {
        m_silent = false;
        setTimer();
        return;
    }
    // The sender may have given up in the middle of a block.
    if (m_input.endsWith(QByteArray(cansThatCancel, can)) && m_state == State::Data) {
        cancel(QStringLiteral("by the sender"), {});
    } else if (m_state == State::Data && ++m_timeOuts > maxTimeouts) {
        cancel(QStringLiteral("nothing comes"), cancellation);
    } else if (m_state == State::Data && !m_input.isEmpty()) {
        refuse(QStringLiteral("a part of a block"));
    } else if (isAsking()) {
        ask();
    } else {
        refuse(QStringLiteral("silence"));
    }
    m_input.clear();
    setTimer();
}

void YmodemReceiver::ask()
{
    const YmodemPlace place{YmodemPlace::Start, 0};
    const bool starting = m_state == State::Header && m_files == 0;
    if (!starting)
        m_board.send(requestAlone);
    else if (!misbehave(place))
        answer(place, requestAlone);
}

void YmodemReceiver::refuse(const QString &what)
{
    m_board.report(QStringLiteral("refused ") + what);
    m_board.send(nakAlone);
}

void YmodemReceiver::cancel(const QString &reason, const QByteArray &bytes)
{
    leaveFile(false);
    m_files = 0;
    m_board.send(bytes);
    m_board.report(QStringLiteral("cancelled: ") + reason);
}

void YmodemReceiver::leaveFile(bool complete)
{
    if (m_state == State::Data)
        m_board.endFile(complete);
    m_state = State::Header;
    m_timeOuts = 0;
}

// Whether a fault has kept the board from what it would have done here.
bool YmodemReceiver::misbehave(const YmodemPlace &place)
{
    YmodemFaults &faults = m_settings.faults;
    if (const auto ms = faults.take(YmodemFaults::Silence, place)) {
        m_silent = true;
        m_input.clear();
        m_specialMs = *ms;
        m_board.report(QStringLiteral("silent"));
        return true;
    }
    if (faults.take(YmodemFaults::Nak, place)) {
        m_board.send(noise(place));
        refuse(QStringLiteral("on purpose"));
        return true;
    }
    const bool byText = faults.take(YmodemFaults::CancelByText, place).has_value();
    if (byText || faults.take(YmodemFaults::Cancel, place)) {
        m_board.send(noise(place));
        cancel(QStringLiteral("on purpose"), byText ? "A" : cancellation);
        return true;
    }
    return false;
}

void YmodemReceiver::answer(const YmodemPlace &place, QByteArray bytes)
{
    YmodemFaults &faults = m_settings.faults;
    if (faults.take(YmodemFaults::LoseAnswer, place))
        return;
    if (bytes == ackAndRequest) {
        if (const auto ms = faults.take(YmodemFaults::LateRequest, place)) {
            bytes.chop(1);
            m_specialMs = *ms;
        } else if (faults.take(YmodemFaults::OnlyRequest, place)) {
            bytes = requestAlone;
        }
    }
    if (bytes.startsWith(ack) && faults.take(YmodemFaults::DoubleAck, place))
        bytes.prepend(ack);
    m_board.send(noise(place) + bytes);
}

QByteArray YmodemReceiver::noise(const YmodemPlace &place)
{
    static const QByteArray meaningful("\x01\x02\x04\x06\x15\x18"
                                       "CAa");
    const auto wild = m_settings.faults.take(YmodemFaults::WildNoise, place);
    const auto harmless = m_settings.faults.take(YmodemFaults::Noise, place);
    const int count = wild.value_or(0) + harmless.value_or(0);
    QByteArray bytes;
    while (bytes.size() < count) {
        m_noiseState = xorshift32(m_noiseState);
        const char byte = char(m_noiseState >> 24);
        if (bytes.size() < wild.value_or(0) || !meaningful.contains(byte))
            bytes += byte;
    }
    return bytes;
}

void YmodemReceiver::setTimer()
{
    int ms = m_specialMs;
    m_specialMs = -1;
    if (m_silent)
        ms = ms > 0 ? ms : -1; // no value: indefinitely
    else if (ms < 0)
        ms = !m_input.isEmpty() ? gapMs : isAsking() ? m_settings.askMs : m_settings.packetMs;
    m_board.setTimer(ms);
}

} // namespace Boardsim
