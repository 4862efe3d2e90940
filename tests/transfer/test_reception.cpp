// Receiving files: from our own sender on a line where any one byte is wrong, and
// from senders that mean harm.

#include "filereceive.h"
#include "fulldisk.h"
#include "peerline.h"
#include "receivedname.h"
#include "testfiles.h"
#include "virtualtransfer.h"
#include "ymodempackets.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

using Protocol = YmodemFileTransmit::Protocol;

// Both directions in memory, on one clock.
struct VirtualLine
{
    explicit VirtualLine(const QString &folder)
    {
        receive.setClock([this] { return run.nowMs; });
        target.folder = folder;
    }
    bool start(Protocol protocol, bool crc = true)
    {
        const auto own =
            protocol == Protocol::Xmodem ? ModemReceiver::Protocol::Xmodem : ModemReceiver::Protocol::Ymodem;
        return receive.start(&link, {own, crc}, target);
    }
    // 10 ms.
    void step()
    {
        run.step();
        if (!run.link.sent.isEmpty())
            link.receive(toReceiver.apply(std::exchange(run.link.sent, {})));
        QMetaObject::invokeMethod(&receive, "handleDue");
        if (!link.sent.isEmpty())
            run.link.receive(toSender.apply(std::exchange(link.sent, {})));
        isDone = isDone || (!receive.isRunning() && !run.driver.isBusy());
    }

    VirtualTransfer run; // sends
    MemoryLink link;     // receives
    FileReceive receive;
    FileReceive::Target target;
    LineFault toReceiver, toSender;
    bool isDone = false;
};

QByteArray header(const QByteArray &name, const QByteArray &size)
{
    return packet(0, name + '\0' + size, 128);
}

} // namespace

class TestReception : public QObject
{
    Q_OBJECT

private slots:
    void makesNamesPlain()
    {
        const std::pair<QByteArray, QString> rows[] = {
            {"a.bin", "a.bin"},
            {"../../x", "x"},
            {"C:\\Windows\\x.dll", "x.dll"},
            {"/", ""},
            {"..", ""},
            {". .", ""},
            {".bashrc", "_.bashrc"},
            {"con", "_con"},
            {"COM1.txt", "_COM1.txt"},
            {"nul .x", "_nul .x"},
            {"Lpt\xC2\xB2.bin", QStringLiteral("_Lpt\u00B2.bin")},
            {"a:b*c\x01", "a_b_c_"},
            {"x. ", "x"},
            {"fdp.\xE2\x80\xAE"
             "exe",
             "fdp._exe"}, // turns the direction
            {QByteArray(300, 'n') + ".bin", QString(196, 'n') + ".bin"},
            {"\xB9\xCC\xBC\xFE.bin", QStringLiteral("固件.bin")}};
        for (const auto &[sent, name] : rows)
            QCOMPARE(ReceivedName::plain(sent), name);
        QCOMPARE(ReceivedName::numbered("a.tar.gz", 2), QStringLiteral("a.tar (2).gz"));
    }

    // One byte of either direction flipped, lost or doubled: whatever is called
    // received is so byte for byte.
    void survivesAnyFault()
    {
        QTemporaryDir from;
        const QByteArray content = patternBytes(1300);
        QVERIFY(writeFile(from.filePath("a.bin"), content));
        for (const Protocol protocol : {Protocol::Xmodem, Protocol::Ymodem})
            for (const QString kind : {"flip", "lose", "double"})
                for (const bool isAnswer : {false, true})
                    for (int at = 0; at < (isAnswer ? 8 : 2400); at += isAnswer ? 1 : at % 133 < 4 ? 1 : 43) {
                        QTemporaryDir to;
                        VirtualLine line(to.path());
                        (isAnswer ? line.toSender : line.toReceiver) =
                            LineFault(QStringLiteral("%1@%2").arg(kind).arg(at));
                        line.run.driver.setProtocol(protocol, 128);
                        QVERIFY(line.run.start({from.filePath("a.bin")}));
                        QVERIFY(line.start(protocol));
                        while (!line.isDone && line.run.nowMs < 300 * 1000)
                            line.step();
                        const QByteArray what = QStringLiteral("%1 %2@%3 %4")
                                                    .arg(int(protocol))
                                                    .arg(kind)
                                                    .arg(at)
                                                    .arg(isAnswer)
                                                    .toUtf8();
                        QVERIFY2(line.receive.files().size() == 1 && line.receive.reason().isEmpty(),
                                 what + line.receive.log().text().toUtf8());
                        const QByteArray received = contentOf(line.receive.files().first());
                        QVERIFY2(protocol == Protocol::Ymodem ? received == content
                                                              : received.left(1300) == content,
                                 what);
                    }
    }

    // A receiver that has asked for a while gets the first packet once.
    void sendsTheFirstPacketOnce()
    {
        QTemporaryDir from;
        QVERIFY(writeFile(from.filePath("a"), "a"));
        for (const bool isCrc : {true, false}) {
            VirtualTransfer run;
            run.driver.setProtocol(Protocol::Xmodem, 1024);
            QVERIFY(run.start({from.filePath("a")}));
            run.link.receive(isCrc ? "CCC" : "\x15\x15\x15");
            for (int i = 0; i < 100; ++i)
                run.step();
            const QByteArray data = 'a' + QByteArray(127, '\x1A');
            const QByteArray sum(1, static_cast<char>('a' + 127 * 0x1A));
            QCOMPARE(run.link.sent, isCrc ? packet(1, data, 128) : QByteArray("\x01\x01\xFE") + data + sum);
        }
    }

