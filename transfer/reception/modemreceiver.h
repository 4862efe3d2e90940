#pragma once

// The receiving side of XModem, XModem-1K and YModem (batch): bytes in, replies
// and file contents out. Owns no port, file or clock: the sink sends and stores,
// and every call says what time it is (milliseconds of any clock that only moves
// forward). The length of a packet is the sender's choice, the check is asked
// for: CRC, and a sum where an XModem sender does not react to that.
//
// A sender waits for the reply to each packet, so one packet at most is kept.

#include <QByteArray>

class ModemReceiver
{
public:
    enum class Protocol { Xmodem, Ymodem };
    enum class End {
        Finished,
        SenderCancelled,
        Refused,       // by the sink
        NoSender,      // nothing began
        Silent,        // in the middle
        TooManyErrors, // in a row
        OutOfStep,     // a packet is missing
        OtherProtocol, // the first packet is one of the other protocol
        TooLong,       // more was sent than announced
    };
    // What was asked for again, for the log.
    enum class Fault { BadHeader, BadCheck, Incomplete, Silence, Repeated };

    class Sink
    {
    public:
        virtual ~Sink() = default;
        virtual void reply(const QByteArray &bytes) = 0;
        // The name as it was sent, empty with XModem; size -1 where it was not
        // announced. False from these three cancels the transfer.
        virtual bool beginFile(const QByteArray &name, qint64 size) = 0;
        virtual bool storeBytes(const char *bytes, int count) = 0;
        // isComplete: as many bytes as were announced, if any number was.
        virtual bool endFile(bool isComplete) = 0;
        // Before the first packet: what belongs to no packet, such as a prompt.
        virtual void passOn(const QByteArray &bytes) = 0;
        virtual void noteFault(Fault fault) = 0;
        // Of the transfer; a file that has begun and not ended is incomplete.
        virtual void handleEnd(End end) = 0;
    };

    struct Settings
    {
        Protocol protocol = Protocol::Ymodem;
        bool asksForCrc = true; // false: XModem with the sum from the beginning
    };

    static constexpr int maxData = 1024; // bytes of a packet

    // The sink must outlive the receiver.
    explicit ModemReceiver(Sink *sink)
        : m_sink(sink)
    {
    }

    void start(const Settings &settings, qint64 nowMs);
    // Returns how many of the bytes belong to the transfer: all, but for those
    // behind its end.
    int receive(const QByteArray &bytes, qint64 nowMs);
    // When timeOut() is due; means nothing while the receiver is not running.
    qint64 dueMs() const { return m_dueMs; }
    void timeOut(qint64 nowMs);
    // Ends the transfer and cancels the sender; the sink hears of no end.
    void cancel();

    bool isRunning() const { return m_state != State::Off; }

private:
    enum class State { Off, Header, Data };

    bool consume();
    bool consumePacket();
    bool consumeCancel();
    bool consumeEot();
    bool consumeOther();
    bool isCheckRight(const char *packet, int data) const;

    void handlePacket(int number, const char *data, int size);
    void handleHeader(const char *data, int size);
    void handleData(const char *data, int size);
    void acceptEot();
    void awaitHeader();

    void request();
    void askAgain(Fault fault);
    void distrust(Fault fault);
    void reply(const QByteArray &bytes);
    void finish(End end);
    void refuse(End end);
    void wait(int ms) { m_dueMs = m_nowMs + ms; }
    bool isCrc() const;
    bool isAsking() const; // by 'C': for a header or for a file's first packet
    int packetSize(char header) const;

    Sink *m_sink;
    Settings m_settings;
    State m_state = State::Off;
    qint64 m_nowMs = 0;
    qint64 m_dueMs = 0;
    qint64 m_startMs = 0;     // of the waiting for a first packet
    QByteArray m_input;       // at most one item that has not arrived completely
    bool m_anyPacket = false; // since the start
    bool m_isFileOpen = false;
    bool m_distrusts = false;         // what arrives is dropped until the line is quiet
    Fault m_fault = Fault::BadHeader; // why it is
    qint64 m_distrustMs = 0;          // since when
    bool m_eotPending = false;        // the last byte; more would show that it is none
    bool m_eotRefused = false;
    quint8 m_next = 1;     // number of the packet that is due
    bool m_isFirst = true; // of the file
    qint64 m_size = -1;    // announced
    qint64 m_received = 0; // of the file, without what fills its last packet
    int m_requests = 0;    // since the start, for the choice of the check
    int m_errors = 0;      // in a row
};
