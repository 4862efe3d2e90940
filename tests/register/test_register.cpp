// The register table and its file.

#include "datamanagerwidget.h"
#include "dialoganswers.h"
#include "korvexresources.h"
#include "qtmessagetip.h"
#include "textcodec.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

class TestRegister : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void readsFiles_data();
    void readsFiles();
    void knowsHexadecimal();
    void exportsAndImports();
    void turnsPages();
    void limitsCells();
    void survivesAMillionRows();

private:
    static void click(QWidget &dialog, const char *name)
    {
        QTest::mouseClick(dialog.findChild<QPushButton *>(QLatin1String(name)), Qt::LeftButton);
    }
    QTemporaryDir m_folder;
};

void TestRegister::readsFiles_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("rows"); // cells with |, rows with /
    QTest::addColumn<int>("skipped");
    QTest::newRow("plain") << QByteArray("1,3008,5A,x\r\n2,3009,00,y\n") << "1|3008|5A|x/2|3009|00|y" << 0;
    QTest::newRow("three and five cells") << QByteArray("1,2,3\n1,2,3,4,5\n\n") << "1|2|3|4" << 1;
    QTest::newRow("no last line end") << QByteArray("1,2,3,4") << "1|2|3|4" << 0;
    QTest::newRow("GB18030") << QByteArray("1,2,3,\xc6\xd8\xb9\xe2\n") << QStringLiteral("1|2|3|曝光") << 0;
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf"
                                                   "1,2,3,\xe6\x9b\x9d")
                                     << QStringLiteral("1|2|3|曝") << 0;
    QTest::newRow("UTF-8 without a mark")
        << QStringLiteral("1,2,3,曝光\n").toUtf8() << QStringLiteral("1|2|3|曝光") << 0;
    QTest::newRow("quotes stay") << QByteArray("\"1\",\"30\",4,5") << "\"1\"|\"30\"|4|5" << 0;
    QTest::newRow("cut character") << QByteArray("1,2,3,\xc6") << QStringLiteral("1|2|3|") << 0;
    QTest::newRow("no room") << QByteArray("1,2,3,4\n5,6,7,8\n9,,,\n1,1,1,1\n2,2,2,2\n")
                             << "1|2|3|4/5|6|7|8/9|||" << 0;
}

void TestRegister::readsFiles()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, rows);
    QFETCH(int, skipped);
    RegisterCsv::Reader reader(content, 3);
    while (reader.read(1)) {
    }
    QStringList seen;
    for (const RegisterRow &row : reader.rows())
        seen += QStringList{row.number, row.address, row.value, row.description}.join(QLatin1Char('|'));
    QCOMPARE(seen.join(QLatin1Char('/')), rows);
    QCOMPARE(reader.skipped(), skipped);
    QCOMPARE(reader.tooMany(), qMax(0, content.count("\n") - 3));
}

void TestRegister::knowsHexadecimal()
{
    const struct
    {
        const char *text;
        bool valid;
        quint32 number;
    } cases[] = {{"3008", true, 0x3008},
                 {"fFfFfFfF", true, 0xFFFFFFFF},
                 {"", false, 0},
                 {" 0x30", true, 0x30},
                 {"0x123456789", false, 0},
                 {"0x", false, 0},
                 {"30 08", false, 0},
                 {"-1", false, 0}};
    for (const auto &entry : cases) {
        quint32 number = 0;
        RegisterRow row;
        row.address = QLatin1String(entry.text);
        QCOMPARE(row.addressNumber(&number), entry.valid);
        QCOMPARE(number, entry.number);
    }
}

