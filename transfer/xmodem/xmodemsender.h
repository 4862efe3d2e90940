#pragma once

// The sending side of XModem and XModem-1K: one file, without its name and size.
// The receiver chooses the check: NAK asks for a sum of eight bits, 'C' for the
// CRC. Works as Ymodem does: the derived class moves the bytes, supplies the data and
// calls step() at its own pace; silences are counted in such steps.

#include "ymodem.h"

#include <array>

class XmodemSender
{
public:
    using uint8 = Ymodem::uint8;
    using uint32 = Ymodem::uint32;

    static constexpr uint8 filler = 0x1A; // behind the file's end in its last packet

    // See Ymodem. Data are not repeated after a silence: a receiver that is only
    // slow would answer both packets. It asks when something was lost.
    XmodemSender(uint32 silenceLimit, uint32 errorLimit);
    virtual ~XmodemSender() = default;
    XmodemSender(const XmodemSender &) = delete;
    XmodemSender &operator=(const XmodemSender &) = delete;

    // isTimed: a step without an answer counts as silence.
    void step(bool isTimed);
    // Back to the beginning; without a word to the receiver.
    void reset();

    bool usesCrc() const { return m_usesCrc; }

protected:
    // As those of Ymodem. Establish only asks whether there is a file; Transmit gets
    // 1024 filler bytes.
    virtual uint8 statusCallback(Ymodem::Status status, uint8 *buffer, uint32 *length) = 0;
    virtual uint32 readBytes(uint8 *buffer, uint32 length) = 0;
    virtual uint32 writeBytes(uint8 *buffer, uint32 length) = 0;

private:
    enum class Stage { Waiting, Sending, Ending };

    void stepWaiting(uint8 item);
    void stepSending(uint8 item);
    void stepEnding(uint8 item);
    void begin();
    void fetch();
    void build();
    void repeat();
    void countSilence(bool isTimed);
    void dropSurplus();
    void finish(Ymodem::Status status);
    void cancelReceiver();
    bool isAnswer(uint8 item) const;

    uint32 m_silenceLimit; // steps
    uint32 m_errorLimit;
    Stage m_stage = Stage::Waiting;
    uint32 m_steps = 0;  // silent ones
    uint32 m_errors = 0; // requests for the same packet
    uint32 m_cans = 0;   // in a row
    bool m_usesCrc = true;
    bool m_isFirst = true; // no packet has been accepted
    uint8 m_sequence = 0;
    uint32 m_dataLength = 0;
    std::array<uint8, 3 + Ymodem::largestData + 2> m_packet{};
    uint32 m_packetLength = 0;
};
