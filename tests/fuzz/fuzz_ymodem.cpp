// The receiver's answers to the YModem engine: any bytes, at any time. Every
// step ends, and what is written is a control byte, five Can or a whole packet
// whose check is right.

#include "checksum.h"
#include "ymodem.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr uint8_t kSilence = 0xEE;
constexpr uint8_t kWholePackets = 0xF0;

void require(bool condition)
{
    if (!condition)
        std::abort();
}

class Sender : public Ymodem
{
public:
    Sender(const uint8_t *answers, size_t size)
        : Ymodem(answers[0] % 8, answers[1] % 4, answers[2] % 4)
        , m_answers(answers + 3)
        , m_left(size - 3)
    {
    }

    // How many of the answers wait in a step is theirs to say.
    bool step()
    {
        if (m_left == 0)
            return false;
        if (*m_answers == kSilence) {
            m_waiting = 0;
            --m_left;
            ++m_answers;
        } else {
            m_waiting = std::min<size_t>(m_left, *m_answers >= kWholePackets ? 1100 : 1 + *m_answers % 2);
        }
        transmitStep();
        m_left -= m_taken;
        m_answers += m_taken;
        m_taken = 0;
        return true;
    }

protected:
    uint8 statusCallback(Status status, uint8 *buffer, uint32 *length) override
    {
        if (status != Establish && status != Transmit)
            return Can;
        const uint32 room = status == Establish ? blockZeroSize : largestData;
        require(std::all_of(buffer, buffer + room, [](uint8 byte) { return byte == 0; }));
        std::fill_n(buffer, room, uint8(0xA5));
        ++m_calls;
        *length = m_calls % 5 == 0 ? 0xFFFFFFFFu : m_calls % 2 == 0 ? 128 : 1024; // too long, at times
        return m_calls % 7 == 0 ? Eot : m_calls % 11 == 0 ? Can : Ack;
    }
    uint32 readBytes(uint8 *buffer, uint32 length) override
    {
        require(length >= 1 && length <= 1028);
        const size_t count = std::min<size_t>(m_waiting - std::min(m_waiting, m_taken), length);
        std::copy_n(m_answers + m_taken, count, buffer);
        m_taken += count;
        return static_cast<uint32>(count);
    }
    uint32 writeBytes(uint8 *buffer, uint32 length) override
    {
        if (length == 1) {
            require(buffer[0] == Eot);
        } else if (length == 5) {
            require(std::all_of(buffer, buffer + 5, [](uint8 byte) { return byte == Can; }));
        } else {
            require(length == 133 || length == 1029);
            require(buffer[0] == (length == 133 ? Soh : Stx) && buffer[1] + buffer[2] == 0xFF);
            const auto crc =
                Crc::of(CrcModels::crc16Xmodem, reinterpret_cast<const char *>(buffer) + 3, length - 5);
            require(buffer[length - 2] == crc >> 8 && buffer[length - 1] == (crc & 0xFF));
        }
        return length;
    }

private:
    const uint8_t *m_answers;
    size_t m_left;
    size_t m_waiting = 0;
    size_t m_taken = 0;
    unsigned m_calls = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 3)
        return 0;
    Sender sender(data, size);
    while (sender.step()) {
    }
    return 0;
}