    // What is sent, why it is refused or what is missing, and what is in the folder.
    void endsWhatMeansHarm()
    {
        const QByteArray data = packet(1, QByteArray(128, 'd'), 128);
        const QByteArray more = packet(2, QByteArray(128, 'd'), 128);
        const QByteArray eot("\x04\x04", 2);
        struct Row
        {
            QByteArrayList sent;
            QString reason;
            QStringList files;
        };
        const Row rows[] = {
            {{header("a", "5000000000")}, "文件超过接收上限", {}},
            {{header("a", "99999999999999999999999999")}, "文件超过接收上限", {}},
            {{header("a", "9000000000000000000")}, "磁盘空间不足", {}},
            {{header("a", "100"), data, more}, "发送的数据多于声明的大小", {"a.part"}},
            {{header("a", "200"), data, eot}, "收到的数据少于声明的大小", {"a.part"}},
            {{header("a", ""), data, more, packet(3, {}, 128)}, "文件超过接收上限", {"a.part"}},
            {{header("a", ""), packet(2, {}, 128)}, "数据包序号不连续", {}},
            {{data}, "发送端使用的是另一种协议", {}},
            {{header("a", "128"), data, "\x18\x18"}, "发送端取消了传输", {"a.part"}},
            // Not over what is there, nor through a link.
            {{header("old", "1"), data, eot.left(1), packet(0, {}, 128)}, "", {"old", "old (2)"}},
            {{header("../linked", "1"), data, eot.left(1), packet(0, {}, 128)}, "", {"linked (2)"}}};
        for (const Row &row : rows) {
            QTemporaryDir root;
            const QString folder = root.filePath("in");
            QVERIFY(QDir().mkdir(folder));
            const bool isThere = row.files.contains("old");
            if (isThere)
                QVERIFY(writeFile(folder + "/old", "old"));
            if (row.files.contains("linked (2)"))
                QVERIFY(QFile::link(root.filePath("outside"), folder + "/linked.part"));
            VirtualLine line(folder);
            line.target.maxBytes = row.reason.startsWith("磁盘") ? std::numeric_limits<qint64>::max() : 300;
            QVERIFY(line.start(Protocol::Ymodem));
            for (const QByteArray &bytes : row.sent)
                line.link.receive(bytes);
            for (int i = 0; i < 1000; ++i)
                line.step();
            if (line.receive.isRunning())
                line.receive.stop(); // an incomplete file is no end
            const QByteArray what = row.reason.toUtf8() + line.receive.log().text().toUtf8();
            QVERIFY2(line.receive.reason().left(row.reason.size()) == row.reason, what);
            QVERIFY2(QDir(folder).entryList(QDir::Files) == row.files, what);
            QVERIFY2(QDir(root.path()).entryList(QDir::Files).isEmpty(), what);
            if (isThere)
                QCOMPARE(contentOf(folder + "/old"), QByteArray("old"));
        }
    }

    // The folder's disk is full, the folder goes, the device goes, the program is left.
    void keepsWhatArrived()
    {
        for (const QString how : {"full", "gone", "unplugged", "left"}) {
            QTemporaryDir root;
            const QString folder = root.filePath("in");
            QVERIFY(QDir().mkdir(folder));
            auto line = std::make_unique<VirtualLine>(folder);
            QVERIFY(line->start(Protocol::Ymodem));
            line->link.receive(header("a", "100000"));
            std::optional<FullDisk> disk;
            if (how == "full")
                disk.emplace(40000);
            for (int i = 1; i <= 60; ++i)
                line->link.receive(packet(i, QByteArray(1024, 'd'), 1024));
            const QString part = folder + "/a.part";
            if (how == "gone")
                QVERIFY(QDir(folder).removeRecursively());
            if (how == "gone" || how == "unplugged")
                line->link.close();
            QCoreApplication::processEvents();
            disk.reset();
            if (how == "full")
                QVERIFY2(line->receive.reason().startsWith("文件无法写入：a，"),
                         qPrintable(line->receive.reason()));
            if (how == "unplugged")
                QCOMPARE(line->receive.reason(), QStringLiteral("串口已断开"));
            const MemoryLink &link = line->link;
            QVERIFY(how == "left" || how == "gone" || !line->receive.isRunning());
            if (how == "full")
                QVERIFY(link.sent.endsWith("\x18\x18\x18\x18\x18"));
            line.reset();
            QCOMPARE(contentOf(part).size(), how == "full" ? 40000 : how == "gone" ? 9 : 60 * 1024);
        }
    }

    void givesUpALineThatIsNeverQuiet()
    {
        QTemporaryDir to;
        VirtualLine line(to.path());
        QVERIFY(line.start(Protocol::Ymodem));
        line.link.receive(header("a", "100000"));
        while (line.receive.isRunning() && line.run.nowMs < 60 * 1000) {
            line.link.receive("noise");
            line.step();
        }
        QCOMPARE(line.receive.reason(), QStringLiteral("数据包反复出错"));
    }

    void leavesThePromptToTheDisplay()
    {
        QTemporaryDir to;
        VirtualLine line(to.path());
        QByteArray shown;
        connect(&line.receive, &FileReceive::passedOn, this,
                [&](const QByteArray &bytes) { shown += bytes; });
        QVERIFY(line.start(Protocol::Ymodem));
        line.link.receive("sending \x01 now\r\n" + header("a", "1"));
        line.link.receive(packet(1, "d", 128));
        line.link.receive("\x04");
        line.link.receive(packet(0, {}, 128) + "done> ");
        QCOMPARE(shown, QByteArray("sending \x01 now\r\n"));
        QCOMPARE(line.receive.takeUnused(), QByteArray("done> "));
        QCOMPARE(contentOf(to.filePath("a")), QByteArray("d"));
    }
};

QTEST_GUILESS_MAIN(TestReception)
#include "test_reception.moc"
