// The rows of a register table and its file.

#include "registercsv.h"
#include "registerfile.h"
#include "registerlist.h"
#include "registertablemodel.h"
#include "testfiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

class TestRegisterTable : public QObject
{
    Q_OBJECT

private slots:
    void readsFiles()
    {
        // Cells with |, rows with /; how many were skipped.
        const std::tuple<QByteArray, const char *, int> files[] = {
            {"1,3008,5A,x\n2,3009,00,y\n", "1|3008|5A|x/2|3009|00|y", 0},
            {"x\n1,2,3,4,5\n\n", "1|2|3|4", 1},
            {"1,2,3,4", "1|2|3|4", 0},
            {"1,2,3,\xc6\xd8\xb9\xe2\n", "1|2|3|曝光", 0},            // GB18030
            {"\xef\xbb\xbf" + QByteArray("1,2,3,曝"), "1|2|3|曝", 0}, // with a byte order mark
            {"1,2,3,曝光\n", "1|2|3|曝光", 0},
            {"\xef\xbb\xbf\"1\";\"30\";4;\"a, \"\"b\"\"\"\r\n2;31;5;x,y,z\r\n",
             "1|30|4|a， \"b\"/2|31|5|x，y，z", 0},
            {"1\t30\t4\t\"two\nlines\"\n", "1|30|4|two lines", 0},
            {"1,30,4,a;b;c;d\n2,31,5,\n", "1|30|4|a;b;c;d/2|31|5|", 0},
            {QByteArray("\xff\xfe"
                        "1\0\t\0"
                        "2\0\t\0"
                        "3\0\t\0\xdd\x66\n\0",
                        18),
             "1|2|3|曝", 0},
            {"1,2,3,\xc6", "1|2|3|", 0},
            {"1,2,3,4\n5,6,7,8\n9,,,\n1,1,1,1\n2,2,2,2\n", "1|2|3|4/5|6|7|8/9|||", 0}};
        for (const auto &[content, rows, skipped] : files) {
            RegisterCsv::Reader reader(content, 3);
            while (reader.read(1)) {
            }
            QStringList seen;
            for (const RegisterRow &row : reader.rows())
                seen += QStringList{row.number, row.address, row.value, row.description}.join('|');
            QCOMPARE(seen.join('/'), QString(rows));
            QCOMPARE(reader.skipped(), skipped);
            QCOMPARE(reader.beyondLimit(), qMax(0, content.count("\n") - 3));
        }
    }

    // Pairs with =, their description behind /; lines that were skipped, the first of them.
    void readsLists()
    {
        const std::tuple<QByteArray, const char *, int, int> files[] = {
            {"{0x3008, 0x82},\n  { 0x3009 , 16 }, // gain, high\n\n/* a\n {1, 2},\n*/ {0x5, 0x6}\n",
             "3008=82 3009=10/gain， high 05=06", 0, 0},
            {"#include <x.h>\nstatic const struct reg init[] = {\n{0x1, 2}, {0x3, 4}, /* both */\n};\n",
             "01=02/both 03=04/both", 2, 1},
            {"0x3008, 0x82 // a, b, c\n", "3008=82/a， b， c", 0, 0},
            {"const u8 a[][2] = { {0x01, 0x02}, {0x03, 0x04u} };", "01=02 03=04", 0, 0},
            {"3008 82\n3009,5a\nAAh = 10 ; dark\n", "3008=82 3009=5a AA=10/dark", 0, 0},
            {"(0x3008, 0x82)\n[12296,130]\n0x3009\t0x01 # on\n", "3008=82 3008=82 3009=01/on", 0, 0},
            {"0x1,2\n{0x1, 2, 3},\n{REG, 0x1},\n{0x1, 010},\nwrite(0x1, 0x2);\n{0x123456789, 1}\n"
             "{0x1, 0x2}, end\n{0x1, -1}\n{0x0x1, 1}\n0x1 0x2 0x3 0x4\n",
             "01=02", 9, 2}};
        for (const auto &[content, expected, skipped, first] : files) {
            QVERIFY2(RegisterList::isList(content) || skipped > 2, content);
            RegisterList::Reader reader(content, 100);
            while (reader.read(1)) {
            }
            QStringList seen;
            for (const RegisterRow &row : reader.rows())
                seen += row.address + '=' + row.value +
                        (row.description.isEmpty() ? QString() : "/" + row.description);
            QCOMPARE(seen.join(' '), QString(expected));
            QCOMPARE(reader.skipped(), skipped);
            QCOMPARE(reader.firstSkipped(), first);
        }
        for (const char *table : {"1,3008,5A,x\n", "1;2;3;4\n2;3;4;5", "寄存器编号,a,b,c\n1,2\n", ""})
            QVERIFY(!RegisterList::isList(QByteArray(table)));
    }