// The exported file whole, byte for byte; what was there before is gone.
void TestRegister::exportsAndImports()
{
    const QString file = m_folder.filePath(QStringLiteral("table.csv"));
    QFile before(file);
    QVERIFY(before.open(QIODevice::WriteOnly) && before.write(QByteArray(1000, 'x')) == 1000);
    before.close();
    DialogAnswers::instance().fileNames = [file](auto...) { return QStringList{file}; };

    DataManagerWidget table(DataManagerWidget::Read);
    table.show();
    QAbstractItemModel *model = table.findChild<QTableView *>()->model();
    const QStringList cells{"1", "3008", "5A", QStringLiteral("曝光")};
    for (int column = 0; column < 4; ++column)
        model->setData(model->index(0, column), cells.at(column));
    click(table, "btnExport");
    QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("文件导出成功！"));
    QVERIFY(before.open(QIODevice::ReadOnly));
    const QByteArray title =
        TextCodec::encode(QStringLiteral("寄存器编号,寄存器地址,寄存器值,描述\n"), TextCodec::Gb18030);
    QCOMPARE(before.readAll(), title + "1,3008,5A,\xc6\xd8\xb9\xe2\n");

    // Appended, the titles as a row of their own.
    click(table, "btnImport");
    QTRY_COMPARE(table.findChild<QLabel *>("labelRegisterProgress")->text(),
                 QStringLiteral("读取 2 行，跳过 0 行"));
    QCOMPARE(table.rows().at(1).address, QStringLiteral("寄存器地址"));
    QCOMPARE(table.rows().at(2).description, QStringLiteral("曝光"));

    DialogAnswers::instance().message = [](auto...) { return 1; };
    click(table, "btnClear");
    QVERIFY(table.rows().at(0).isEmpty());

    QString warned;
    DialogAnswers::instance().message = [&warned](const QString &, const QString &text, int) {
        warned = text;
        return 1;
    };
    DialogAnswers::instance().fileNames = [file](auto...) { return QStringList{file + "/x.csv"}; };
    for (const char *button : {"btnImport", "btnExport"}) {
        warned.clear();
        click(table, button);
        QCOMPARE(warned, QStringLiteral("文件打开失败，请重试！"));
    }
#ifdef Q_OS_UNIX
    // A pipe whose writer never comes, and one that never ends.
    const QByteArray pipe = m_folder.filePath("pipe.csv").toLocal8Bit();
    QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
    for (const QString &name : {QString::fromLocal8Bit(pipe), QStringLiteral("/proc/kmsg")}) {
        DialogAnswers::instance().fileNames = [name](auto...) { return QStringList{name}; };
        warned.clear();
        click(table, "btnImport");
        QCOMPARE(warned, QStringLiteral("文件打开失败，请重试！"));
    }
#endif
    const QTemporaryDir folder;
    QFile huge(folder.filePath(QStringLiteral("x.txt"))); // chosen by mistake
    QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(qint64(3) << 30));
    DialogAnswers::instance().fileNames = [&huge](auto...) { return QStringList{huge.fileName()}; };
    warned.clear();
    click(table, "btnImport");
    QCOMPARE(warned, QStringLiteral("文件打开失败，请重试！"));
    DialogAnswers::instance() = DialogAnswers();
}

