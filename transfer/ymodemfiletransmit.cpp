#include "ymodemfiletransmit.h"

#include "textcodec.h"
#include "xmodemsender.h"

#include <QDebug>
#include <QFileInfo>
#include <QScopedValueRollback>

#include <algorithm>

namespace {

// Steps of 10 ms: a repeat every 5 s, giving up after 30 s of silence.
constexpr Ymodem::uint32 kRepeatDivider = 499;
constexpr Ymodem::uint32 kSilenceLimit = 5;
constexpr Ymodem::uint32 kErrorLimit = 999;

// This many requests for a file's beginning in its middle are no coincidence.
constexpr Ymodem::uint32 kRestartRequests = 3;

constexpr int kStepMs = 10;
constexpr qint64 kStepUs = kStepMs * 1000;
// From a packet's last bit on the line to the answer's arrival here, at best.
constexpr qint64 kAnswerUs = 700;
constexpr int kReleaseMs = 100; // between the two reports of an end
// Late steps are caught up on, but not more than this.
constexpr qint64 kMaxBehindUs = 50 * 1000;
// How long the last packet of a slow line is waited for.
constexpr qint64 kMaxDrainMs = 10 * 1000;
constexpr qint64 kBitsPerByte = 10;

// What arrives is read slowly; the rest of a flood stays with the system.
constexpr int kMaxInputBytes = 64 * 1024;

// A block of fewer than 129 bytes goes out as a small one.
constexpr qint64 kSmallBlock = 128;
constexpr qint64 kLargeBlock = 1024;

// XModem: receivers ask within 10 s for what they miss.
constexpr Ymodem::uint32 kXmodemSilence = 6000;

// In one turn of the event loop.
constexpr int kMaxQuickSteps = 256;

bool isControl(char byte)
{
    return byte == Ymodem::Request || byte == Ymodem::Nak || byte == Ymodem::Can;
}

} // namespace

// Its three operations are those of the driver.
class YmodemFileTransmit::Xmodem : public XmodemSender
{
public:
    explicit Xmodem(YmodemFileTransmit *driver)
        : XmodemSender(kXmodemSilence, kErrorLimit)
        , m_driver(driver)
    {
    }

protected:
    uint8 statusCallback(Status status, uint8 *buffer, uint32 *length) override
    {
        return m_driver->statusCallback(status, buffer, length);
    }
    uint32 readBytes(uint8 *buffer, uint32 length) override { return m_driver->readBytes(buffer, length); }
    uint32 writeBytes(uint8 *buffer, uint32 length) override { return m_driver->writeBytes(buffer, length); }

private:
    YmodemFileTransmit *m_driver;
};

YmodemFileTransmit::YmodemFileTransmit(QObject *parent)
    : QObject(parent)
    , Ymodem(kRepeatDivider, kSilenceLimit, kErrorLimit)
    , m_portName(QStringLiteral("COM1"))
    , m_baudRate(QSerialPort::Baud9600)
    , m_readTimer(this)
    , m_writeTimer(this)
    , m_xmodem(std::make_unique<Xmodem>(this))
    , m_nowUs(&Link::nowUs)
{
    qRegisterMetaType<YmodemFileTransmit::Status>("YmodemFileTransmit::Status");
    m_readTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_readTimer, &QTimer::timeout, this, &YmodemFileTransmit::readTimeOut);
    connect(&m_writeTimer, &QTimer::timeout, this, &YmodemFileTransmit::writeTimeOut);
}

YmodemFileTransmit::~YmodemFileTransmit()
{
    blockSignals(true);
    if (isRunning())
        abortTransfer();
    release();
}

void YmodemFileTransmit::setProtocol(Protocol protocol, int packetLength)
{
    m_protocol = protocol;
    m_largestBlock = packetLength <= kSmallBlock ? kSmallBlock : kLargeBlock;
}

// ---- start and end