    // A compiler accepts it, and what it says is read again.
    void writesC()
    {
        const QVector<RegisterRow> rows{
            {{}, "3008", "82", "曝光\\"}, {"7", "0x123456", "5", {}}, {}, {{}, "1", {}, {}}};
        const RegisterList::Written header = RegisterList::write(rows, RegisterList::Header, "1 int", 2, 2);
        QCOMPARE(header.text, QByteArray("#ifndef R1_INT_REGISTERS_H\n#define R1_INT_REGISTERS_H\n\n"
                                         "#include <stdint.h>\n\n"
                                         "static const uint32_t r1_int_registers[][2] = {\n"
                                         "    {0x3008, 0x0082}, // 曝光\n    {0x123456, 0x0005}, // 7\n};\n"
                                         "\n#endif\n"));
        QVERIFY(header.pairs == 2 && !header.hasAll);
        const RegisterList::Written array =
            RegisterList::write(rows.mid(0, 1), RegisterList::Array, "表", 2, 1);
        QCOMPARE(array.text, QByteArray("#include <stdint.h>\n\nconst uint16_t registers[][2] = {\n"
                                        "    {0x3008, 0x82}, // 曝光\n};\n"));
        RegisterList::Reader reader(array.text, 9);
        QVERIFY(!reader.read(99) && reader.rows().size() == 1 && reader.rows().at(0).value == "82");
    }

    void parsesHexadecimal()
    {
        const QMap<QString, qint64> cases{{"3008", 0x3008},    {"fFfFfFfF", 0xFFFFFFFF},
                                          {" 0xa9", 0xa9},     {"", -1},
                                          {"0x123456789", -1}, {"0x", -1},
                                          {"30 08", -1},       {"3g", -1},
                                          {"-1", -1}};
        for (auto entry = cases.begin(); entry != cases.end(); ++entry) {
            const RegisterRow row{{}, entry.key(), entry.key(), {}};
            quint32 address = 0;
            quint32 value = 0;
            const bool isValid = row.addressNumber(&address) && row.valueNumber(&value);
            QCOMPARE(isValid && address == value ? qint64(address) : -1, entry.value());
        }
    }

    void keepsRowsAndPages()
    {
        RegisterTableModel table;
        QVERIFY(table.addPage() && table.addPage());
        const QSignalSpy changes(&table, &QAbstractItemModel::dataChanged);
        const QAbstractItemModelTester tester(&table, QAbstractItemModelTester::FailureReportingMode::QtTest);
        for (const int row : {0, 150, 250}) {
            set(table, row, RegisterTableModel::Address, QString::number(row));
            table.setOutcome(row, row == 250 ? RegisterTableModel::Unanswered : RegisterTableModel::Answered);
        }
        QCOMPARE(changes.size(), 3 + 3);
        table.setValue(150, QStringLiteral("5A"));
        QCOMPARE(table.row(150).value, QStringLiteral("5A"));
        QVERIFY(!table.setData(table.index(1, 3), QStringLiteral("a,b")));
        QVERIFY(!table.setData(table.index(1, 3), QStringLiteral("a\nb")));
        QCOMPARE(table.filledRows(1), 1);
        const QSignalSpy removed(&table, &QAbstractItemModel::rowsRemoved);
        table.removePage(1);
        QVERIFY(removed.at(0).at(1) == 100 && removed.at(0).at(2) == 199);
        QCOMPARE(table.row(150).address, QStringLiteral("250"));
        for (const int row : {0, 150})
            QCOMPARE(table.index(row, RegisterTableModel::Value).data(Qt::ToolTipRole).toString(),
                     row == 0 ? QString() : QStringLiteral("开发板没有应答"));
        const QSignalSpy begun(&table, &QAbstractItemModel::modelAboutToBeReset);
        const QSignalSpy ended(&table, &QAbstractItemModel::modelReset);
        table.append(QVector<RegisterRow>(9850, {{}, "1", {}, {}}), true); // one more than fits
        QCOMPARE(table.rowCount(), 10000);
        QCOMPARE(table.row(151).address, QStringLiteral("1"));
        QCOMPARE(table.outcome(150), RegisterTableModel::Unanswered);
        QVERIFY(!table.addPage());
        table.clear();
        QCOMPARE(table.rowCount(), 100);
        QVERIFY(begun.size() == 2 && ended.size() == 2);
        QVERIFY(table.row(0).isEmpty() && table.outcome(0) == RegisterTableModel::NoOutcome);
    }

