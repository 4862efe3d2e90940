#include "ymodemfiletransmit.h"

#include "textcodec.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

// Steps of 10 ms: a repeat every 5 s, giving up after 30 s of silence.
constexpr Ymodem::uint32 kRepeatDivider = 499;
constexpr Ymodem::uint32 kSilenceLimit = 5;
constexpr Ymodem::uint32 kErrorLimit = 999;

// So many requests for a file's begin in its middle are no coincidence.
constexpr Ymodem::uint32 kRestartRequests = 3;

constexpr int kStepMs = 10;
constexpr qint64 kStepUs = kStepMs * 1000;
// From a packet's last bit on the line to the answer's arrival here, at best.
constexpr qint64 kAnswerUs = 700;
constexpr int kLastWordsMs = 100; // between an end and the closing of the port
// Steps that were held up are caught up on, but not more than this.
constexpr qint64 kMostBehindUs = 50 * 1000;
// How long the last packet of a slow line is waited for.
constexpr qint64 kLongestDrainMs = 10 * 1000;
constexpr qint64 kBitsPerByte = 10;

// What arrives is read slowly; the rest of a flood stays with the system.
constexpr qint64 kReadBufferBytes = 64 * 1024;

// A block of fewer than 129 bytes goes out as a small one.
constexpr qint64 kSmallBlock = 128;
constexpr qint64 kLargeBlock = 1024;

QString whyNotReadable(const QString &name)
{
    const QFileInfo info(name);
    const QString shown = QDir::toNativeSeparators(name);
    if (!info.exists())
        return QStringLiteral("文件不存在：%1").arg(shown);
    if (info.isDir())
        return QStringLiteral("不能传输文件夹：%1").arg(shown);
    return QStringLiteral("文件无法读取：%1").arg(shown);
}

} // namespace

YmodemFileTransmit::YmodemFileTransmit(QObject *parent)
    : QObject(parent)
    , Ymodem(kRepeatDivider, kSilenceLimit, kErrorLimit)
    , m_readTimer(this)
    , m_writeTimer(this)
{
    qRegisterMetaType<YmodemFileTransmit::Status>("YmodemFileTransmit::Status");
    m_ownPort.setPortName(QStringLiteral("COM1"));
    m_ownPort.setReadBufferSize(kReadBufferBytes);
    m_readTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_readTimer, &QTimer::timeout, this, &YmodemFileTransmit::readTimeOut);
    connect(&m_writeTimer, &QTimer::timeout, this, &YmodemFileTransmit::writeTimeOut);
}

YmodemFileTransmit::~YmodemFileTransmit()
{
    blockSignals(true);
    if (isRunning()) {
        abortTransfer();
        if (m_port == &m_ownPort)
            m_port->waitForBytesWritten(kLastWordsMs);
    }
    release();
}

void YmodemFileTransmit::setFileList(const QStringList &files)
{
    m_files = files;
    m_next = 0;
    m_completed = 0;
    m_file.close();
    m_file.setFileName(files.value(0));
}

void YmodemFileTransmit::setPortName(const QString &name)
{
    m_ownPort.setPortName(name);
}

void YmodemFileTransmit::setBaudRate(qint32 baudRate)
{
    m_ownPort.setBaudRate(baudRate);
}

void YmodemFileTransmit::setFrame(QSerialPort::StopBits stopBits, QSerialPort::Parity parity)
{
    m_stopBits = stopBits;
    m_parity = parity;
}

// ---- start and end

bool YmodemFileTransmit::startTransmit()
{
    if (isBusy())
        return false;
    // The frame of an earlier transfer, or one that the device refuses, must
    // not keep the port from opening.
    m_ownPort.setStopBits(QSerialPort::OneStop);
    m_ownPort.setParity(QSerialPort::NoParity);
    if (!m_ownPort.open(QIODevice::ReadWrite)) {
        qWarning().noquote() << "cannot open" << m_ownPort.portName() << m_ownPort.errorString();
        clearRecords(m_ownPort);
        m_reason = QStringLiteral("串口打开失败");
        m_log.note(m_clock.elapsed(), m_reason);
        return false;
    }
    m_ownPort.setDataTerminalReady(true); // or a board that is a USB device keeps silent
    begin(&m_ownPort);
    return true;
}

bool YmodemFileTransmit::startTransmit(QSerialPort *lentPort)
{
    if (isBusy() || !lentPort->isOpen())
        return false;
    begin(lentPort);
    return true;
}