bool YmodemFileTransmit::startTransmit()
{
    if (isBusy())
        return false;
    SerialSettings settings;
    settings.name = m_portName;
    settings.baudRate = m_baudRate;
    if (m_ownLink.open(settings))
        return startTransmit(&m_ownLink);
    clearRecords();
    m_reason = QStringLiteral("串口打开失败");
    m_log.note(elapsedMs(), m_reason);
    return false;
}

bool YmodemFileTransmit::startTransmit(Link *link, const QByteArray &arrived)
{
    if (isBusy() || !link->isOpen())
        return false;
    clearRecords();
    m_link = link;
    m_input = arrived;
    connect(m_link, &Link::received, this, &YmodemFileTransmit::receive);
    // Queued: the reports may come from within the engine's own writing.
    connect(
        m_link, &Link::dropped, this, [this] { handleLinkLost(); }, Qt::QueuedConnection);
    connect(
        m_link, &Link::stateChanged, this, [this] { handleLinkLost(); }, Qt::QueuedConnection);
    resetTransfer();
    m_xmodem->reset();
    m_passed.clear();
    m_lineFreeAtUs = 0;
    m_stepDeferred = false;
    m_nextStepAtUs = elapsedUs() + kStepUs;
    m_readTimer.start(kStepMs);
    return true;
}

void YmodemFileTransmit::clearRecords()
{
    m_status = Establish;
    m_reason.clear();
    m_files.forgetChanges();
    m_log.clear();
    m_startUs = m_nowUs();
    m_log.note(0, QStringLiteral("开始传输 %1个文件，端口 %2，波特率 %3")
                      .arg(m_files.count())
                      .arg(m_portName)
                      .arg(m_baudRate));
}

void YmodemFileTransmit::release()
{
    if (!m_link)
        return;
    m_link = nullptr;
    m_ownLink.close();
}

void YmodemFileTransmit::stopTransmit()
{
    if (!isRunning())
        return;
    abortTransfer();
    end(Abort, QStringLiteral("用户停止了传输"));
}

// Records the end and reports it, and once more when the last bytes have left.
// Returns the engine's answer.
Ymodem::uint8 YmodemFileTransmit::end(Status status, const QString &reason)
{
    m_readTimer.stop();
    passOn();
    m_files.close();
    m_status = status;
    m_reason = reason;
    const qint64 now = elapsedMs();
    m_log.note(now, reason.isEmpty() ? QStringLiteral("传输完成") : reason);
    const QStringList unsent = unsentFiles();
    for (const QString &name : unsent)
        m_log.note(now, QStringLiteral("未完成：%1").arg(name));
    const qint64 drainMs = qBound<qint64>(0, m_lineFreeAtUs / 1000 - now, kMaxDrainMs);
    m_writeTimer.start(kReleaseMs + static_cast<int>(drainMs));
    m_link->disconnect(this);
    emit transmitStatus(status, QString());
    m_link->setReading(true);
    return status == Finish ? Ack : Can;
}

// What the user must know of a batch that the receiver has confirmed.
QString YmodemFileTransmit::finishWarning() const
{
    if (!m_files.changed().isEmpty())
        return QStringLiteral("文件在传输过程中被修改，收到的内容可能是旧的或新旧混杂：%1")
            .arg(m_files.changed().join(QStringLiteral("、")));
    if (!unsentFiles().isEmpty())
        return QStringLiteral("接收端提前结束了本批传输，部分文件未发送");
    return {};
}

void YmodemFileTransmit::writeTimeOut()
{
    m_writeTimer.stop();
    release();
    emit transmitStatus(m_status, QString());
}

void YmodemFileTransmit::handleLinkLost()
{
    if (!isRunning())
        return;
    qWarning().noquote() << "lost" << m_portName;
    resetTransfer();
    m_lineFreeAtUs = 0; // nothing leaves any more
    end(Error, QStringLiteral("串口已断开"));
}

// ---- steps

