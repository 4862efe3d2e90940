#pragma once

// Extracts the packets of the camera link from a stream in which bytes are damaged,
// lost or doubled. Each byte may begin a packet, however the stream is cut; one
// fault costs one frame at most:
// - A header counts where its command is known and its length within the limits of
//   that command.
// - A complete packet with a wrong checksum is searched for headers inside, and the
//   packet that begins there is read next.
// - A header that claims far more bytes than the device's frames have is doubted: a
//   packet inside with a right checksum ends the wait for it.
// - So does a chunk that begins with a header after a pause.
// The time it needs grows with the bytes: the checksums of packets inside others
// have a budget in proportion to what arrived. Reports what FrameAssembler reports,
// except NoHeader, ImpossibleLength and Resynchronized. Knows no link; the time is
// passed in.

#include "bytequeue.h"
#include "cameraevent.h"
#include "cameraframe.h"
#include "checksum.h"

#include <array>
#include <vector>

class FrameResynchronizer
{
public:
    static constexpr qint64 pauseMs = 50; // between chunks; the next may begin a packet
    static constexpr int maxRivals = 64;

    explicit FrameResynchronizer(int maxIdleBytes = ByteQueue::defaultIdleBytes)
        : m_buffer(maxIdleBytes)
    {
    }

    // Announcements and replies with a wrong checksum are dropped too. Images with a
    // wrong one are reported in any case, and are never preferred to a header inside.
    void setRequiresChecksums(bool requires) { m_requires = requires; }

    // nowMs: of any clock that does not go back.
    void append(const QByteArray &chunk, qint64 nowMs);
    // The next event; false when more has to arrive first.
    // valueLength: the bytes of a register's value, 1 to 4.
    bool next(CameraEvent *event, int valueLength);
    CameraLoss takeLoss(); // since the last call
    // The stream has ended: what is buffered is lost.
    void end();

    int size() const { return m_buffer.size(); }
    int capacity() const { return m_buffer.capacity(); }

private:
    struct Header
    {
        qint64 at = 0; // since the stream began
        int length = 0;
        quint8 command = 0;
        quint8 device = 0;
        bool isChecked = false; // its checksum is wrong

        qint64 end() const { return at + length; }
    };
    enum class Verdict { Open, Right, Wrong };

    qint64 frontAt() const { return m_received - m_buffer.size(); }
    const char *bytesAt(qint64 at) const { return m_buffer.front() + (at - frontAt()); }
    bool isThere(qint64 end) const { return end <= m_received; }
    Header headerAt(qint64 at) const;
    bool isHeader(qint64 at) const; // a complete one
    qint64 findHeader(qint64 from, qint64 to) const;
    void discardTo(qint64 at);
    void cutTo(qint64 at);
    bool findFront();

    void beginFront();
    void extendChecksum();
    bool isFrontRight() const;
    bool hasRightChecksum(const Header &header);

    bool isWaiting();
    bool findRival();
    void addRival(const Header &rival);
    Verdict judge(Header *rival);

    qint64 findInside();
    bool readFront(CameraEvent *event, int valueLength);
    void readPacket(CameraEvent *event, int valueLength, bool isRight);
    void finish(CameraEvent *event, bool isRight);

    ByteQueue m_buffer;
    qint64 m_received = 0; // bytes since the stream began
    qint64 m_lastChunkMs = -1;
    qint64 m_pausedAt = -1; // where a chunk began with a header after a pause
    bool m_requires = false;

    bool m_hasFront = false; // the buffer begins with m_front
    bool m_isBegun = false;  // and m_checksum is its
    bool m_isReported = false;
    Header m_front;
    int m_checked = 0; // bytes of it that m_checksum covers
    Crc m_checksum{CrcModels::crc16Modbus};
    qint64 m_checkedTo = 0; // the checksum of some packet has covered the bytes before

    std::vector<Header> m_rivals; // inside m_front, not judged yet
    qint64 m_searched = 0;        // before it all headers are known
    qint64 m_budget = 0;          // bytes that may still be covered by another checksum
    Crc m_rivalChecksum{CrcModels::crc16Modbus};
    std::array<int, 2> m_usual{}; // bytes of each device's last good frame
    qint64 m_reportedTo = 0;      // bytes before it belong to a reported packet
    CameraLoss m_loss;
};
