// Firmware images in records of text: what is read from a file and written back.

#include "hexdocument.h"
#include "hexrecordoutput.h"
#include "hexrecordreader.h"
#include "testfiles.h"

#include <QtTest>

class TestHexFormats : public QObject
{
    Q_OBJECT

private slots:
    // Each with its runs as "address:bytes" and its faults as "kind@line".
    void reads_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("runs");
        QTest::addColumn<QString>("faults");
        const QByteArray end = ":00000001FF\r\n";
        const auto row = [](const char *name, const QByteArray &text, const char *runs,
                            const char *faults = "") {
            QTest::newRow(name) << text << QString(runs) << QString(faults);
        };
        row("data", ":0300300002337A1E\r\n" + end, "30:02337A");
        row("blanks", "\r\n  :0300300002337a1e \t\r\r" + end + "\x1A", "30:02337A");
        row("no line end", ":0300300002337A1E\n:00000001FF", "30:02337A");
        row("segment", ":020000021200EA\n:0300300002337A1E\n" + end, "12030:02337A");
        row("linear", ":020000040800F2\n:0300300002337A1E\n" + end, "8000030:02337A");
        row("segment wraps", ":020000021000EC\n:04FFFE000102030AEF\n" + end, "10000:030A 1FFFE:0102");
        row("linear goes on", ":020000040800F2\n:04FFFE000102030AEF\n" + end, "800FFFE:0102030A");
        row("above 4 GB", ":02000004FFFFFC\n:04FFFE000102030AEF\n" + end, "FFFFFFFE:0102", "Beyond@2");
        row("starts only", ":0400000300003800C1\n:04000005000000CD2A\n" + end, "");
        row("descending", ":0100020003FA\n:0100010002FC\n:0100000001FE\n" + end, "0:010203");
        row("later wins", ":04000000AAAAAAAA54\n:0200010001FFFD\n:02000300BBBB85\n" + end, "0:AA01FFBBBB",
            "Overlap@2"); // one range
        row("covered twice", ":0100000001FE\n:0100050005F5\n:0100000002FD\n:0100000003FC\n" + end,
            "0:03 5:05", "Overlap@3 Overlap@4");
        row("wrong sum", ":0300300002337A1F\n" + end, "30:02337A", "Checksum@1");
        row("no record", "\n:0300300002337A1E\n; a note\n:03x0300002337A1E\n:0100000600F9\n" + end,
            "30:02337A", "Unknown@3 Unknown@4 Unknown@5");
        row("long line", QByteArray(5000, ':') + "\n:0300300002337A1E\n" + end, "30:02337A", "Unknown@1");
        row("trailing", ":0300300002337A1E ; note\n" + end, "30:02337A", "Trailing@1");
        row("cut", ":0300300002337A1E\n:030033000233", "30:02337A", "Truncated@2 NoEnd@0");
        row("behind the end", end + ":0300300002337A1E\nmore\n", "", "AfterEnd@2");
        row("S1", "S00600004844521B\nS1070100010203FFF2\nS9030000FC\n", "100:010203FF");
        row("S2 and S3", "S2060100000102F5\nS30708000000AABB8B\nS5030002FA\nS70508000000F2\n",
            "10000:0102 8000000:AABB");
        row("wrong count", "S1070100010203FFF2\nS5030002FA\nS9030000FC\n", "100:010203FF", "Count@2");
        row("no S4", "S4030000FC\nS104000001FA\n", "0:01", "Unknown@1 NoEnd@0");
        row("S without address", "S10100FE\nS104000001FA\nS9030000FC\n", "0:01", "Unknown@1");
    }

    void reads()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, runs);
        QFETCH(QString, faults);
        for (const int part : {1, 7, 100000}) {
            read(text.startsWith('S') ? HexForm::SRecord : HexForm::IntelHex, text, part);
            QCOMPARE(shownRuns(), runs);
            QCOMPARE(shownFaults(), faults);
        }
    }

    void knowsFormsByContent()
    {
        QCOMPARE(HexForms::ofContent("\n:0300300002337A1E\r\n", "a.bin"), HexForm::IntelHex);
        QCOMPARE(HexForms::ofContent("S9030000FC", "a"), HexForm::SRecord);
        for (const char *text : {"", ":", "S", ":0300300002337A1F", "S9030000FD", "hello",
                                 "\x7F"
                                 "ELF"})
            QCOMPARE(HexForms::ofContent(text, "a.bin"), HexForm::Bytes);
        QCOMPARE(HexForms::ofContent(":0300300002337A1F", "a.HEX"), HexForm::IntelHex);
        QCOMPARE(HexForms::ofContent("hello", "a.hex"), HexForm::Bytes);
    }

    // Golden files in the form that this program writes.
    void writesAsRead_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("linear") << QByteArray(":020000040800F2\r\n:03FFFD00010203FB\r\n:020000040801F1\r\n"
                                              ":0100000004FB\r\n:0400000508000131BD\r\n:00000001FF\r\n");
        QTest::newRow("segments") << QByteArray(":03000000010203F7\n:020000021000EC\n:03000000040506EE\n"
                                                ":0400000300003800C1\n:00012301DB\n");
        QTest::newRow("S1") << QByteArray("S00600004844521B\r\nS104010001F9\r\nS104020002F7\r\nS5030002FA\r\n"
                                          "S9030000FC\r\n");
        QTest::newRow("S3 though S1 would do")
            << QByteArray("S306000000000102\r\n").replace("0102", "01F8") + "S70508000000F2\r\n";
        QTest::newRow("aligned") << QByteArray(
            "S10501060102F0\nS10B01080001020304050607CF\nS104011003E7\nS9030000FC\n");
        QTest::newRow("not aligned") << QByteArray(
            "S10B01060001020304050607D1\nS106010E010203E4\nS9030000FC\n");
        QTest::newRow("nothing") << QByteArray(":00000001FF\r\n");
    }

    void writesAsRead()
    {
        QFETCH(QByteArray, text);
        read(text.startsWith('S') ? HexForm::SRecord : HexForm::IntelHex, text);
        QCOMPARE(shownFaults(), QString());
        const QByteArray written = write(m_image, m_image.recordLength);
        QCOMPARE(written, text);
    }

    // A large image with gaps, in each form and with each length of records.
    void losesNothing()
    {
        const QByteArray bytes = patternBytes(300000);
        const HexRuns low{{0x123, 0, 200000}, {0x40001, 200000, 1}, {0xFFFF0, 200001, 16}};
        const HexRuns high{{0xFF, 0, 70000}, {0x7FFFFFFF, 70000, 229999}, {0xFFFFFFFF, 299999, 1}};
        for (const HexRuns &runs : {low, high})
            for (const HexForm form : {HexForm::IntelHex, HexForm::SRecord})
                for (const int length : {7, 16, 255}) {
                    HexImage image;
                    image.form = form;
                    image.hasSegments = runs == low;
                    image.hasCount = true;
                    image.start = 0x2345678;
                    m_document = HexDocument();
                    const HexRun &last = runs.back();
                    m_document.appendContent(bytes.left(static_cast<int>(last.offset + last.length)));
                    const QByteArray before = m_document.read(0, 300000);
                    image.runs = runs;
                    const QByteArray text = write(image, length);
                    read(form, text, 70001);
                    QCOMPARE(shownFaults(), QString());
                    QVERIFY(m_image.runs == runs && m_document.read(0, 300001) == before);
                    QCOMPARE(m_image.start, std::optional<quint32>(0x2345678));
                    QCOMPARE(m_image.hasSegments, form == HexForm::IntelHex && runs == low);
                }
        QVERIFY(!HexRecordOutput::refusal({{0xFFFFFFFF, 0, 2}}).isEmpty());
        QVERIFY(HexRecordOutput::refusal(high).isEmpty());
    }

    // Another program's files are read as it means them, and it reads ours.
    void agreesWithObjcopy_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("address");
        for (const char *format : {"ihex", "srec"})
            for (const char *address : {"0xFFF0", "0x08000000", "0xFFF00001"})
                QTest::newRow(qPrintable(QString("%1 %2").arg(format, address))) << format << address;
    }

    void agreesWithObjcopy()
    {
        QFETCH(QString, format);
        QFETCH(QString, address);
        const QTemporaryDir folder;
        const QByteArray bytes = patternBytes(150000);
        QVERIFY(writeFile(folder.filePath("in"), bytes));
        const auto objcopy = [&folder](QStringList arguments, const char *from, const char *to) {
            return QProcess::execute("objcopy", arguments << folder.filePath(from) << folder.filePath(to)) ==
                   0;
        };
        QVERIFY(objcopy({"-I", "binary", "-O", format, "--change-addresses", address}, "in", "theirs"));
        read(format == "ihex" ? HexForm::IntelHex : HexForm::SRecord, contentOf(folder.filePath("theirs")));
        QCOMPARE(shownFaults(), QString());
        QVERIFY((m_image.runs == HexRuns{{address.toLongLong(nullptr, 16), 0, bytes.size()}}));
        QCOMPARE(m_document.read(0, 200000), bytes);
        QCOMPARE(write(m_image, m_image.recordLength), contentOf(folder.filePath("theirs")));
        m_image.runs = {{m_image.runs.front().address, 0, 149000},
                        {m_image.runs.front().address + 149500, 149000, 1000}};
        QVERIFY(writeFile(folder.filePath("ours"), write(m_image, m_image.recordLength)));
        QVERIFY(objcopy({"-I", format, "-O", "binary", "--gap-fill", "0xA5"}, "ours", "out"));
        QByteArray filled = bytes;
        filled.insert(149000, QByteArray(500, '\xA5'));
        QCOMPARE(contentOf(folder.filePath("out")), filled);
        HexFilledOutput output(m_document, m_image.runs, 0xA5);
        QCOMPARE(all(output), filled);
        QCOMPARE(output.size(), qint64(filled.size()));
    }

    // Many records the wrong way round, and all at one address.
    void ordersManyRecords()
    {
        QByteArray text;
        for (int i = 199999; i >= 0; --i)
            HexRecord::append(HexForm::SRecord, 3, static_cast<quint32>(i % 2 ? i : 0), QByteArray(1, 'a'),
                              &(text += '\n'));
        read(HexForm::SRecord, text, 1 << 20);
        QCOMPARE(m_document.size(), 100001);
        QCOMPARE(m_image.faults.count(), qint64(99999 + 1)); // and no end
        QCOMPARE(m_image.faults.first().size(), HexFaults::maxKept);
    }

