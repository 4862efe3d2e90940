// Commands: their files, the course of a sequence, and their page.

#include "answers.h"
#include "apppaths.h"
#include "commandmodel.h"
#include "commandpage.h"
#include "commandset.h"
#include "freshfolder.h"
#include "korvexresources.h"
#include "testfiles.h"

#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

namespace {

constexpr qint64 kMs = 1000;

Command command(const QString &text, int delayMs, const QString &answer = {},
                Command::Otherwise otherwise = Command::Stop)
{
    Command made;
    made.text = text;
    made.delayMs = delayMs;
    made.lineEnd = Command::NoLineEnd;
    made.answer = answer;
    made.timeoutMs = 100;
    made.otherwise = otherwise;
    made.repeats = 2;
    return made;
}

QVector<CommandSequence::Row> rowsOf(const QVector<Command> &commands)
{
    QVector<CommandSequence::Row> rows;
    for (int i = 0; i < commands.size(); ++i)
        rows.append({i + 10, commands.at(i)});
    return rows;
}

} // namespace

class TestCommands : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        initKorvexResources();
        m_root = std::make_unique<FreshFolder>();
    }

    void cleanup() { DialogAnswers::instance() = DialogAnswers(); }

    void keepsAllInAFile()
    {
        Command all{"名称", "a,\"b\"\\r", "备注", false,           true, Command::Cr, 5,
                    "x",    true,         7,      Command::Repeat, 9};
        const QByteArray file = CommandSet::toCsv({all, Command()});
        QCOMPARE(file, QByteArray("\xEF\xBB\xBF选中,名称,数据,格式,行尾,延时ms,等待应答,应答格式,超时ms,"
                                  "无应答时,重发次数,备注\n"
                                  "0,名称,\"a,\"\"b\"\"\\r\",HEX,CR,5,x,正则,7,重发,9,备注\n"
                                  "1,,,文本,CRLF,100,,文本,1000,停止,3,\n"));
        const CommandSet::Read read = CommandSet::fromCsv(file);
        QVERIFY(read.fault.isEmpty() && read.commands.size() == 2);
        QVERIFY(read.commands.at(0) == all && read.commands.at(1) == Command());
        // Of a spreadsheet: other columns, in another order.
        const CommandSet::Read other = CommandSet::fromCsv("延时ms,未知,数据\r\n20,?,\"AT\"\r\n");
        QCOMPARE(other.commands.value(0).text + QString::number(other.commands.value(0).delayMs),
                 QString("AT20"));
        for (const auto &[wrong, fault] : {std::pair("数据,延时ms\nAT,-1\n", "第1条命令的“延时ms”无效"),
                                           {"数据,格式\nAT,文本\nAT,bin\n", "第2条命令的“格式”无效"},
                                           {"nonsense", "首行没有“数据”一列"},
                                           {"数据\n\"AT", "不是CSV文件，或引号没有成对"}})
            QCOMPARE(CommandSet::fromCsv(wrong).fault, QString(fault));
        QCOMPARE(CommandSet::toList({command("a#b", 0), command("", 0), command("c", 0)}),
                 QByteArray("0#a#b\n2#c\n"));
        QCOMPARE(CommandSet::fromList("7#a#b\r\nno row\n1#c").commands.value(1).text, QString("c"));
        QVERIFY(!CommandSet::fromList("no row").fault.isEmpty());
    }

    // Each line: the time in ms, what is sent then; or what is received, which is marked
    // with a colon.
    void runsInOrder()
    {
        const QVector<Command> commands{command("a", 10), command("b", 20, "o\\x4b"), command("c", 0)};
        CommandSequence sequence;
        sequence.start(rowsOf(commands), 2, 0, 0);
        QStringList course;
        const auto send = [&](qint64 ms) {
            const QByteArray bytes = sequence.due(ms * kMs);
            if (!bytes.isEmpty()) {
                course += QString("%1 %2").arg(ms).arg(QString(bytes));
                sequence.handleSent(true, {}, ms * kMs);
            }
        };
        for (qint64 ms = 0; ms < 200 && sequence.isRunning(); ++ms) {
            if (ms == 30 || ms == 90)
                sequence.receive("noise o", ms * kMs);
            if (ms == 31 || ms == 91)
                sequence.receive("K and more", ms * kMs);
            send(ms);
            send(ms);
        }
        QCOMPARE(course.join(' '), QString("0 a 10 b 51 c 51 a 61 b 111 c"));
        QVERIFY(!sequence.isRunning() && sequence.fault().isEmpty());
        QCOMPARE(sequence.sent(), qint64(6));
        const QList<QByteArray> report = sequence.reportCsv(0, 0).split('\n');
        QCOMPARE(report.size(), 8);
        QVERIFY(report.at(2).contains(",12,,1,已应答,21.0"));
        QVERIFY(report.at(5).contains(",12,,2,已应答,30.0"));
    }

    void decidesWithoutAnswer()
    {
        for (const auto &[otherwise, times, fault] : {std::tuple(Command::Stop, "0", "第11条命令没有应答"),
                                                      {Command::Repeat, "0 100 200", "第11条命令没有应答"},
                                                      {Command::GoOn, "0 150", ""}}) {
            CommandSequence sequence;
            Command awaiting = command("a", 50, "^ready \\d+$", otherwise);
            awaiting.isExpression = true;
            sequence.start(rowsOf({awaiting, command("b", 0)}), 1, 0, 0);
            QStringList sent;
            for (qint64 ms = 0; ms < 1000 && sequence.isRunning(); ++ms) {
                sequence.receive(QByteArray(9000, 'x'), ms * kMs); // a line without an end
                sequence.receive("\nready x", ms * kMs);
                if (!sequence.due(ms * kMs).isEmpty()) {
                    sent += QString::number(ms);
                    sequence.handleSent(true, {}, ms * kMs);
                }
            }
            QCOMPARE(sent.join(' '), QString(times));
            QCOMPARE(sequence.fault(), QString(fault));
        }
        CommandSequence sequence; // an answer from within the sending, in two pieces
        Command awaiting = command("a", 50, "^ready \\d+$");
        awaiting.isExpression = true;
        sequence.start(rowsOf({awaiting, command("b", 0)}), 1, 0, 0);
        QCOMPARE(sequence.due(0), QByteArray("a"));
        sequence.receive("old\nrea", 1);
        sequence.receive("dy 7\n", 2);
        sequence.handleSent(true, {}, 3);
        QCOMPARE(sequence.nextUs(), 2 + 50 * kMs);
        sequence.setPaused(true, 4);
        QCOMPARE(sequence.nextUs(), qint64(-1));
        QCOMPARE(sequence.due(60 * kMs), QByteArray());
        sequence.setPaused(false, 70 * kMs);
        QCOMPARE(sequence.due(70 * kMs), QByteArray("b"));
        sequence.handleSent(false, "gone", 70 * kMs);
        QCOMPARE(sequence.fault(), QString("第12条命令未发送：gone"));
        // A fault of a row is told, and nothing of it is sent.
        sequence.start(rowsOf({command("\\q", 0)}), 0, 0, 0);
        QCOMPARE(sequence.due(0), QByteArray());
        QCOMPARE(sequence.fault(), QString("第11条命令未发送：转义“\\q”无效"));
        // After a standstill it does not catch up.
        sequence.start(rowsOf({command("a", 10)}), 0, 0, 0);
        for (const qint64 ms : {0, 500, 501, 502})
            if (!sequence.due(ms * kMs).isEmpty())
                sequence.handleSent(true, {}, ms * kMs);
        QCOMPARE(sequence.sent(), qint64(2));
    }

    // A thousand rows without a delay, through the page, and an echo that answers.
    void runsFromThePage()
    {
        QVector<Command> commands(1000, command("x", 0));
        commands[7] = command("ask", 0, "ask");
        commands[8].isTicked = false;
        writeSet("默认", CommandSet::toCsv(commands));
        CommandPage page;
        QByteArray sent;
        const QSignalSpy notices(&page, &CommandPage::notify);
        page.runner()->setDevice(
            [&](const QByteArray &bytes, QString *) {
                sent += bytes;
                page.runner()->receive(bytes, 0);
                return true;
            },
            [] { return qint64(0); });
        connect(&page, &CommandPage::deviceNeeded, [](bool *isThere) { *isThere = true; });
        page.setDeviceOpen(true);
        auto *run = page.findChild<QPushButton *>("btnRunCommands");
        run->click();
        QTRY_COMPARE(run->text(), QString("运行序列"));
        QCOMPARE(sent, QByteArray(7, 'x') + "ask" + QByteArray(991, 'x'));
        QCOMPARE(qvariant_cast<Notice>(notices.last().first()).text, QString("序列已结束，共发送999条命令"));
        page.findChild<QPushButton *>("btnAddCommand")->click(); // an empty row is refused
        run->click();
        QTRY_VERIFY(qvariant_cast<Notice>(notices.last().first()).text.contains("没有要发送的数据"));
    }

    void keepsItsSets()
    {
        writeSet("坏的", "nonsense");
        auto page = std::make_unique<CommandPage>();
        const QSignalSpy notices(page.get(), &CommandPage::notify);
        auto *model = page->findChild<CommandModel *>();
        model->insert(0, {command("one", 0), command("two", 0), command("three", 0)});
        // Dragged by the mouse: the first row behind the second.
        const std::unique_ptr<QMimeData> row(model->mimeData({model->index(0, 0)}));
        model->dropMimeData(row.get(), Qt::MoveAction, 2, 0, {});
        QVERIFY(!model->setData(model->index(0, CommandModel::Delay), "-1", Qt::EditRole));
        page->show();
        auto *table = page->findChild<QTableView *>();
        table->setCurrentIndex(model->index(0, CommandModel::Name));
        table->edit(table->currentIndex());
        QTRY_VERIFY(qobject_cast<QLineEdit *>(QApplication::focusWidget()));
        QTest::keyClicks(QApplication::focusWidget(), "typed");
        QCOMPARE(page->storeAll(), QString());
        CommandStore other;
        QString fault;
        QVector<Command> stored = other.read("默认", &fault);
        QCOMPARE(stored.value(0).name + stored.value(0).text + stored.value(1).text + stored.value(2).text,
                 QString("typedtwoonethree"));
        // Another copy of the program wrote it: both stay.
        stored.resize(1);
        QCOMPARE(other.save("默认", stored, &fault), QString("默认"));
        model->remove(0, 1);
        page->storeAll();
        QCOMPARE(other.names(), (QStringList{"坏的", "默认", "默认 2"}));
        QCOMPARE(other.read("默认", &fault).size(), 1);
        QCOMPARE(other.read("默认 2", &fault).size(), 2);
        QVERIFY(qvariant_cast<Notice>(notices.last().first()).text.contains("另存为[默认 2]"));
        // Nonsense is kept aside.
        QVERIFY(other.read("坏的", &fault).isEmpty());
        QVERIFY(fault.startsWith("首行没有“数据”一列；原文件保留为"));
        QCOMPARE(QDir(folder()).entryList({"*.bad2"}).size(), 1);
        QVERIFY(other.rename("默认 2", "AT 指令") && !other.rename("AT 指令", "默认"));
        QCOMPARE(other.names(), (QStringList{"AT 指令", "默认"}));
    }

private:
    static QString folder() { return AppPaths::confFolder() + "/commands"; }
    static void writeSet(const QString &name, const QByteArray &content)
    {
        QDir().mkpath(folder());
        writeFile(folder() + '/' + name.toUtf8().toPercentEncoding() + ".csv", content);
    }

    std::unique_ptr<FreshFolder> m_root;
};

QTEST_MAIN(TestCommands)
#include "test_commands.moc"
