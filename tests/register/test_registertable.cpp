// The rows of a register table and its file.

#include "registerfile.h"
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
            {"\"1\",\"30\",4,5", "\"1\"|\"30\"|4|5", 0},
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
        QVERIFY(again.open(name, &reason) && !again.readSlice());
        QCOMPARE(again.rowsRead(), 2); // after the first one, the titles as a row
        QCOMPARE(table.row(1).address, QStringLiteral("寄存器地址"));
        QCOMPARE(table.row(2).description, QStringLiteral("曝光"));

        RegisterTableModel copy;
        RegisterFile complete(&copy);
        QVERIFY(complete.open(name, &reason) && !complete.readSlice() && !copy.hasUnsavedRows());
        RegisterTableModel full;
        RegisterFile tooLong(&full);
        QVERIFY(writeFile(name, QByteArray("1,3008,5A,x\n").repeated(10005)) && tooLong.open(name, &reason));
        while (tooLong.readSlice()) {
        }
        QVERIFY(tooLong.beyondLimit() == 5 && full.hasUnsavedRows());
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
            QVERIFY(!RegisterFile(&table).open(file.key(), &reason));
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
