// Files received from sb and sx and sent to rx of lrzsz: other programs' idea of
// the protocols, on a line that flips, loses and doubles bytes.

#include "filereceive.h"
#include "peerline.h"
#include "seriallink.h"
#include "testfiles.h"
#include "ymodemfiletransmit.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using Settings = ModemReceiver::Settings;
constexpr auto kXmodem = ModemReceiver::Protocol::Xmodem;
constexpr auto kYmodem = ModemReceiver::Protocol::Ymodem;

bool open(SerialLink *link, const QString &device)
{
    SerialSettings settings;
    settings.name = device;
    settings.baudRate = 115200;
    return link->open(settings);
}

} // namespace

class TestLrzsz : public QObject
{
    Q_OBJECT

private slots:
    void receives()
    {
        struct Row
        {
            const char *command;
            Settings settings;
            QVector<int> sizes;
            const char *fault; // on the way to the program
            const char *answerFault;
        };
        const Row rows[] = {{"sb -q", {}, {0, 1, 128, 129, 5000, 300 * 1024}, "", ""},
                            {"sb -q", {}, {5000, 3000}, "flip@20", ""}, // the header
                            {"sb -q", {}, {5000, 3000}, "flip@2000", ""},
                            {"sb -q", {}, {5000, 3000}, "flip@133", ""}, // the first byte of a packet
                            {"sb -q", {}, {5000, 3000}, "lose@2000", ""},
                            {"sb -q", {}, {5000, 3000}, "double@2000", ""},
                            {"sb -q", {}, {5000, 3000}, "double@1161", ""}, // the last byte of a packet
                            {"sb -q", {}, {5000, 3000}, "", "flip@4"},      // an ACK
                            {"sx -q -k", {kXmodem}, {5000}, "flip@2000", ""},
                            {"sx -q", {kXmodem}, {40000}, "lose@500", ""}, // more packets than numbers
                            {"sx -q", {kXmodem, false}, {5000}, "flip@300", ""},
                            {"sx -q", {kXmodem}, {5000}, "double@131", ""}};
        for (const Row &row : rows) {
            QTemporaryDir from, to;
            QString command = row.command;
            for (int i = 0; i < row.sizes.size(); ++i) {
                const QString name = QStringLiteral("f%1.bin").arg(i);
                QVERIFY(writeFile(from.filePath(name), patternBytes(row.sizes.at(i))));
                command += ' ' + name;
            }
            PeerLine line;
            line.toProgram = LineFault(row.fault);
            line.toPeer = LineFault(row.answerFault);
            SerialLink link;
            QVERIFY(open(&link, line.device()));
            FileReceive receive;
            QVERIFY(line.start(from.path(), command));
            QVERIFY(receive.start(&link, row.settings, {to.path(), 1 << 20, "f0.bin"}));
            const bool isDone = PeerLine::waitUntil([&] { return !receive.isBusy(); });
            const QByteArray log = command.toUtf8() + row.fault + row.answerFault +
                                   receive.log().text().right(3000).toUtf8() + line.peerErrors();
            QVERIFY2(isDone && receive.reason().isEmpty(), log);
            QVERIFY2(line.waitForPeer(), log);
            QCOMPARE(QDir(to.path()).entryList(QDir::Files).size(), row.sizes.size());
            for (int i = 0; i < row.sizes.size(); ++i) {
                QByteArray content = contentOf(to.filePath(QStringLiteral("f%1.bin").arg(i)));
                if (row.settings.protocol == kXmodem) {
                    QVERIFY2(content.size() - row.sizes.at(i) < 1024, log);
                    content.truncate(row.sizes.at(i)); // the filler
                }
                QVERIFY2(content == patternBytes(row.sizes.at(i)), log);
            }
        }
    }

    void sendsByXmodem()
    {
        struct Row
        {
            const char *command;
            int packet;
            bool quick;
            const char *fault; // on the way to the peer
        };
        const Row rows[] = {{"rx -q -c", 128, false, ""},
                            {"rx -q -c", 1024, true, "flip@1500"},
                            {"rx -q", 1024, true, "double@1500"}, // a sum, short packets
                            {"rx -q", 128, true, "lose@200"}};
        for (const Row &row : rows) {
            QTemporaryDir from, to;
            const QByteArray content = patternBytes(40 * 1024 + 5);
            QVERIFY(writeFile(from.filePath("a.bin"), content));
            PeerLine line;
            line.toPeer = LineFault(row.fault);
            SerialLink link;
            QVERIFY(open(&link, line.device()));
            YmodemFileTransmit transmit;
            transmit.setFileList({from.filePath("a.bin")});
            transmit.setProtocol(YmodemFileTransmit::Protocol::Xmodem, row.packet);
            transmit.setQuick(row.quick);
            QVERIFY(transmit.startTransmit(&link));
            QVERIFY(line.start(to.path(), row.command + QString(" b.bin")));
            const bool isDone = PeerLine::waitUntil([&] { return !transmit.isBusy(); });
            const QByteArray log = row.command + QByteArray(row.fault) +
                                   transmit.log().text().right(3000).toUtf8() + line.peerErrors();
            QVERIFY2(isDone && transmit.reason().isEmpty(), log);
            QVERIFY2(line.waitForPeer(), log);
            const QByteArray received = contentOf(to.filePath("b.bin"));
            QVERIFY2(received.startsWith(content) && received.size() - content.size() < 128, log);
        }
    }

    // From either side; what was received stays, named as incomplete.
    void isCancelled()
    {
        for (const bool byPeer : {true, false}) {
            QTemporaryDir from, to;
            QVERIFY(writeFile(from.filePath("a.bin"), patternBytes(400 * 1024)));
            PeerLine line;
            SerialLink link;
            QVERIFY(open(&link, line.device()));
            FileReceive receive;
            QVERIFY(line.start(from.path(), "sb -q a.bin"));
            QVERIFY(receive.start(&link, {}, {to.path()}));
            QVERIFY(PeerLine::waitUntil([&] { return receive.bytesDone() >= 20 * 1024; }));
            if (byPeer) {
                line.endPeer(); // its last words are those of a user that cancels
                line.line().write(QByteArray(8, '\x18') + QByteArray(10, '\b'));
            } else {
                receive.stop();
            }
            QVERIFY(PeerLine::waitUntil([&] { return !receive.isBusy(); }));
            QCOMPARE(receive.incompleteFiles(), QStringList(to.filePath("a.bin.part")));
            const QByteArray part = contentOf(to.filePath("a.bin.part"));
            QVERIFY(part.size() >= 20 * 1024 && patternBytes(400 * 1024).startsWith(part));
            if (!byPeer)
                QVERIFY(!line.waitForPeer());
        }
    }
};

QTEST_GUILESS_MAIN(TestLrzsz)
#include "test_lrzsz.moc"
