#pragma once

// The sending side of the YModem batch protocol (CRC-16 variant): bytes,
// stages and counters. Owns no port, file, clock or timer: the derived class
// moves the bytes, supplies the data and calls transmitStep() at its own pace;
// all silences are counted in such steps.
//
// Packet on the wire: SOH (128 data bytes) or STX (1024), sequence number, 0xFF
// minus that number, data, CRC-16/XMODEM of the data, high byte first.

#include <array>
#include <cstddef>
#include <cstdint>

class Ymodem
{
public:
    using uint8 = std::uint8_t;
    using uint32 = std::uint32_t;

    // The argument of statusCallback(). 2 is not used.
    enum Status { Establish = 0, Transmit = 1, Finish = 3, Abort = 4, Timeout = 5, Error = 6 };

    // Control bytes; Ack, Eot and Can are also the answers of statusCallback().
    // 'A' and 'a' from the receiver count as Can.
    enum Code : uint8 {
        None = 0x00,
        Soh = 0x01,
        Stx = 0x02,
        Eot = 0x04,
        Ack = 0x06,
        Nak = 0x15,
        Can = 0x18,
        Request = 0x43, // 'C'
    };

    static constexpr std::size_t blockZeroSize = 128; // data bytes
    static constexpr std::size_t largestData = 1024;

    // A packet is sent again every repeatDivider + 1 silent steps; more than
    // silenceLimit such periods, or more than errorLimit requests to send the
    // same packet again, and the transfer is given up.
    Ymodem(uint32 repeatDivider, uint32 silenceLimit, uint32 errorLimit);
    virtual ~Ymodem() = default;
    Ymodem(const Ymodem &) = delete;
    Ymodem &operator=(const Ymodem &) = delete;

    void setSilenceLimit(uint32 periods) { m_silenceLimit = periods; }
    void setErrorLimit(uint32 errors) { m_errorLimit = errors; }

    // Reads at most one item from the receiver and does what it asks for. A step
    // that is not timed, made because something has arrived, is no silence.
    void transmitStep(bool isTimed = true);

    // Back to the beginning, telling the receiver by five Can bytes.
    void abortTransfer();

protected:
    // Back to the beginning without a word to the receiver.
    void resetTransfer();

    // How often the receiver has sent a Request, which asks for a beginning,
    // since the last data packet that it accepted.
    uint32 requestsForSameData() const { return m_requests; }

    // Establish: fill in the file's name and size. buffer has 128 zero bytes.
    // Transmit: fill in the next data, *length = 128 or 1024. buffer has 1024
    // zero bytes; a larger length is cut to that.
    // Both answer Ack (go on), Eot (nothing more) or Can (give up).
    // The others report an end; buffer and length mean nothing then, nor does
    // the answer.
    virtual uint8 statusCallback(Status status, uint8 *buffer, uint32 *length) = 0;
    // At most length bytes of what has arrived; returns their number, 0 if
    // none has.
    virtual uint32 readBytes(uint8 *buffer, uint32 length) = 0;
    // Returns the number of bytes written.
    virtual uint32 writeBytes(uint8 *buffer, uint32 length) = 0;

private:
    enum Stage : uint32 { Idle, Establishing, Established, Transmitting, Finishing, Finished };

    uint8 receiveItem();

    void stepEstablishing(uint8 item);
    void stepEstablished(uint8 item);
    void stepTransmitting(uint8 item);
    void stepFinishing(uint8 item);
    void stepFinished(uint8 item);

    void fetchFirstData();
    void fetchNextData();
    uint8 fetchData(uint32 *length);
    void beginData();
    void sendEmptyBlockZero();

    void repeatOnRequest(uint8 *packet, uint32 length);
    void stayedSilent(bool mayRepeat);
    void giveUp();
    void receiverCancelled();
    void clearCounters();

    void buildPacket(uint8 sequence, uint32 length);
    void buildEot();
    void keepBlockZero();
    void sendBuffer();

    uint32 m_repeatDivider;
    uint32 m_silenceLimit;
    uint32 m_errorLimit;
    bool m_isTimed = true; // the present step
    uint32 m_steps = 0;    // silent ones
    uint32 m_errors = 0;   // requests for the same packet
    uint32 m_requests = 0; // those of them that ask by Request for data
    uint8 m_sequence = 0;
    uint32 m_skipped = 0; // bytes of the receiver's packet that have not arrived yet
    uint32 m_stage = Idle;
    std::array<uint8, 3 + largestData + 2> m_buffer{}; // what was sent last, or is kept to be sent
    uint32 m_bufferLength = 0;
    // Block 0 as sent: what follows it is already in m_buffer when a receiver
    // asks for block 0 once more.
    std::array<uint8, 3 + blockZeroSize + 2> m_blockZero{};
};
