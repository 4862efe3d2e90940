// A sender's bytes to the receiving engine, at any time: every file begins before
// it has bytes and has no more of them than announced, replies are control bytes, and a
// transfer that has ended says nothing more. Names become plain ones.

#include "modemreceiver.h"
#include "receivedname.h"
#include "ymodem.h"

#include <cstdlib>

namespace {

constexpr uint8_t kSilence = 0xEE; // the next byte says how long

void require(bool condition)
{
    if (!condition)
        std::abort();
}

class Folder : public ModemReceiver::Sink
{
public:
    explicit Folder(uint8_t refusals)
        : m_refusals(refusals)
    {
    }

    void reply(const QByteArray &bytes) override
    {
        require(!m_isEnded);
        for (const char byte : bytes)
            require(byte == Ymodem::Ack || byte == Ymodem::Nak || byte == Ymodem::Can ||
                    byte == Ymodem::Request);
    }
    bool beginFile(const QByteArray &name, qint64 size) override
    {
        require(!m_isOpen && size >= -1);
        const QString plain = ReceivedName::plain(name);
        require(plain.toUtf8().size() <= 240 && !plain.contains('/') && !plain.contains('\\'));
        require(plain != "." && plain != ".." && !plain.startsWith('.'));
        m_isOpen = true;
        m_left = size;
        return m_refusals != 1;
    }
    bool storeBytes(const char *, int count) override
    {
        require(m_isOpen && count > 0 && count <= ModemReceiver::maxData);
        require(m_left < 0 || count <= m_left);
        m_left -= m_left < 0 ? 0 : count;
        return m_refusals != 2;
    }
    bool endFile(bool isComplete) override
    {
        require(m_isOpen && isComplete == (m_left <= 0));
        m_isOpen = false;
        return m_refusals != 3;
    }
    void passOn(const QByteArray &bytes) override { require(!bytes.isEmpty()); }
    void noteFault(ModemReceiver::Fault) override {}
    void handleEnd(ModemReceiver::End) override
    {
        require(!m_isEnded);
        m_isEnded = true;
    }

private:
    uint8_t m_refusals;
    bool m_isOpen = false;
    bool m_isEnded = false;
    qint64 m_left = -1;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    Folder folder(data[1] % 8);
    ModemReceiver receiver(&folder);
    const auto protocol =
        data[0] % 2 == 0 ? ModemReceiver::Protocol::Ymodem : ModemReceiver::Protocol::Xmodem;
    qint64 nowMs = 0;
    receiver.start({protocol, data[0] % 4 < 2}, nowMs);
    const size_t chunk = 1 + data[0] / 4;
    for (size_t i = 2; i < size && receiver.isRunning();) {
        if (data[i] == kSilence && i + 1 < size) {
            nowMs += 100 * data[i + 1];
            receiver.timeOut(nowMs);
            i += 2;
            continue;
        }
        size_t count = 0;
        while (count < chunk && i + count < size && data[i + count] != kSilence)
            ++count;
        count = count == 0 ? 1 : count;
        const QByteArray bytes(reinterpret_cast<const char *>(data + i), static_cast<int>(count));
        const int used = receiver.receive(bytes, nowMs);
        require(used >= 0 && used <= bytes.size() && (used == bytes.size() || !receiver.isRunning()));
        i += count;
    }
    return 0;
}