    void knowsWhatIsUnsaved()
    {
        const QVector<RegisterRow> file(100, {{}, "1", {}, {}});
        RegisterTableModel table;
        table.append(file, true);
        set(table, 5, RegisterTableModel::Address, QStringLiteral("1"));
        QVERIFY(!table.hasUnsavedRows() && table.pageCount() == 1); // the file has them
        set(table, 5, RegisterTableModel::Address, QStringLiteral("2"));
        QVERIFY(table.hasUnsavedRows());
        table.setSaved();
        table.append({}, false);
        QVERIFY(table.addPage());
        table.removePage(1); // it was empty
        QVERIFY(!table.hasUnsavedRows());
        table.append(file, true); // now more than the file
        QVERIFY(table.hasUnsavedRows());
        table.setSaved();
        table.removePage(1);
        QVERIFY(table.hasUnsavedRows());
        table.removePage(0); // nothing is left to save
        QVERIFY(!table.hasUnsavedRows() && table.pageCount() == 1);
        table.append(file, false); // cut
        QVERIFY(table.hasUnsavedRows());
        table.setSaved();
        table.append(file.mid(0, 1), true);
        QVERIFY(table.hasUnsavedRows() && table.pageCount() == 2);
    }

    // The file byte by byte; what was in it before is gone.
    void savesAndReads()
    {
        const QTemporaryDir folder;
        const QString name = folder.filePath(QStringLiteral("table.csv"));
        QVERIFY(writeFile(name, QByteArray(1000, 'x')));
        RegisterTableModel table;
        const QStringList cells{"1", "3008", "5A", QStringLiteral("曝光")};
        for (int column = 0; column < 4; ++column)
            set(table, 0, column, cells.at(column));
        QString reason;
        QVERIFY(!RegisterFile(&table).save(name + "/x", &reason) && !reason.isEmpty());
        QVERIFY(table.hasUnsavedRows() && RegisterFile(&table).save(name, &reason));
        QVERIFY(!table.hasUnsavedRows());
        const QByteArray titles(
            "\xbc\xc4\xb4\xe6\xc6\xf7\xb1\xe0\xba\xc5,\xbc\xc4\xb4\xe6\xc6\xf7\xb5\xd8\xd6\xb7,"
            "\xbc\xc4\xb4\xe6\xc6\xf7\xd6\xb5,\xc3\xe8\xca\xf6\n");
        QCOMPARE(contentOf(name), titles + "1,3008,5A,\xc6\xd8\xb9\xe2\n");

        RegisterFile again(&table);
        QVERIFY(again.open(name, false, &reason) && !again.readSlice());
        QCOMPARE(again.rowsRead(), 2); // after the first one, the titles as a row
        QCOMPARE(table.row(1).address, QStringLiteral("寄存器地址"));
        QCOMPARE(table.row(2).description, QStringLiteral("曝光"));

        RegisterTableModel copy;
        RegisterFile complete(&copy);
        QVERIFY(complete.open(name, false, &reason) && !complete.readSlice() && !copy.hasUnsavedRows());
        RegisterTableModel full;
        RegisterFile tooLong(&full);
        QVERIFY(writeFile(name, QByteArray("1,3008,5A,x\n").repeated(10005)) &&
                tooLong.open(name, false, &reason));
        while (tooLong.readSlice()) {
        }
        QVERIFY(tooLong.reader().beyondLimit() == 5 && full.hasUnsavedRows());
    }

    void refusesFiles()
    {
        const QTemporaryDir folder;
        QMap<QString, QString> reasons{{folder.filePath("missing"), "文件不存在"},
                                       {folder.filePath("huge"), "文件过大"}};
        QFile huge(folder.filePath("huge")); // chosen by mistake
        QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(qint64(3) << 30));
#ifdef Q_OS_UNIX
        QCOMPARE(::mkfifo(folder.filePath("pipe").toLocal8Bit().constData(), 0600), 0);
        reasons.insert(folder.filePath("pipe"), "文件为空"); // whose writer never comes
        reasons.insert("/proc/kmsg", "文件为空");            // which never ends
#endif
        for (auto file = reasons.begin(); file != reasons.end(); ++file) {
            RegisterTableModel table;
            QString reason;
            QVERIFY(!RegisterFile(&table).open(file.key(), false, &reason));
            QCOMPARE(reason, file.value());
        }
    }

private:
    static void set(RegisterTableModel &table, int row, int column, const QString &text)
    {
        QVERIFY(table.setData(table.index(row, column), text));
    }
};

QTEST_GUILESS_MAIN(TestRegisterTable)
#include "test_registertable.moc"
