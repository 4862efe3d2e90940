#pragma once

// The engine sending files from memory, and the packets that it has to send.

#include "testfiles.h"
#include "ymodem.h"
#include "ymodempackets.h"

#include <QByteArray>
#include <QVector>
#include <QtTest>

inline const QByteArray kCancel("\x18\x18\x18\x18\x18");

// Files from memory; what is written is kept, what is "received" is fed.
class MemorySender : public Ymodem
{
public:
    MemorySender(uint32 divider = 9, uint32 silence = 3, uint32 errors = 4)
        : Ymodem(divider, silence, errors)
    {
    }

    // One step with these bytes waiting; what was written in it.
    QByteArray step(const QByteArray &received = {})
    {
        input += received;
        output.clear();
        transmitStep();
        return output;
    }
    // Begins, and takes each answer in a step of its own.
    void answer(const QByteArray &answers)
    {
        step();
        for (const char answer : answers)
            step(QByteArray(1, answer));
    }
    // Steps until something is written or an end is reported; how many.
    int silentSteps(int most)
    {
        output.clear();
        for (int i = 1; i <= most; ++i) {
            transmitStep();
            if (!output.isEmpty() || !reported.isEmpty())
                return i;
        }
        return -1;
    }

    QVector<QByteArray> files;
    int index = 0;
    int offset = 0;
    bool refuses = false;
    QByteArray input;
    QByteArray output;
    QVector<int> reported; // statuses 3 to 6
    int fetches = 0;

protected:
    uint8 statusCallback(Status status, uint8 *buffer, uint32 *length) override
    {
        if (status == Establish) {
            if (refuses)
                return 0x18;
            if (index == files.size())
                return 0x04;
            const QByteArray name = "f" + QByteArray::number(index);
            std::copy(name.begin(), name.end(), buffer);
            offset = 0;
            ++index;
            return 0x06;
        }
        if (status != Transmit) {
            reported.append(status);
            return 0x18;
        }
        ++fetches;
        if (refuses)
            return 0x18;
        const QByteArray &file = files.at(index - 1);
        if (offset == file.size())
            return 0x04;
        const int size = file.size() < 300 ? 128 : 1024; // the engine sends what it is given
        const QByteArray part = file.mid(offset, size);
        std::copy(part.begin(), part.end(), buffer);
        offset += part.size();
        *length = static_cast<uint32>(size);
        return 0x06;
    }
    uint32 readBytes(uint8 *buffer, uint32 length) override
    {
        const int count = qMin(input.size(), static_cast<int>(length));
        std::copy_n(input.begin(), count, buffer);
        input.remove(0, count);
        return static_cast<uint32>(count);
    }
    uint32 writeBytes(uint8 *buffer, uint32 length) override
    {
        output.append(reinterpret_cast<const char *>(buffer), static_cast<int>(length));
        return length;
    }
};

// A sender whose block 0 has been sent, or whose first packet has.
inline void establish(MemorySender &sender)
{
    QCOMPARE(sender.step("C"), QByteArray()); // wakes up only
    QCOMPARE(sender.step(), packet(0, "f0", 128));
}

inline void transmit(MemorySender &sender)
{
    establish(sender);
    QCOMPARE(sender.step("\x06"), QByteArray());
    QVERIFY(!sender.step("C").isEmpty());
}
