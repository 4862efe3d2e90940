// The engine against scripted receivers: whole sessions as the bytes that go
// each way, and the rules for silence, errors and cancelling by count of steps.

#include "testfiles.h"
#include "ymodem.h"
#include "ymodempackets.h"

#include <QVector>
#include <QtTest>

namespace {

const QByteArray kCancel("\x18\x18\x18\x18\x18");

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
    // Begins, and takes each answer after so many silent steps.
    void answer(const QByteArray &answers, int silence = 0)
    {
        step();
        for (const char answer : answers) {
            for (int i = 0; i < silence; ++i)
                step();
            step(QByteArray(1, answer));
        }
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
void establish(MemorySender &sender)
{
    QCOMPARE(sender.step("C"), QByteArray()); // wakes up only
    QCOMPARE(sender.step(), packet(0, "f0", 128));
}

void transmit(MemorySender &sender)
{
    establish(sender);
    QCOMPARE(sender.step("\x06"), QByteArray());
    QVERIFY(!sender.step("C").isEmpty());
}

} // namespace

class TestYmodem : public QObject
{
    Q_OBJECT

private slots:
    // Two files, one of them empty, to the end of the batch: each step's bytes.
    void sendsABatch()
    {
        MemorySender sender;
        sender.files = {patternBytes(300), QByteArray()};
        const QByteArray block = packet(1, patternBytes(300), 1024);
        QCOMPARE(block.left(3), QByteArray("\x02\x01\xFE"));
        QCOMPARE(block.mid(303, 724), QByteArray(724, '\0'));

        QCOMPARE(sender.step(), QByteArray());
        QCOMPARE(sender.step(), QByteArray());
        QCOMPARE(sender.step("C"), packet(0, "f0", 128));
        QCOMPARE(sender.step("\x06"), QByteArray());
        QCOMPARE(sender.step("C"), block);
        QCOMPARE(sender.step("\x06"), QByteArray("\x04"));
        QCOMPARE(sender.step("\x15"), QByteArray("\x04")); // the first end is refused, as many do
        QCOMPARE(sender.step("\x06"), QByteArray());
        QCOMPARE(sender.step("C"), packet(0, "f1", 128));
        QCOMPARE(sender.step("C"), packet(0, "f1", 128)); // no other file
        QCOMPARE(sender.step("\x06"), QByteArray());
        QCOMPARE(sender.step("C"), QByteArray("\x04")); // nothing in it
        QCOMPARE(sender.step("\x06"), QByteArray());
        QCOMPARE(sender.step("C"), packet(0, "", 128));
        QVERIFY(sender.reported.isEmpty());
        QCOMPARE(sender.step("\x06"), QByteArray());
        QCOMPARE(sender.reported, QVector<int>{3});
        sender.index = 0;
        establish(sender);
    }

    void repeatsWhatIsAskedFor()
    {
        MemorySender sender;
        sender.files = {patternBytes(9)};
        establish(sender);
        QCOMPARE(sender.step("\x15"), packet(0, "f0", 128));
        QCOMPARE(sender.step("C"), packet(0, "f0", 128)); // not acknowledged yet
        sender.step("\x06");
        QCOMPARE(sender.step("\x15"), packet(0, "f0", 128)); // the packet behind it waits
        QCOMPARE(sender.step("C"), packet(1, patternBytes(9), 128));
        QCOMPARE(sender.step("?"), QByteArray()); // noise
        QCOMPARE(sender.step("\x06"), QByteArray("\x04"));
        QCOMPARE(sender.step("C"), packet(0, "", 128)); // asks for a file before it has ended this one
        sender.step("\x06");
        QCOMPARE(sender.reported, QVector<int>{3});
    }

    void keepsAFetchedPacketUntilAsked()
    {
        MemorySender sender;
        sender.files = {patternBytes(3000)};
        establish(sender);
        QCOMPARE(sender.step("\x06\x06\x06"), QByteArray());
        QCOMPARE(sender.silentSteps(25), -1); // two periods without a repeat
        QCOMPARE(sender.fetches, 1);
        QCOMPARE(sender.step("C"), packet(1, patternBytes(1024), 1024));
        QCOMPARE(sender.step("\x06"), packet(2, patternBytes(3000).mid(1024, 1024), 1024));
    }

