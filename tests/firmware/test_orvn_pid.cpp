// The board's side of the PID link. Bytes are written out; sums are computed
// here.

#include "orvn_pid.h"

#include <QtTest>

#include <cmath>
#include <cstring>

namespace {

QByteArray withSum(const char *hex)
{
    QByteArray frame = QByteArray::fromHex(hex);
    int sum = 0;
    for (const char byte : qAsConst(frame))
        sum += static_cast<unsigned char>(byte);
    return frame + static_cast<char>(sum % 256);
}

QVector<orvn_pid_command> receive(const QByteArray &bytes, orvn_pid_receiver *receiver = nullptr)
{
    orvn_pid_receiver fresh = ORVN_PID_RECEIVER_INIT;
    QVector<orvn_pid_command> commands;
    orvn_pid_command command;
    for (const char byte : bytes)
        if (orvn_pid_receive(receiver ? receiver : &fresh, static_cast<uint8_t>(byte), &command) == 1)
            commands.append(command);
    return commands;
}

const QByteArray kGains = QByteArray::fromHex("4f52564e02170000001000 00c03f 00002040 000040bf cc");
const QByteArray kStop = withSum("4f52564e050b00000013");

} // namespace

class TestOrvnPid : public QObject
{
    Q_OBJECT

private slots:
    void parsesCommands()
    {
        const struct
        {
            QByteArray bytes;
            int code;
            int channel;
            float p;
            int value;
        } rows[] = {
            {kGains, 0x10, 2, 1.5F, 0},
            {withSum("4f52564e010f0000001100000080"), 0x11, 1, 0, INT_MIN},
            {withSum("4f52564e050f00000011ffffff7f"), 0x11, 5, 0, INT_MAX},
            {withSum("4f52564e030b00000012"), 0x12, 3, 0, 0},
            {kStop, 0x13, 5, 0, 0},
            {withSum("4f52564e010b00000014"), 0x14, 1, 0, 0},
            {withSum("4f52564e040f00000015feffffff"), 0x15, 4, 0, -2},
        };
        for (const auto &row : rows) {
            // Also behind everything that a line can leave there.
            for (const QByteArray &garbage :
                 {QByteArray(), QByteArray("\r\nok"), QByteArray("O"), QByteArray("ORVORVN"),
                  QByteArray("ORVN\x01\x0f"), row.bytes.left(9), kGains.left(10)}) {
                // Complete with its last byte, even behind a frame that is not.
                QCOMPARE(receive(garbage + row.bytes).size(), 1);
                const QVector<orvn_pid_command> commands = receive(garbage + row.bytes + kStop);
                QCOMPARE(commands.size(), 2);
                QCOMPARE(receive(garbage + row.bytes + kStop.mid(1)).size(), 1);
                const orvn_pid_command &command = commands.first();
                QCOMPARE(int(command.code), row.code);
                QCOMPARE(int(command.channel), row.channel);
                QCOMPARE(command.value, row.value);
                QCOMPARE(command.p, row.p);
                QCOMPARE(command.i, row.code == 0x10 ? 2.5F : 0.0F);
                QCOMPARE(command.d, row.code == 0x10 ? -0.75F : 0.0F);
                QCOMPARE(int(commands.last().code), 0x13);
            }
        }
    }

    void skipsWhatIsNoCommand()
    {
        QVector<QByteArray> all{QByteArray(kGains).replace(22, 1, "\xcd"),
                                withSum("4f52564e0117000000100000c07f0000000000000000"), // not a number
                                withSum("4f52564e0117000000100000c03f0000807f00000000"), // infinite I
                                withSum("4f52564e0117000000100000c03f000000000000807f"), // infinite D
                                withSum("4f52564e010000000000")};                        // no length at all
        for (const char *channel : {"00", "06", "ff"})
            all << withSum(QByteArray("4f52564e") + channel + "0b00000012");
        for (const char *command : {"00", "0f", "16"})
            all << withSum(QByteArray("4f52564e010b000000") + command);
        for (const char *length : {"00000000", "0a000000", "0c000000", "0f000000", "ffffff7f", "f5ffffff"})
            all << withSum(QByteArray("4f52564e01") + length + "12");
        for (const QByteArray &bytes : qAsConst(all)) {
            const QVector<orvn_pid_command> commands = receive(bytes + kGains);
            QVERIFY2(commands.size() == 1, bytes.toHex());
            QCOMPARE(int(commands.first().channel), 2);
        }
    }

    void survivesGarbageInTheReceiver()
    {
        for (const int count : {int(ORVN_PID_FRAME_MAX), 0xFF}) {
            orvn_pid_receiver receiver;
            std::memset(&receiver, 0xFF, sizeof receiver); // on the stack, not initialized
            receiver.count = static_cast<uint8_t>(count);
            QCOMPARE(receive(kGains, &receiver).size(), 1);
        }
    }

    void forgetsWhatItIsToldToForget()
    {
        orvn_pid_receiver receiver{};
        QCOMPARE(receive(kGains.left(1), &receiver).size(), 0);
        orvn_pid_receiver_reset(&receiver);
        QCOMPARE(receive(kGains.mid(1) + kGains, &receiver).size(), 1);
    }

    void buildsReports()
    {
        uint8_t frame[ORVN_PID_FRAME_MAX];
        const auto bytes = [&frame](size_t length) {
            return QByteArray(reinterpret_cast<const char *>(frame), static_cast<int>(length));
        };
        QCOMPARE(bytes(orvn_pid_report_target(frame, 1, -1)), withSum("4f52564e010f00000001ffffffff"));
        QCOMPARE(bytes(orvn_pid_report_actual(frame, 5, INT32_MIN)), withSum("4f52564e050f0000000200000080"));
        QCOMPARE(bytes(orvn_pid_report_gains(frame, 2, 1.5F, -0.0F, INFINITY)),
                 withSum("4f52564e02170000000 30000c03f000000800000807f"));
        QCOMPARE(bytes(orvn_pid_report_started(frame, 3)), withSum("4f52564e030b00000004"));
        QCOMPARE(bytes(orvn_pid_report_stopped(frame, 4)), withSum("4f52564e040b00000005"));
        QCOMPARE(bytes(orvn_pid_report_period(frame, 1, 0x01020304)),
                 withSum("4f52564e010f0000000604030201"));
    }
};

QTEST_APPLESS_MAIN(TestOrvnPid)
#include "test_orvn_pid.moc"