void YmodemFileTransmit::begin(QSerialPort *port)
{
    clearRecords(*port);
    m_port = port;
    if (m_port->dataBits() != QSerialPort::Data8)
        m_port->setDataBits(QSerialPort::Data8);
    if (m_port->stopBits() != m_stopBits)
        m_port->setStopBits(m_stopBits);
    if (m_port->parity() != m_parity)
        m_port->setParity(m_parity);
    connect(m_port, &QSerialPort::readyRead, this, [this] {
        if (m_stepPutOff && isRunning())
            readTimeOut(); // what it waits for
    });
    // Queued: the report may come from within the engine's own writing.
    connect(m_port, &QSerialPort::errorOccurred, this, &YmodemFileTransmit::handleError,
            Qt::QueuedConnection);
    resetTransfer();
    m_lineFreeAtUs = 0;
    m_stepPutOff = false;
    m_nextStepAtUs = nowUs() + kStepUs;
    m_readTimer.start(kStepMs);
}

void YmodemFileTransmit::clearRecords(const QSerialPort &port)
{
    m_progress = 0;
    m_status = Establish;
    m_reason.clear();
    m_changed.clear();
    m_restartTold = false;
    m_fileSize = 0;
    m_sentBytes = 0;
    m_log.clear();
    m_clock.start();
    m_log.note(0, QStringLiteral("开始传输 %1个文件，端口 %2，波特率 %3")
                      .arg(m_files.size())
                      .arg(port.portName())
                      .arg(port.baudRate()));
}

void YmodemFileTransmit::release()
{
    if (!m_port)
        return;
    m_port->disconnect(this);
    m_port = nullptr;
    if (m_ownPort.isOpen())
        m_ownPort.close();
}

void YmodemFileTransmit::stopTransmit()
{
    if (!isRunning())
        return;
    m_readTimer.stop();
    abortTransfer();
    end(Abort, QStringLiteral("用户停止了传输"));
}

// Puts the end on record and reports it; the port closes when the last bytes
// have left. Answers for the engine.
Ymodem::uint8 YmodemFileTransmit::end(Status status, const QString &reason)
{
    m_file.close();
    m_status = status;
    m_reason = reason;
    const qint64 now = m_clock.elapsed();
    m_log.note(now, reason.isEmpty() ? QStringLiteral("传输完成") : reason);
    const QStringList unsent = unsentFiles();
    for (const QString &name : unsent)
        m_log.note(now, QStringLiteral("未完成：%1").arg(name));
    const qint64 drainMs = qBound<qint64>(0, m_lineFreeAtUs / 1000 - now, kLongestDrainMs);
    m_writeTimer.start(kLastWordsMs + static_cast<int>(drainMs));
    emit transmitStatus(status, QString());
    return status == Finish ? Ack : Can;
}

// What the user must know of a batch that the receiver has confirmed.
QString YmodemFileTransmit::blemish() const
{
    if (!m_changed.isEmpty())
        return QStringLiteral("文件在传输过程中被修改，收到的内容可能是旧的或新旧混杂：%1")
            .arg(m_changed.join(QStringLiteral("、")));
    if (!unsentFiles().isEmpty())
        return QStringLiteral("接收端提前结束了本批传输，部分文件未发送");
    return {};
}

void YmodemFileTransmit::writeTimeOut()
{
    m_file.close();
    m_writeTimer.stop();
    release();
    emit transmitStatus(m_status, QString());
}

void YmodemFileTransmit::handleError(QSerialPort::SerialPortError error)
{
    const bool gone = error == QSerialPort::ResourceError || error == QSerialPort::ReadError ||
                      error == QSerialPort::WriteError;
    if (!gone || !isRunning())
        return;
    qWarning().noquote() << "lost" << m_port->portName() << m_port->errorString();
    m_readTimer.stop();
    resetTransfer();
    m_lineFreeAtUs = 0; // nothing leaves any more
    end(Error, QStringLiteral("串口已断开"));
}

// ---- steps

void YmodemFileTransmit::readTimeOut()
{
    m_readTimer.stop();
    // Before the last packet can have left and been answered a step would find
    // nothing, take that for silence, and be followed by the next one too late.
    const qint64 answerAt = m_lineFreeAtUs + kAnswerUs;
    m_stepPutOff = m_port->bytesAvailable() == 0 && nowUs() < answerAt;
    if (m_stepPutOff) {
        scheduleStep(std::min(answerAt, nowUs() + kStepUs));
        return;
    }
    transmitStep();
    noticeRestart();
    // Every 10 ms by the clock, however long a step or the window's drawing took.
    if (isRunning())
        scheduleStep(std::max(m_nextStepAtUs + kStepUs, nowUs() - kMostBehindUs));
}

// A receiver that begins to ask as for a first file has most likely been reset;
// it gets the block again, but would never have the file.
void YmodemFileTransmit::noticeRestart()
{
    if (m_restartTold || requestsForSameData() < kRestartRequests || !isRunning())
        return;
    m_restartTold = true;
    const QString hint = QStringLiteral("接收端在文件中途反复请求开始传输，可能已复位，建议停止后重新发送");
    m_log.note(m_clock.elapsed(), hint);
    emit transmitHint(hint);
}