void YmodemFileTransmit::readTimeOut()
{
    // Before the last packet can have left and been answered a step would find
    // nothing, count that as silence, and be followed by the next one too late.
    const qint64 answerAt = m_lineFreeAtUs + kAnswerUs;
    m_stepDeferred = m_input.isEmpty() && elapsedUs() < answerAt;
    if (m_stepDeferred) {
        scheduleStep(std::min(answerAt, elapsedUs() + kStepUs));
        return;
    }
    step(true);
    checkForRestart();
    // Every 10 ms by the clock, however long a step or a repaint lasted.
    if (isRunning())
        scheduleStep(std::max(m_nextStepAtUs + kStepUs, elapsedUs() - kMaxBehindUs));
}

void YmodemFileTransmit::step(bool isTimed)
{
    const QScopedValueRollback stepping(m_isStepping, true);
    if (m_protocol == Protocol::Xmodem)
        m_xmodem->step(isTimed);
    else
        transmitStep(isTimed);
    if (m_input.isEmpty())
        passOn(); // together, not byte by byte
}

// What the board said before it was ready is the display's.
void YmodemFileTransmit::passOn()
{
    if (!m_passed.isEmpty())
        emit passedOn(std::exchange(m_passed, {}));
}

// A receiver that begins to ask as for a first file has most likely been reset;
// it gets the block again, but would never have the file.
void YmodemFileTransmit::checkForRestart()
{
    if (m_restartReported || requestsForSameData() < kRestartRequests || !isRunning())
        return;
    m_restartReported = true;
    const QString hint = QStringLiteral("接收端在文件中途反复请求开始传输，可能已复位，建议停止后重新发送");
    m_log.note(elapsedMs(), hint);
    emit transmitHint(hint);
}

void YmodemFileTransmit::scheduleStep(qint64 atUs)
{
    m_nextStepAtUs = atUs;
    const qint64 wait = std::max<qint64>(atUs - elapsedUs(), 0);
    m_readTimer.start(static_cast<int>((wait + 999) / 1000));
}

void YmodemFileTransmit::receive(const QByteArray &bytes)
{
    m_input += bytes;
    if (m_input.size() >= kMaxInputBytes)
        m_link->setReading(false);
    if (m_isStepping)
        return;
    if (m_stepDeferred && isRunning())
        readTimeOut(); // what it waits for
    // The rest of a flood is read by the timed steps.
    for (int i = 0; m_isQuick && isRunning() && !m_input.isEmpty() && i < kMaxQuickSteps; ++i)
        step(false);
}

Ymodem::uint32 YmodemFileTransmit::readBytes(uint8 *buffer, uint32 length)
{
    const QByteArray bytes = m_input.left(static_cast<int>(length));
    if (!bytes.isEmpty()) {
        m_input.remove(0, bytes.size());
        std::copy(bytes.begin(), bytes.end(), buffer);
        m_log.received(elapsedMs(), bytes);
        if (m_files.index() == 0 && !isControl(bytes.at(0)))
            m_passed += bytes;
        if (m_input.size() < kMaxInputBytes)
            m_link->setReading(true);
    }
    return static_cast<uint32>(bytes.size());
}

Ymodem::uint32 YmodemFileTransmit::writeBytes(uint8 *buffer, uint32 length)
{
    const QByteArray bytes(reinterpret_cast<const char *>(buffer), static_cast<int>(length));
    m_log.sent(elapsedMs(), bytes);
    const qint64 count = m_link->send(bytes);
    const qint64 lineUs = m_baudRate > 0 ? length * kBitsPerByte * 1000000 / m_baudRate : 0;
    m_lineFreeAtUs = std::max(m_lineFreeAtUs, elapsedUs()) + lineUs;
    return static_cast<uint32>(count);
}

