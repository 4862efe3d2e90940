// The engine against scripted receivers: whole sessions as the bytes that go
// each way, and the rules for silence, errors and cancelling by count of steps.

#include "transfer/ymodem.h"

#include <QByteArray>
#include <QVector>
#include <QtTest>

namespace {

const QByteArray kCancel("\x18\x18\x18\x18\x18");

// Bit by bit from the definition, on a message followed by 16 zero bits.
QByteArray crc(const QByteArray &data)
{
    quint32 remainder = 0;
    for (const char byte : data + QByteArray(2, '\0'))
        for (int bit = 7; bit >= 0; --bit) {
            remainder = remainder << 1 | (static_cast<uchar>(byte) >> bit & 1u);
            if (remainder & 0x10000)
                remainder ^= 0x11021;
        }
    return QByteArray(1, static_cast<char>(remainder >> 8)) + static_cast<char>(remainder & 0xFF);
}

QByteArray packet(int number, const QByteArray &content, int size)
{
    const QByteArray data = content + QByteArray(size - content.size(), '\0');
    return QByteArray(1, size == 128 ? '\x01' : '\x02') + static_cast<char>(number) +
           static_cast<char>(255 - number) + data + crc(data);
}

QByteArray content(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

// Files from memory; what is written is kept, what is "received" is fed.
class Sender : public Ymodem
{
public:
    Sender(uint32 divider = 9, uint32 silence = 3, uint32 errors = 4)
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
        const int size = file.size() - offset < 129 ? 128 : 1024;
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
void establish(Sender &sender)
{
    QCOMPARE(sender.step("C"), QByteArray()); // wakes up only
    QCOMPARE(sender.step(), packet(0, "f0", 128));
}

void transmit(Sender &sender)
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
    void computesTheCheck();
    void sendsABatch();
    void cutsFilesIntoBlocks_data();
    void cutsFilesIntoBlocks();
    void wrapsSequenceNumbers();
    void repeatsWhatIsAskedFor();
    void keepsAFetchedPacketUntilAsked();
    void anEarlyRequestDoesNotSkipTheNextFile();
    void repeatsAfterSilence();
    void givesUpAfterSilence_data();
    void givesUpAfterSilence();
    void givesUpAfterErrors();
    void endsWhenCancelled_data();
    void endsWhenCancelled();
    void cancelsWhenTheSourceRefuses();
    void abortsAndStartsAgain();
    void takesPacketsApart();
};

void TestYmodem::computesTheCheck()
{
    QCOMPARE(int(Ymodem::crc16(reinterpret_cast<const Ymodem::uint8 *>("123456789"), 9)), 0x31C3);
}

// Two files, one of them empty, to the end of the batch: each step's bytes.
void TestYmodem::sendsABatch()
{
    Sender sender;
    sender.files = {content(300), QByteArray()};
    const QByteArray block = packet(1, content(300), 1024);
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
    QCOMPARE(sender.step("\x06"), QByteArray());
    QCOMPARE(sender.step("C"), QByteArray("\x04")); // nothing in it
    QCOMPARE(sender.step("\x06"), QByteArray());
    QCOMPARE(sender.step("C"), packet(0, "", 128));
    QVERIFY(sender.reported.isEmpty());
    QCOMPARE(sender.step("\x06"), QByteArray());
    QCOMPARE(sender.reported, QVector<int>{3});
}

void TestYmodem::cutsFilesIntoBlocks_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QVector<int>>("blocks");
    QTest::newRow("1") << 1 << QVector<int>{128};
    QTest::newRow("128") << 128 << QVector<int>{128};
    QTest::newRow("129") << 129 << QVector<int>{1024};
    QTest::newRow("1024") << 1024 << QVector<int>{1024};
    QTest::newRow("1025") << 1025 << QVector<int>{1024, 128};
    QTest::newRow("2153") << 2153 << QVector<int>{1024, 1024, 128};
}

void TestYmodem::cutsFilesIntoBlocks()
{
    QFETCH(int, size);
    QFETCH(QVector<int>, blocks);
    Sender sender;
    sender.files = {content(size)};
    establish(sender);
    QCOMPARE(sender.step("\x06"), QByteArray());
    int at = 0;
    for (int i = 0; i < blocks.size(); ++i) {
        QCOMPARE(sender.step(i == 0 ? "C" : "\x06"),
                 packet(i + 1, content(size).mid(at, blocks[i]), blocks[i]));
        at += blocks[i];
    }
    QCOMPARE(sender.step("\x06"), QByteArray("\x04"));
}

void TestYmodem::wrapsSequenceNumbers()
{
    Sender sender;
    sender.files = {content(258 * 1024)};
    transmit(sender);
    for (int number = 2; number <= 258; ++number)
        QCOMPARE(sender.step("\x06"),
                 packet(number % 256, content(258 * 1024).mid((number - 1) * 1024, 1024), 1024));
}

void TestYmodem::repeatsWhatIsAskedFor()
{
    Sender sender;
    sender.files = {content(1)};
    establish(sender);
    QCOMPARE(sender.step("\x15"), packet(0, "f0", 128));
    QCOMPARE(sender.step("C"), packet(0, "f0", 128)); // not acknowledged yet
    sender.step("\x06");
    QCOMPARE(sender.step("\x15"), packet(0, "f0", 128)); // the packet behind it waits
    const QByteArray data = packet(1, content(1), 128);
    QCOMPARE(sender.step("C"), data);
    QCOMPARE(sender.step("\x15"), data);
    QCOMPARE(sender.step("C"), data);
    QCOMPARE(sender.step("?"), QByteArray()); // noise
    QCOMPARE(sender.step("\x06"), QByteArray("\x04"));
    QCOMPARE(sender.step("C"), packet(0, "", 128)); // asks for a file before it has ended this one
    QCOMPARE(sender.step("\x15"), packet(0, "", 128));
    QCOMPARE(sender.step("C"), packet(0, "", 128));
    sender.step("\x06");
    QCOMPARE(sender.reported, QVector<int>{3});
}

void TestYmodem::keepsAFetchedPacketUntilAsked()
{
    Sender sender;
    sender.files = {content(3000)};
    establish(sender);
    QCOMPARE(sender.step("\x06\x06\x06"), QByteArray());
    QCOMPARE(sender.step(), QByteArray());
    QCOMPARE(sender.silentSteps(25), -1); // two periods without a repeat
    QCOMPARE(sender.fetches, 1);
    QCOMPARE(sender.step("C"), packet(1, content(1024), 1024));
    QCOMPARE(sender.step("\x06"), packet(2, content(3000).mid(1024, 1024), 1024));
}

void TestYmodem::anEarlyRequestDoesNotSkipTheNextFile()
{
    Sender sender;
    sender.files = {content(2000), content(1)};
    transmit(sender);
    sender.step("\x06");
    QCOMPARE(sender.step("\x06"), QByteArray("\x04"));
    sender.step("\x06");
    QCOMPARE(sender.step("C"), packet(0, "f1", 128));
    QCOMPARE(sender.step("C"), packet(0, "f1", 128));
    sender.step("\x06");
    QCOMPARE(sender.step("C"), packet(1, content(1), 128));
}

// With a divider of 9 a period is ten steps.
void TestYmodem::repeatsAfterSilence()
{
    Sender sender;
    sender.files = {content(1)};
    sender.step();
    QCOMPARE(sender.silentSteps(35), -1); // nothing to repeat before the first request
    QCOMPARE(sender.step("C"), packet(0, "f0", 128));
    QCOMPARE(sender.silentSteps(20), 10);
    QCOMPARE(sender.output, packet(0, "f0", 128));
    QCOMPARE(sender.silentSteps(20), 10);
    sender.step("\x06");
    sender.step("C"); // begins a new count
    for (int i = 0; i < 3; ++i)
        QCOMPARE(sender.silentSteps(20), 10);
    QCOMPARE(sender.output, packet(1, content(1), 128));
    sender.step("\x06");
    QCOMPARE(sender.silentSteps(20), 10);
    QCOMPARE(sender.output, QByteArray("\x04"));
}

void TestYmodem::givesUpAfterSilence_data()
{
    QTest::addColumn<QByteArray>("answers");
    QTest::addColumn<int>("status");
    QTest::newRow("no request") << QByteArray() << 5;
    QTest::newRow("block 0") << QByteArray("C") << 6;
    QTest::newRow("packet kept") << QByteArray("C\x06") << 6;
    QTest::newRow("packet") << QByteArray("C\x06"
                                          "C")
                            << 6;
    QTest::newRow("end of file") << QByteArray("C\x06"
                                               "C\x06")
                                 << 6;
    QTest::newRow("next file") << QByteArray("C\x06"
                                             "C\x06\x06")
                               << 5;
    QTest::newRow("end of batch") << QByteArray("C\x06"
                                                "C\x06\x06"
                                                "C")
                                  << 6;
}

void TestYmodem::givesUpAfterSilence()
{
    QFETCH(QByteArray, answers);
    QFETCH(int, status);
    Sender sender;
    sender.files = {content(1)};
    sender.step();
    for (const char answer : answers)
        sender.step(QByteArray(1, answer));
    for (int i = 1; i < 40; ++i)
        sender.step(i % 7 == 0 ? "?" : ""); // noise is no answer
    QVERIFY(sender.reported.isEmpty());
    QCOMPARE(sender.step(), kCancel);
    QCOMPARE(sender.reported, QVector<int>{status});
    // What comes later is a new transfer's.
    sender.index = 0;
    QCOMPARE(sender.step("C"), QByteArray());
    QCOMPARE(sender.step(), packet(0, "f0", 128));
}

void TestYmodem::givesUpAfterErrors()
{
    for (const QByteArray &answers : {QByteArray("C"),
                                      QByteArray("C\x06"
                                                 "C"),
                                      QByteArray("C\x06"
                                                 "C\x06\x06"
                                                 "C")}) {
        Sender sender;
        sender.files = {content(1)};
        sender.step();
        for (const char answer : answers)
            sender.step(QByteArray(1, answer));
        const QByteArray sent = sender.output;
        for (int i = 0; i < 4; ++i)
            QCOMPARE(sender.step(i % 2 == 0 ? "\x15" : "C"), sent);
        QCOMPARE(sender.step("\x15"), kCancel);
        QCOMPARE(sender.reported, QVector<int>{6});
    }
}

void TestYmodem::endsWhenCancelled_data()
{
    givesUpAfterSilence_data();
}

void TestYmodem::endsWhenCancelled()
{
    QFETCH(QByteArray, answers);
    for (const char cancel : {'\x18', 'A', 'a'}) {
        Sender sender;
        sender.files = {content(1)};
        sender.step();
        for (const char answer : answers)
            sender.step(QByteArray(1, answer));
        QCOMPARE(sender.step(QByteArray(1, cancel)), QByteArray());
        QCOMPARE(sender.reported, QVector<int>{4});
    }
}

void TestYmodem::cancelsWhenTheSourceRefuses()
{
    Sender atBlockZero;
    atBlockZero.refuses = true;
    atBlockZero.step();
    QCOMPARE(atBlockZero.step("C"), kCancel);

    for (const bool first : {true, false}) {
        Sender sender;
        sender.files = {content(3000)};
        first ? establish(sender) : transmit(sender);
        sender.refuses = true;
        QCOMPARE(sender.step("\x06"), kCancel);
        QCOMPARE(sender.step(), QByteArray()); // at the beginning again
        sender.refuses = false;
        sender.index = 0;
        QCOMPARE(sender.step("C"), packet(0, "f0", 128));
    }
}

void TestYmodem::abortsAndStartsAgain()
{
    Sender sender;
    sender.files = {content(3000)};
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
void TestYmodem::takesPacketsApart()
{
    for (const int size : {128, 1024}) {
        Sender sender(499);
        sender.files = {content(3000)};
        transmit(sender);
        const QByteArray odd = packet(1, QByteArray(size, '\x06'), size);
        for (int at = 0; at < odd.size(); at += 40)
            QCOMPARE(sender.step(odd.mid(at, 40)), QByteArray());
        QCOMPARE(sender.fetches, 1);
        QCOMPARE(sender.step("\x06"), packet(2, content(3000).mid(1024, 1024), 1024));
    }
}

QTEST_APPLESS_MAIN(TestYmodem)
#include "test_ymodem.moc"