void YmodemFileTransmit::scheduleStep(qint64 atUs)
{
    m_nextStepAtUs = atUs;
    const qint64 wait = std::max<qint64>(atUs - nowUs(), 0);
    m_readTimer.start(static_cast<int>((wait + 999) / 1000));
}

qint64 YmodemFileTransmit::nowUs() const
{
    return m_clock.nsecsElapsed() / 1000;
}

Ymodem::uint32 YmodemFileTransmit::readBytes(uint8 *buffer, uint32 length)
{
    const qint64 count = m_port->read(reinterpret_cast<char *>(buffer), length);
    if (count <= 0)
        return 0;
    m_log.received(m_clock.elapsed(),
                   QByteArray(reinterpret_cast<const char *>(buffer), static_cast<int>(count)));
    return static_cast<uint32>(count);
}

Ymodem::uint32 YmodemFileTransmit::writeBytes(uint8 *buffer, uint32 length)
{
    const QByteArray bytes(reinterpret_cast<const char *>(buffer), static_cast<int>(length));
    m_log.sent(m_clock.elapsed(), bytes);
    const bool idle = m_port->bytesToWrite() == 0;
    const qint64 count = m_port->write(bytes);
    // Before the window draws the progress that this packet means. The library
    // takes a full driver for a lost one: what is queued must not be pushed.
    if (idle)
        m_port->flush();
    const qint64 lineUs = m_port->baudRate() > 0 ? length * kBitsPerByte * 1000000 / m_port->baudRate() : 0;
    m_lineFreeAtUs = std::max(m_lineFreeAtUs, nowUs()) + lineUs;
    return count > 0 ? static_cast<uint32>(count) : 0;
}

Ymodem::uint8 YmodemFileTransmit::statusCallback(Status status, uint8 *buffer, uint32 *length)
{
    // Who asks for more has the last packet: the line may be faster than its
    // baud rate says, as that of a board with USB of its own is.
    if (status <= Finish)
        m_lineFreeAtUs = std::min(m_lineFreeAtUs, nowUs());
    switch (status) {
    case Establish:
        return openNextFile(buffer, length);
    case Transmit:
        return readNextData(buffer, length);
    case Finish:
        m_completed = m_next;
        return end(Finish, blemish());
    case Abort:
        return end(Abort, QStringLiteral("接收端取消了传输"));
    case Timeout:
        return end(Timeout, QStringLiteral("接收端没有请求文件，请确认它已进入YModem接收状态"));
    default:
        return end(Error, QStringLiteral("接收端没有应答或反复要求重发"));
    }
}

// ---- files

Ymodem::uint8 YmodemFileTransmit::openNextFile(uint8 *buffer, uint32 *length)
{
    qDebug("length=%d, index=%d\n", m_files.size(), m_next);
    m_file.close();
    m_completed = m_next; // a receiver that asks for the next file has taken the last one's end
    if (m_next >= m_files.size()) {
        m_status = Transmit;
        emit transmitStatus(Transmit, QString());
        return Eot;
    }
    const QString name = m_files.at(m_next);
    m_file.setFileName(name);
    // Anything but a regular file could block or never end.
    if (!QFileInfo(name).isFile() || !m_file.open(QIODevice::ReadOnly))
        return end(Error, whyNotReadable(name));
    ++m_next;
    m_fileSize = m_file.size();
    m_fileTime = QFileInfo(name).lastModified();
    m_sentBytes = 0;
    const QByteArray header = fileHeader(name, m_fileSize);
    std::copy(header.begin(), header.end(), buffer);
    *length = blockZeroSize;
    m_log.note(m_clock.elapsed(), QStringLiteral("文件 %1，%2字节").arg(name).arg(m_fileSize));
    m_status = Establish;
    m_restartTold = false;
    emit transmitStatus(Establish, name);
    return Ack;
}

Ymodem::uint8 YmodemFileTransmit::readNextData(uint8 *buffer, uint32 *length)
{
    const qint64 left = m_fileSize - m_sentBytes;
    if (left <= 0) {
        const QFileInfo info(m_file.fileName());
        if (info.exists() && info.lastModified() != m_fileTime)
            m_changed.append(m_file.fileName());
        m_status = Transmit;
        emit transmitStatus(Transmit, QString());
        return Eot;
    }
    // The rest of the block stays zero; bytes beyond the announced size, of a
    // file that has grown, are not read.
    const qint64 block = left <= kSmallBlock ? kSmallBlock : kLargeBlock;
    const qint64 wanted = std::min(block, left);
    if (m_file.read(reinterpret_cast<char *>(buffer), wanted) != wanted)
        return end(Error, QStringLiteral("文件在传输过程中变短或无法读取：%1").arg(m_file.fileName()));
    *length = static_cast<uint32>(block);
    m_sentBytes += wanted;
    m_progress = static_cast<int>(m_sentBytes * 100 / m_fileSize);
    emit transmitProgress(m_progress, m_file.fileName());
    m_status = Transmit;
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