Ymodem::uint8 YmodemFileTransmit::statusCallback(Status status, uint8 *buffer, uint32 *length)
{
    // A receiver that asks for more has the last packet: the line may be faster
    // than its baud rate says, as that of a board with USB of its own is.
    if (status <= Finish)
        m_lineFreeAtUs = std::min(m_lineFreeAtUs, elapsedUs());
    switch (status) {
    case Establish:
        return openNextFile(buffer, length);
    case Transmit:
        return readNextData(buffer, length);
    case Finish:
        m_files.confirm();
        return end(Finish, finishWarning());
    case Abort:
        return end(Abort, QStringLiteral("接收端取消了传输"));
    case Timeout:
        return end(Timeout, QStringLiteral("接收端没有请求文件，请确认它已进入%1接收状态")
                                .arg(m_protocol == Protocol::Xmodem ? QLatin1String("XModem")
                                                                    : QLatin1String("YModem")));
    default:
        return end(Error, QStringLiteral("接收端没有应答或反复要求重发"));
    }
}

// ---- files

Ymodem::uint8 YmodemFileTransmit::openNextFile(uint8 *buffer, uint32 *length)
{
    qDebug("length=%d, index=%d\n", m_files.count(), m_files.index());
    m_files.close();
    m_files.confirm(); // a receiver that asks for the next file has accepted the end of the last one
    if (!m_files.hasNext()) {
        emit transmitStatus(Transmit, QString());
        return Eot;
    }
    passOn();
    QString reason;
    if (!m_files.openNext(&reason))
        return end(Error, reason);
    const QString name = m_files.name();
    const QByteArray header = fileHeader(name, m_files.size());
    std::copy(header.begin(), header.end(), buffer);
    *length = blockZeroSize;
    m_log.note(elapsedMs(), QStringLiteral("文件 %1，%2字节").arg(name).arg(m_files.size()));
    m_restartReported = false;
    emit transmitStatus(Establish, name);
    return Ack;
}

// Without its size a file is filled as little as possible; receivers that ask for a
// sum know no long packets.
qint64 YmodemFileTransmit::blockFor(qint64 left) const
{
    const bool isXmodem = m_protocol == Protocol::Xmodem;
    const bool isLong = isXmodem ? m_xmodem->usesCrc() && left >= kLargeBlock : left > kSmallBlock;
    return isLong ? m_largestBlock : kSmallBlock;
}

Ymodem::uint8 YmodemFileTransmit::readNextData(uint8 *buffer, uint32 *length)
{
    const qint64 left = m_files.size() - m_files.sent();
    if (left <= 0) {
        m_files.checkForChange();
        emit transmitStatus(Transmit, QString());
        return Eot;
    }
    // The rest of the block stays as it is; bytes beyond the announced size, of a
    // file that has grown, are not read.
    const qint64 block = blockFor(left);
    if (!m_files.read(reinterpret_cast<char *>(buffer), std::min(block, left)))
        return end(Error, QStringLiteral("文件在传输过程中变短或无法读取：%1").arg(m_files.name()));
    *length = static_cast<uint32>(block);
    emit transmitProgress(static_cast<int>(m_files.sent() * 100 / m_files.size()), m_files.name());
    emit transmitStatus(Transmit, QString());
    return Ack;
}

QByteArray YmodemFileTransmit::fileHeader(const QString &fileName, qint64 size)
{
    const auto encode = [](const QString &text) { return TextCodec::encode(text, TextCodec::Gb18030); };
    const QByteArray number = QByteArray::number(size);
    const int room = static_cast<int>(blockZeroSize) - number.size() - 2; // two zeros
    const QFileInfo info(fileName);
    QString stem = info.completeBaseName();
    QString suffix = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    if (encode(suffix).size() > room / 2) { // not a suffix that names a kind of file
        stem = info.fileName();
        suffix.clear();
    }
    QByteArray name = encode(info.fileName());
    while (name.size() > room) {
        const bool pair = stem.size() > 1 && stem.at(stem.size() - 1).isLowSurrogate();
        stem.chop(pair ? 2 : 1);
        name = encode(stem + suffix);
    }
    return name + '\0' + number + '\0';
}