void TestRegister::turnsPages()
{
    DataManagerWidget table(DataManagerWidget::Write);
    table.show();
    QAbstractItemModel *model = table.findChild<QTableView *>()->model();
    const QSignalSpy refreshes(&table, &DataManagerWidget::signalRefreshData);
    model->setData(model->index(0, 1), QStringLiteral("01"));
    click(table, "btnAddPage");
    click(table, "btnLastPage");
    QCOMPARE(refreshes.last().at(0).toInt(), 2);
    QCOMPARE(model->index(0, 1).data().toString(), QString());
    model->setData(model->index(0, 1), QStringLiteral("02"));
    table.setValue(100, QStringLiteral("AA")); // shown, and kept
    QCOMPARE(model->index(0, 2).data().toString(), QStringLiteral("AA"));
    table.setValue(0, QStringLiteral("BB")); // on the other page
    QCOMPARE(model->index(0, 2).data().toString(), QStringLiteral("AA"));
    click(table, "btnFirstPage");
    QCOMPARE(model->index(0, 2).data().toString(), QStringLiteral("BB"));
    QStringList questions;
    int answer = 0;
    DialogAnswers::instance().message = [&](const QString &, const QString &text, int) {
        questions.append(text);
        return answer;
    };
    click(table, "btnDeletePage");
    QCOMPARE(questions.size(), 1);
    QCOMPARE(table.rows().size(), 200);
    answer = 1;
    click(table, "btnDeletePage");
    QCOMPARE(table.rows().size(), 100);
    QCOMPARE(model->index(0, 1).data().toString(), QStringLiteral("02"));
    QCOMPARE(model->index(0, 2).data().toString(), QStringLiteral("AA"));
    // The last one, shown, of three; an empty one goes without a question.
    click(table, "btnAddPage");
    click(table, "btnLastPage");
    model->setData(model->index(0, 1), QStringLiteral("03"));
    click(table, "btnAddPage");
    click(table, "btnLastPage");
    questions.clear();
    click(table, "btnDeletePage");
    QVERIFY(questions.isEmpty());
    QCOMPARE(table.rows().at(100).address, QStringLiteral("03"));
    click(table, "btnDeletePage");
    QCOMPARE(table.rows().size(), 100);
    QCOMPARE(model->index(0, 1).data().toString(), QStringLiteral("02"));
    DialogAnswers::instance() = DialogAnswers();
    const QSignalSpy stops(&table, &DataManagerWidget::stopRequested);
    QHideEvent minimise;
    QSpontaneKeyEvent::setSpontaneous(&minimise);
    qApp->notify(&table, &minimise);
    QCOMPARE(stops.size(), 0);
    click(table, "btnCancel");
    QVERIFY(!table.isVisible());
    QCOMPARE(stops.size(), 1);
}

void TestRegister::limitsCells()
{
    DataManagerWidget table(DataManagerWidget::Read);
    table.show();
    auto *view = table.findChild<QTableView *>();
    const auto typed = [view](int column, const QString &text) {
        view->setCurrentIndex(view->model()->index(0, column));
        view->edit(view->currentIndex());
        QTest::keyClicks(view->findChild<QLineEdit *>(), text);
        const QString kept = view->findChild<QLineEdit *>()->text();
        QTest::keyClick(view->findChild<QLineEdit *>(), Qt::Key_Escape);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return kept;
    };
    QCOMPARE(typed(1, QStringLiteral("0x3g008,123456")), QStringLiteral("03008123"));
    QCOMPARE(typed(3, QStringLiteral("a,b")), QStringLiteral("ab"));
    // What is pasted is refused as a whole, and it is said.
    QtMessageTip::current()->close();
    view->setCurrentIndex(view->model()->index(0, 3));
    view->edit(view->currentIndex());
    QApplication::clipboard()->setText(QStringLiteral("two\nlines"));
    QTest::keyClick(view->findChild<QLineEdit *>(), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(view->findChild<QLineEdit *>()->text(), QString());
    QVERIFY(QtMessageTip::current());
    QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("不能含有逗号和换行！"));
}

void TestRegister::survivesAMillionRows()
{
    const QString file = m_folder.filePath(QStringLiteral("million.csv"));
    QFile million(file);
    QVERIFY(million.open(QIODevice::WriteOnly));
    million.write(QByteArray("1,3008,5A,x\n").repeated(1000000));
    million.close();
    DialogAnswers::instance().fileNames = [file](auto...) { return QStringList{file}; };
    QString warned;
    DialogAnswers::instance().message = [&warned](const QString &, const QString &text, int) {
        warned = text;
        return 1;
    };
    DataManagerWidget table(DataManagerWidget::Read);
    table.show();
    click(table, "btnImport");
    QTRY_COMPARE_WITH_TIMEOUT(table.findChild<QLabel *>("labelRegisterProgress")->text(),
                              QStringLiteral("读取 10000 行，跳过 0 行，超出 990000 行"), 30000);
    QCOMPARE(warned, QStringLiteral("寄存器表最多10000行，文件中有990000行没有导入！"));
    QCOMPARE(table.rows().size(), 10000);
    DialogAnswers::instance() = DialogAnswers();
}

QTEST_MAIN(TestRegister)
#include "test_register.moc"