    // Of four periods of ten steps, after answers that were slow.
    void givesUpAfterSilence()
    {
        // Before and after block 0, a packet kept and sent, ends of file and batch, next file.
        const std::tuple<const char *, int, bool> rows[] = {
            {"", 5, false},      {"C", 6, true},         {"C\6", 6, false},     {"C\6C", 6, true},
            {"C\6C\6", 6, true}, {"C\6C\6\6", 5, false}, {"C\6C\6\6C", 6, true}};
        for (const auto &[answers, status, repeats] : rows) {
            MemorySender sender;
            sender.files = {patternBytes(1)};
            sender.answer(answers, 35);
            const QByteArray sent = sender.output;
            for (int i = 1; i < 40; ++i) // noise is no answer
                QCOMPARE(sender.step(i % 7 == 0 ? "?" : ""), repeats && i % 10 == 0 ? sent : QByteArray());
            QVERIFY(sender.reported.isEmpty());
            QCOMPARE(sender.step("\x01"), kCancel); // and the beginning of a packet
            QCOMPARE(sender.reported, QVector<int>{status});
            // What comes later is a new transfer's.
            sender.index = 0;
            QCOMPARE(sender.step("C"), QByteArray());
            QCOMPARE(sender.step(), packet(0, "f0", 128));
        }
    }

    void givesUpAfterErrors()
    {
        for (const char *answers : {"C", "C\25\25\6\25\25C", "C\25\25\6C\25\25\25\6\6C"}) {
            MemorySender sender;
            sender.files = {patternBytes(1)};
            sender.answer(answers);
            const QByteArray sent = sender.output;
            for (int i = 0; i < 4; ++i)
                QCOMPARE(sender.step(i % 2 == 0 ? "\x15" : "C"), sent);
            QCOMPARE(sender.step("\x15"), kCancel);
            QCOMPARE(sender.reported, QVector<int>{6});
        }
    }

    void endsWhenCancelled()
    {
        for (const char cancel : {'\x18', 'A', 'a'}) {
            for (const char *answers : {"", "C", "C\x06"}) {
                MemorySender sender;
                sender.files = {patternBytes(1)};
                sender.answer(answers + QByteArray(1, cancel), 35);
                QCOMPARE(sender.output, QByteArray());
                QCOMPARE(sender.reported, QVector<int>{4});
                sender.reported.clear();
                sender.index = 0;
                QCOMPARE(sender.silentSteps(38), -1); // of a new transfer
                QCOMPARE(sender.step("C"), packet(0, "f0", 128));
            }
        }
    }

    void cancelsWhenTheSourceRefuses()
    {
        MemorySender atBlockZero;
        atBlockZero.refuses = true;
        atBlockZero.step();
        QCOMPARE(atBlockZero.step("C"), kCancel);

        for (const bool first : {true, false}) {
            MemorySender sender;
            sender.files = {patternBytes(3000)};
            first ? establish(sender) : transmit(sender);
            sender.refuses = true;
            QCOMPARE(sender.step("\x06"), kCancel);
            QCOMPARE(sender.step(), QByteArray()); // at the beginning again
            sender.refuses = false;
            sender.index = 0;
            QCOMPARE(sender.step("C"), packet(0, "f0", 128));
        }
    }

    void abortsAndStartsAgain()
    {
        MemorySender sender;
        sender.files = {patternBytes(3000)};
        transmit(sender);
        sender.step(QByteArray("\x01half", 5)); // of a packet
        sender.output.clear();
        sender.abortTransfer();
        QCOMPARE(sender.output, kCancel);
        sender.index = 0;
        transmit(sender);
    }

    // Packets from the receiver are read whole, over many steps if need be, and
    // none of their bytes is taken for an answer.
    void takesPacketsApart()
    {
        for (const int size : {128, 1024}) {
            MemorySender sender(499);
            sender.files = {patternBytes(3000)};
            transmit(sender);
            const QByteArray odd = packet(1, QByteArray(size, '\x06'), size);
            for (int at = 0; at < odd.size(); at += 40)
                QCOMPARE(sender.step(odd.mid(at, 40)), QByteArray());
            QCOMPARE(sender.fetches, 1);
            QCOMPARE(sender.step("\x06"), packet(2, patternBytes(3000).mid(1024, 1024), 1024));
        }
    }
};

QTEST_APPLESS_MAIN(TestYmodem)
#include "test_ymodem.moc"