private:
    void read(HexForm form, const QByteArray &text, int part = 1000)
    {
        HexRecordReader reader(form);
        for (int at = 0; at < text.size(); at += part)
            reader.add(text.constData() + at, qMin(part, text.size() - at));
        while (reader.finish() != HexRecordReader::State::Done) {
        }
        m_image = reader.image();
        m_document = HexDocument();
        for (const QByteArray &block : reader.blocks())
            m_document.appendContent(block);
    }

    static QByteArray all(HexOutput &output)
    {
        QByteArray text;
        for (QByteArray slice = output.next(); !slice.isEmpty(); slice = output.next())
            text += slice;
        return text;
    }

    QByteArray write(const HexImage &image, int recordLength) const
    {
        HexRecordOutput output(m_document, image.runs, image, recordLength);
        const QByteArray text = all(output);
        return text.size() <= output.size() ? text : QByteArray("more than estimated");
    }

    QString shownRuns() const
    {
        QStringList runs;
        for (const HexRun &run : m_image.runs)
            runs += QString::number(run.address, 16).toUpper() + ':' +
                    m_document.read(run.offset, static_cast<int>(run.length)).toHex().toUpper();
        return runs.join(' ');
    }

    QString shownFaults() const
    {
        static const char *const kinds[] = {"Checksum",  "Overlap", "Beyond",   "Unknown", "Trailing",
                                            "Truncated", "Count",   "AfterEnd", "NoEnd"};
        QStringList faults;
        for (const HexFault &fault : m_image.faults.first())
            faults += QString("%1@%2").arg(kinds[int(fault.kind)]).arg(fault.line);
        return faults.join(' ');
    }

    HexImage m_image;
    HexDocument m_document;
};

QTEST_GUILESS_MAIN(TestHexFormats)
#include "test_hexformats.moc"
