// A batch received by rb of lrzsz: another program's idea of the protocol.

#include "peerline.h"
#include "testfiles.h"
#include "ymodemfiletransmit.h"

#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <filesystem>

class TestRb : public QObject
{
    Q_OBJECT

private slots:
    void receivesABatch_data()
    {
        QTest::addColumn<int>("packet");
        QTest::addColumn<bool>("quick");
        QTest::newRow("default") << 1024 << false;
        QTest::newRow("quick, short packets") << 128 << true;
    }
    void receivesABatch()
    {
        QFETCH(const int, packet);
        QFETCH(const bool, quick);
        const QVector<QPair<QString, int>> files{
            {"empty.bin", 0},
            {"two words.bin", 128},
            {QStringLiteral("固件升级包 v1.0.bin"), 5000},
            {"large.bin", 270 * 1024}}; // more blocks than sequence numbers
        QTemporaryDir from;
        QTemporaryDir to;
        QStringList names;
        for (const auto &file : files) {
            names.append(from.filePath(file.first));
            QVERIFY(writeFile(names.last(), patternBytes(file.second)));
        }

        PeerLine line;
        QVERIFY(line.start(to.path(), "rb --binary"));
        YmodemFileTransmit transmit;
        transmit.setFileList(names);
        transmit.setPortName(line.device());
        transmit.setBaudRate(115200);
        transmit.setProtocol(YmodemFileTransmit::Protocol::Ymodem, packet);
        transmit.setQuick(quick);
        QVERIFY(transmit.startTransmit());
        QVERIFY(PeerLine::waitUntil([&] { return !transmit.isBusy(); }));
        QVERIFY2(transmit.reason().isEmpty(), qPrintable(transmit.log().text().right(2000)));
        QVERIFY(line.waitForPeer());

        QTextCodec *codec = QTextCodec::codecForName("GB18030");
        for (const auto &file : files) {
            const QByteArray name = codec->fromUnicode(file.first);
            const QString readable = to.filePath("received"); // Qt cannot name every row of bytes
            std::filesystem::rename((to.path().toStdString() + '/' + name.toStdString()),
                                    readable.toStdString());
            QVERIFY2(contentOf(readable) == patternBytes(file.second), name);
        }
    }
};

QTEST_GUILESS_MAIN(TestRb)
#include "test_rb.moc"
