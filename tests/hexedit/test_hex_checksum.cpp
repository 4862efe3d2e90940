// Checksums by name and by parameters, as rules of a file, and the file of notes.

#include "hexnotes.h"

#include <QtTest>

class TestHexChecksum : public QObject
{
    Q_OBJECT

private:
    static QByteArray of(const QString &name, const QString &crc, const QByteArray &bytes)
    {
        auto digest = HexDigest::make(name, crc);
        if (!digest)
            return "none";
        digest->add(bytes.constData(), 4);
        digest->add(bytes.constData() + 4, bytes.size() - 4);
        return digest->value().toHex();
    }

private slots:
    // The check values of the catalogue, of the nine digits.
    void computesByName()
    {
        const QHash<QString, QByteArray> checks{{"CRC-32", "cbf43926"},
                                                {"CRC-32/BZIP2", "fc891918"},
                                                {"CRC-32/MPEG-2", "0376e6e7"},
                                                {"CRC-32C", "e3069283"},
                                                {"CRC-16/MODBUS", "4b37"},
                                                {"CRC-16/XMODEM", "31c3"},
                                                {"CRC-16/CCITT-FALSE", "29b1"},
                                                {"CRC-16/ARC", "bb3d"},
                                                {"CRC-16/KERMIT", "2189"},
                                                {"CRC-16/X-25", "906e"},
                                                {"CRC-16/USB", "b4c8"},
                                                {"CRC-24/OPENPGP", "21cf02"},
                                                {"CRC-8", "f4"},
                                                {"CRC-8/MAXIM", "a1"},
                                                {"累加和 8位", "dd"},
                                                {"累加和 16位", "01dd"},
                                                {"累加和 32位", "000001dd"},
                                                {"累加和取反加一 8位", "23"},
                                                {"异或 8位", "31"},
                                                {"MD5", "25f9e794323b453885f5181f1b624d0b"},
                                                {"SHA-1", "f7c3bc1d808e04732adf679965ccc34ca7ae3441"}};
        int checked = 0;
        for (const QString &name : HexDigest::names()) {
            if (checks.contains(name)) {
                QCOMPARE(of(name, {}, "123456789"), checks.value(name));
                ++checked;
            }
            const QString crc = HexDigest::crcText(name);
            if (!crc.isEmpty())
                QCOMPARE(of(HexDigest::customCrc(), crc, "123456789"), checks.value(name));
        }
        QCOMPARE(checked, checks.size());
        QCOMPARE(of(HexDigest::customCrc(), "3,3,0,0,0,7", "123456789"), QByteArray("04"));  // CRC-3/GSM
        QCOMPARE(of(HexDigest::customCrc(), "5,15,0,1,1,0", "123456789"), QByteArray("07")); // CRC-5/G-704
        for (const char *wrong :
             {"", "32,1,2,1,1", "33,1,0,0,0,0", "8,100,0,0,0,0", "8,7,0,2,0,0", "8,x,0,0,0,0"})
            QVERIFY(!HexDigest::make(HexDigest::customCrc(), wrong));
    }

    void placesRules()
    {
        HexRule rule;
        rule.digest = "CRC-32";
        auto places = rule.places(HexAddressMap(), 100);
        QVERIFY(places && places->begin == 0 && places->end == 96 && places->at == 96 && places->bytes == 4);
        QCOMPARE(rule.ordered("\1\2\3\4"), QByteArray("\4\3\2\1"));
        QCOMPARE((HexRule{"MD5", {}, "0", "end-10", "end-10"}.ordered("\1\2\3\4")),
                 QByteArray("\1\2\3\4")); // no number
        rule.at = "10";
        QVERIFY(!rule.places(HexAddressMap(), 100)); // among its own bytes
        rule.begin = "14";
        QVERIFY(rule.places(HexAddressMap(), 100)); // hexadecimal: directly before them
        rule.begin = "13";
        QVERIFY(!rule.places(HexAddressMap(), 100));
        rule.begin = "0";
        rule.at = "end-3";
        QVERIFY(!rule.places(HexAddressMap(), 100)); // does not fit
        QVERIFY((!HexRule{"CRC-32", {}, "0", "end-4", "end-4"}.places(HexAddressMap(), 3)));
        QVERIFY((!HexRule{"CRC-33", {}, "0", "end-4", "end-4"}.places(HexAddressMap(), 100)));
        // Where the bytes have addresses, with a gap.
        const HexAddressMap image(HexRuns{{0x1000, 0, 0x20}, {0x2000, 0x20, 0x20}});
        rule = HexRule{"CRC-32", {}, "1000", "1020", "end-4"};
        places = rule.places(image, 0x40);
        QVERIFY(places && places->begin == 0 && places->end == 0x20 && places->at == 0x3C);
        rule.end = "2001";
        QVERIFY(!rule.places(image, 0x40)); // over the gap
        rule.end = "1010";
        rule.at = "101E";
        QVERIFY(!rule.places(image, 0x40)); // into the gap
        HexDocument document;
        document.appendContent("0123456789xx");
        HexDigestJob job(document, *HexDigest::make("累加和 8位", {}), 1, 4);
        while (job.step()) {
        }
        QCOMPARE(job.value().toHex(), QByteArray("96"));
    }

    void keepsNotes()
    {
        HexNotes notes, again;
        notes.bookmarks = {{0x20, 4, "启动 \"头\"", 3}, {qint64(5) << 32, 1, "", 0}};
        notes.rules = {HexRule{"CRC 自定义", "8,07,0,0,0,0", "10", "end-1", "end-1", false, true}};
        QVERIFY(again.fromJson(notes.toJson()));
        QCOMPARE(again.bookmarks.size(), 2);
        QVERIFY(again.bookmarks[0].name == notes.bookmarks[0].name && again.bookmarks[0].color == 3);
        QCOMPARE(again.bookmarks[1].address, qint64(5) << 32);
        QCOMPARE(again.rules.size(), 1);
        QCOMPARE(again.rules[0].text(), notes.rules[0].text());
        QVERIFY(again.rules[0].renews && !again.rules[0].isLittleEndian);
        QVERIFY(!again.fromJson("[]") && again.isEmpty());
        QVERIFY(again.fromJson(
            R"({"korvexNotes":1,"bookmarks":[{"address":-1,"length":1},{"address":1e300,"length":1},
            {"address":2,"length":0},{"address":9,"length":1,"color":99},{"address":7,"length":2}],"checksums":[{}]})"));
        QVERIFY(again.bookmarks.size() == 2 && again.bookmarks[0].address == 7 && again.rules.isEmpty());
        QCOMPARE(again.bookmarks[1].color, HexBookmark::colorCount - 1);
    }
};

QTEST_APPLESS_MAIN(TestHexChecksum)
#include "test_hex_checksum.moc"
