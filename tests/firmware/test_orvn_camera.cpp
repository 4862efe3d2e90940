// The board's side of the camera link, byte by byte. Packets are written out.

#include "orvn_camera.h"

#include <QtTest>

#include <cstring>

namespace {

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

QByteArray bytesOf(const uint8_t *bytes, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(bytes), static_cast<int>(size));
}

} // namespace

class TestOrvnCamera : public QObject
{
    Q_OBJECT

private slots:
    void buildsPackets()
    {
        uint8_t packet[ORVN_CAMERA_REPLY_MAX + 1];
        packet[17] = 0xEE; // another's
        QCOMPARE(bytesOf(packet, orvn_camera_announce(packet, 1, ORVN_CAMERA_RGB888, 2, 3)),
                 hex("4f52564e0111000000010502000300a552"));
        QCOMPARE(int(packet[17]), 0xEE);
        QCOMPARE(bytesOf(packet, orvn_camera_reply(packet, 0, ORVN_CAMERA_OK, 0x3008, 0x5A, 1)),
                 hex("4f52564e0010000000110008305aaf47"));
        for (const int length : {4, 5, 255})
            QCOMPARE(orvn_camera_reply(packet, 0, ORVN_CAMERA_OK, 0x3008, 0x5A, uint8_t(length)),
                     size_t(ORVN_CAMERA_REPLY_MAX));

        uint8_t header[ORVN_CAMERA_HEADER];
        uint8_t trailer[ORVN_CAMERA_TRAILER];
        const QByteArray data = hex("1011121314151617");
        uint16_t crc = orvn_camera_image_begin(header, 0, 8);
        for (const char byte : data)
            crc = orvn_camera_crc(crc, reinterpret_cast<const uint8_t *>(&byte), 1);
        orvn_camera_image_end(trailer, crc);
        QCOMPARE(bytesOf(header, sizeof header) + data + bytesOf(trailer, sizeof trailer),
                 hex("4f52564e00140000000210111213141516174e6e"));
        orvn_camera_image_begin(header, 0, 0xFFFFFFFFU); // more than the host receives
        QCOMPARE(bytesOf(header, 9), hex("4f52564e0000000004"));
    }

    // Lengths that are out of range are 4 and 1 bytes.
    void limitsLengths()
    {
        orvn_camera_receiver receiver;
        orvn_camera_receiver_init(&receiver, 200, 0);
        orvn_camera_request request;
        int requests = 0;
        // Almost a request of 4 and 200 bytes, then one of 4 and 1.
        const QByteArray bytes = hex("4f52564e00d8000000100102030405") + QByteArray(216, 'x') +
                                 hex("4f52564e001100000010010203045a");
        const QByteArray crc = hex("2124");
        for (const char byte : bytes + crc)
            requests += orvn_camera_receive(&receiver, static_cast<uint8_t>(byte), &request);
        QCOMPARE(requests, 1);
        QCOMPARE(int(request.status), int(ORVN_CAMERA_OK));
        QCOMPARE(request.value, 0x5AU);
    }

    void parsesRequests()
    {
        const auto seen = [](const QByteArray &bytes, uint8_t addresses = 2, uint8_t values = 1) {
            orvn_camera_receiver receiver;
            std::memset(&receiver, 'O', sizeof receiver); // on the stack
            receiver.count = 1;
            orvn_camera_receiver_init(&receiver, addresses, values);
            orvn_camera_request request;
            QString all;
            for (const char byte : bytes)
                if (orvn_camera_receive(&receiver, static_cast<uint8_t>(byte), &request))
                    all += QString::asprintf("%c%d:%x:%x:%x:%d ", request.write ? 'w' : 'r', request.device,
                                             request.reg_id, request.address, request.value, request.status);
            return all;
        };
        const QByteArray read = hex("4f52564e01100000001134120830429a");
        const QByteArray write = hex("4f52564e000f0000001008305afdf2");
        QCOMPARE(seen(read), "r1:1234:3008:0:0 ");
        // Forgotten to be initialized, it is ready for what the host is set to at first.
        orvn_camera_receiver forgotten{};
        orvn_camera_receiver initialized = ORVN_CAMERA_RECEIVER_INIT(2, 1);
        orvn_camera_request request;
        for (const char byte : read + write)
            QCOMPARE(orvn_camera_receive(&forgotten, static_cast<uint8_t>(byte), &request),
                     orvn_camera_receive(&initialized, static_cast<uint8_t>(byte), &request));
        QCOMPARE(request.value, 0x5AU);
        QCOMPARE(seen("OROR" + read + "x" + write), "r1:1234:3008:0:0 w0:0:3008:5a:0 ");
        QCOMPARE(seen(read.left(12) + write), "r1:1234:524f:0:1 w0:0:3008:5a:0 "); // cut
        QCOMPARE(seen(read.left(15) + "x"), "r1:1234:3008:0:1 ");                  // wrong checksum
        QCOMPARE(seen(write.mid(1) + write + write.mid(1)), "w0:0:3008:5a:0 ");    // not complete
        QCOMPARE(seen(hex("4f52564e01ffffffff1134120830429a")), "");               // wrong length
        for (const char *length : {"00000000", "01000000"})                        // no such command
            QCOMPARE(seen(hex("4f52564e01") + hex(length) + hex("1234120830429a")), "");
        const QByteArray longest = hex("4f52564e01140000001001020304a1a2a3a4");
        for (const char *crc : {"", "??"})
            QCOMPARE(seen(longest + crc + longest + hex("ae43"), 4, 4),
                     "w1:0:4030201:a4a3a2a1:1 w1:0:4030201:a4a3a2a1:0 ");
        for (const int count : {int(ORVN_CAMERA_REQUEST_MAX), 0xFF}) {
            std::memset(&forgotten, 0xFF, sizeof forgotten); // on the stack
            forgotten.count = uint8_t(count);
            int requests = 0;
            for (const char byte : longest + hex("ae43"))
                requests += orvn_camera_receive(&forgotten, static_cast<uint8_t>(byte), &request);
            QVERIFY(requests == 1 && request.status == ORVN_CAMERA_OK);
        }
    }
};

QTEST_APPLESS_MAIN(TestOrvnCamera)
#include "test_orvn_camera.moc"
