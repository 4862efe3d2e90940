// The send box: what is typed, what goes out, and what is kept.

#include "apppaths.h"
#include "dialoganswers.h"
#include "filesendpage.h"
#include "korvexresources.h"
#include "notice.h"
#include "qtmessagetip.h"
#include "qtpagebar.h"
#include "qtsendboxwidget.h"
#include "qttexteditinput.h"
#include "sendoptions.h"
#include "settings.h"

#include <QCheckBox>
#include <QClipboard>
#include <QDir>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QtTest>

namespace {
Notice noticeOf(const QList<QVariant> &signal)
{
    return qvariant_cast<Notice>(signal.first());
}
} // namespace

class TestSendBox : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void filtersKeysInHexMode();
    void reducesPastedText();
    void sendsTypedText();
    void sendsHexadecimalAndTellsWhatItIgnored();
    void refusesWithoutDevice();
    void autoSendsWithItsPeriod();
    void refusesSenselessPeriods();
    void keepsTheTypedText();
    void loadsDataFiles();
    void keepsAndSendsRows();
    void sharesRowsWithAnotherCopy();
    void tellsWhatItCannotStore();
    void addsAndDeletesPages();
    void clearingAPageAsksFirst();
    void listsFilesToSend();

private:
    template <class Widget> Widget *child(const char *name) const
    {
        return m_box->findChild<Widget *>(QLatin1String(name));
    }
    void press(const char *button) { child<QPushButton>(button)->click(); }
    QByteArray lastSent() const
    {
        return m_sent->isEmpty() ? QByteArray() : m_sent->last().at(0).toByteArray();
    }
    QByteArray file(const char *name) const;
    void makeBox();

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<QtSendBoxWidget> m_box;
    std::unique_ptr<QSignalSpy> m_sent;
    QtTextEditInput *m_editor = nullptr;
};

void TestSendBox::initTestCase()
{
    initKorvexResources();
}

void TestSendBox::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    AppPaths::setRoot(m_root->path());
    AppPaths::makeFolders();
    Settings::instance() = Settings();
    makeBox();
}

void TestSendBox::cleanup()
{
    DialogAnswers::instance() = DialogAnswers();
    m_box.reset();
}

void TestSendBox::makeBox()
{
    m_box.reset(); // writes what it has first
    m_box = std::make_unique<QtSendBoxWidget>(QtSendBoxWidget::Serial);
    m_box->show();
    m_sent = std::make_unique<QSignalSpy>(m_box.get(), &QtSendBoxWidget::signalSendData);
    m_editor = child<QtTextEditInput>("textEditSend");
    m_box->setDeviceOpen(true);
}

QByteArray TestSendBox::file(const char *name) const
{
    QFile content(AppPaths::confFolder() + '/' + QLatin1String(name));
    return content.open(QIODevice::ReadOnly) ? content.readAll() : QByteArray("(no file)");
}

void TestSendBox::filtersKeysInHexMode()
{
    const QSignalSpy hints(m_box.get(), &QtSendBoxWidget::showErrorHint);
    m_box->setHexSend(true);
    QTest::keyClicks(m_editor, "0a F9");
    QTest::keyClick(m_editor, Qt::Key_Left);
    QTest::keyClick(m_editor, Qt::Key_Backspace);
    QTest::keyClick(m_editor, Qt::Key_Return);
    for (const Qt::Key modifier : {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_CapsLock})
        QTest::keyClick(m_editor, modifier);
    QCOMPARE(m_editor->toPlainText(), QStringLiteral("0a \n9"));
    QCOMPARE(hints.count(), 0);

    QTest::keyClicks(m_editor, "g-");
    for (const Qt::Key key :
         {Qt::Key_Delete, Qt::Key_Enter, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End})
        QTest::keyClick(m_editor, key);
    QTest::keyClick(m_editor, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(m_editor->toPlainText(), QStringLiteral("0a \n9"));
    QCOMPARE(hints.count(), 9);

    m_box->setHexSend(false);
    QTest::keyClicks(m_editor, "g");
    QCOMPARE(m_editor->toPlainText(), QStringLiteral("0a \ng9"));
}

void TestSendBox::reducesPastedText()
{
    const auto paste = [this](const QString &text) {
        m_editor->clear();
        QGuiApplication::clipboard()->setText(text);
        m_editor->paste();
        return m_editor->toPlainText();
    };
    QCOMPARE(paste("any 文本\n2"), QStringLiteral("any 文本\n2"));
    m_box->setHexSend(true);
    const QSignalSpy hints(m_box.get(), &QtSendBoxWidget::showErrorHint);
    QCOMPARE(paste("0x01, 0X2f;\r\n03:04"), QStringLiteral("01 2f 03 04"));
    QCOMPARE(hints.count(), 0);
    QCOMPARE(paste("01 zz 温 02"), QStringLiteral("01 02"));
    QCOMPARE(hints.count(), 1);

    // Far too much is refused at once and changes nothing.
    m_box->setHexSend(false);
    m_editor->setPlainText("kept");
    QGuiApplication::clipboard()->setText(QString(50 * 1000 * 1000, 'x'));
    QElapsedTimer clock;
    clock.start();
    m_editor->paste();
    QCOMPARE(m_editor->toPlainText(), QStringLiteral("kept"));
    QVERIFY(clock.elapsed() < 10000);

    // A long line without a space costs as much as one with spaces.
    const auto costOf = [&](const QString &line) {
        QGuiApplication::clipboard()->setText(line);
        m_editor->clear();
        clock.start();
        m_editor->paste();
        return clock.nsecsElapsed();
    };
    const qint64 words = costOf(QStringLiteral("ab cd ").repeated(20 * 1000));
    QVERIFY(costOf(QStringLiteral("abcdef").repeated(20 * 1000)) < 6 * words);
}

void TestSendBox::sendsTypedText()
{
    m_editor->setPlainText(QStringLiteral("温\nb"));
    press("btnSingleSend");
    QCOMPARE(lastSent(), QByteArray("\xce\xc2\nb"));
    Settings::instance().textCodec = 0;
    m_box->setNewline(true);
    press("btnSingleSend");
    QCOMPARE(lastSent(), QByteArray("\xe6\xb8\xa9\nb\r\n"));
    m_editor->clear();
    press("btnSingleSend");
    QCOMPARE(lastSent(), QByteArray("\r\n"));
    m_box->setNewline(false);
    const int before = m_sent->count();
    press("btnSingleSend");
    QCOMPARE(m_sent->count(), before); // nothing to send
}

void TestSendBox::sendsHexadecimalAndTellsWhatItIgnored()
{
    m_editor->setPlainText("hello");
    const QSignalSpy notices(m_box.get(), &QtSendBoxWidget::notify);
    m_box->setHexSend(true);
    m_box->setNewline(true);
    press("btnSingleSend");
    QCOMPARE(m_sent->count(), 0); // no byte, and no line end alone
    QCOMPARE(notices.count(), 1);
    m_editor->setPlainText("01 02 fF 7");
    press("btnSingleSend");
    QCOMPARE(lastSent(), QByteArray("\x01\x02\xff\r\n"));
    QCOMPARE(notices.count(), 2);
    QVERIFY(noticeOf(notices.last()).text.contains("1"));
    QVERIFY(noticeOf(notices.last()).isError());

    // The same text sent again and again by itself is told about once.
    m_box->setAutoInterval(10);
    m_box->setAutoSend(true);
    QTRY_VERIFY(m_sent->count() >= 4);
    m_box->setAutoSend(false);
    QCOMPARE(notices.count(), 3);
    m_editor->setPlainText("01");
    press("btnSingleSend");
    QCOMPARE(notices.count(), 3);
}

void TestSendBox::refusesWithoutDevice()
{
    m_box->setDeviceOpen(false);
    const QSignalSpy stopped(m_box.get(), &QtSendBoxWidget::autoSendStopped);
    m_editor->setPlainText("x");
    press("btnSingleSend");
    QCOMPARE(m_sent->count(), 0);
    QCOMPARE(stopped.count(), 1);
    QVERIFY(QtMessageTip::current());
    QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("请确认通信设备是否打开?"));
    m_box->setAutoSend(true);
    QVERIFY(!m_box->isAutoSending());
    child<QLineEdit>("multiEdit0")->setText("row");
    press("multiSend0");
    QCOMPARE(m_sent->count(), 0);
}

void TestSendBox::autoSendsWithItsPeriod()
{
    SendOptions options(m_box.get());
    auto *check = options.findChild<QCheckBox *>("checkAutoSend");
    m_editor->setPlainText("ping");
    QCOMPARE(m_box->autoInterval(), 1000);
    m_box->setAutoInterval(20);
    check->click();
    QVERIFY(m_box->isAutoSending());
    QTRY_VERIFY(m_sent->count() >= 3);
    // On a page that shows another text it neither goes on nor starts.
    m_box->setCurrentPage(QtSendBoxWidget::MultiPage);
    QVERIFY(!check->isChecked());
    check->click();
    QVERIFY(!check->isChecked());
    QVERIFY(!m_box->isAutoSending());
    m_box->setCurrentPage(QtSendBoxWidget::SinglePage);
    check->click();
    QVERIFY(m_box->isAutoSending());
    m_box->setDeviceOpen(false);
    QVERIFY(!check->isChecked());
    QVERIFY(!m_box->isAutoSending());
}

void TestSendBox::refusesSenselessPeriods()
{
    SendOptions options(m_box.get());
    auto *edit = options.findChild<QLineEdit *>("editAutoInterval");
    for (const char *text : {"9", "", "abc", "-20", "99999999999"}) {
        edit->setText(text);
        options.applyInterval();
        QCOMPARE(m_box->autoInterval(), 1000);
        QCOMPARE(edit->text(), QStringLiteral("1000"));
    }
    edit->setText("10");
    options.applyInterval();
    QCOMPARE(m_box->autoInterval(), 10);
}

void TestSendBox::keepsTheTypedText()
{
    QTest::keyClicks(m_editor, "hello");
    m_editor->append(QStringLiteral("温度#"));
    QTRY_COMPARE(file("ser_send_data.txt"),
                 QByteArray("hello\n\xe6\xb8\xa9\xe5\xba\xa6#")); // when typing pauses
    m_editor->append("end");
    makeBox(); // and when the box goes
    QCOMPARE(m_editor->toPlainText(), QStringLiteral("hello\n温度#\nend"));
    QCOMPARE(file("net_send_data.txt"), QByteArray("(no file)"));
}

void TestSendBox::loadsDataFiles()
{
    const QString name = m_root->filePath(QStringLiteral("数据.txt"));
    const auto load = [&](const QByteArray &content) {
        QFile data(name);
        QVERIFY(data.open(QIODevice::WriteOnly));
        data.write(content);
        data.close();
        press("btnLoadDataFile");
    };
    QString filter;
    DialogAnswers::instance().fileNames = [&](auto, auto, auto, const QString &offered) {
        filter = offered;
        return QStringList(name);
    };
    load("\xce\xc2\r\nx");
    QCOMPARE(filter, QStringLiteral("文本文件(*.txt);;所有文件(*.*)"));
    QCOMPARE(m_editor->toPlainText(), QStringLiteral("温\nx"));
    m_box->setHexSend(true);
    load(QByteArray("\x01\xfe\x00", 3));
    QCOMPARE(m_editor->toPlainText(), QStringLiteral("01 FE 00 "));
    load("0A 0B\n0c");
    QCOMPARE(m_editor->toPlainText(), QStringLiteral("0A 0B 0c"));

    const QSignalSpy notices(m_box.get(), &QtSendBoxWidget::notify);
    load(QByteArray(2 * 1000 * 1000, 'x'));
    QCOMPARE(notices.count(), 1);
    QFile::remove(name);
    press("btnLoadDataFile");
    QCOMPARE(noticeOf(notices.at(1)).text, QStringLiteral("文件加载失败!"));
    QCOMPARE(noticeOf(notices.at(2)).text, QStringLiteral("文件不存在"));
    DialogAnswers::instance().fileNames = [](auto, auto, auto, auto) { return QStringList(); };
    press("btnLoadDataFile"); // cancelled
    QCOMPARE(notices.count(), 3);
    QCOMPARE(m_editor->toPlainText(), QStringLiteral("0A 0B 0c"));
}

void TestSendBox::keepsAndSendsRows()
{
    m_box->setCurrentPage(QtSendBoxWidget::MultiPage);
    auto *third = child<QLineEdit>("multiEdit2");
    QCOMPARE(third->property("id").toInt(), 2);
    QCOMPARE(child<QPushButton>("multiSend2")->text(), QStringLiteral("3"));
    QVERIFY(QDir(AppPaths::confFolder()).removeRecursively()); // it is made again
    QTest::keyClicks(third, "AT#1");
    QTest::keyClick(third, Qt::Key_Return);
    QCOMPARE(file("ser_multi_conf.txt"), QByteArray("2#AT#1\n"));
    m_box->setNewline(true);
    press("multiSend2");
    QCOMPARE(lastSent(), QByteArray("AT#1\r\n"));
    m_box->setHexSend(true);
    third->clear();
    QGuiApplication::clipboard()->setText("01\r\n02\n"); // of two lines a row makes one
    third->paste();
    press("multiSend2"); // typed but not finished counts
    QCOMPARE(lastSent(), QByteArray("\x01\x02\r\n"));
    press("multiSend5"); // an empty row is the line end alone, or nothing
    QCOMPARE(lastSent(), QByteArray("\r\n"));
    m_box->setNewline(false);
    const int sent = m_sent->count();
    press("multiSend5");
    QCOMPARE(m_sent->count(), sent);

    // Turning the page stores what is being typed.
    child<QLineEdit>("multiEdit0")->setText("unfinished");
    auto *bar = m_box->findChild<QtPageBar *>();
    bar->SltNextPage();
    QCOMPARE(child<QLineEdit>("multiEdit0")->text(), QString());
    child<QLineEdit>("multiEdit9")->setText("row 19");
    bar->SltPrevPage();
    QCOMPARE(child<QLineEdit>("multiEdit0")->text(), QStringLiteral("unfinished"));
    QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#unfinished\n2#01 02\n19#row 19\n"));

    makeBox();
    QCOMPARE(child<QLineEdit>("multiEdit2")->text(), QStringLiteral("01 02"));
}

void TestSendBox::sharesRowsWithAnotherCopy()
{
    auto *first = child<QLineEdit>("multiEdit0");
    first->setText("mine");
    QTest::keyClick(first, Qt::Key_Return);
    QtSendBoxWidget copy(QtSendBoxWidget::Serial);
    auto *theirs = copy.findChild<QLineEdit *>("multiEdit1");
    theirs->setText("theirs");
    QTest::keyClick(theirs, Qt::Key_Return);
    first->setText("mine again");
    QTest::keyClick(first, Qt::Key_Return);
    QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#mine again\n1#theirs\n"));
    QCOMPARE(child<QLineEdit>("multiEdit1")->text(), QStringLiteral("theirs"));
    // Deleting a page that only the other copy has filled asks first.
    bool asked = false;
    DialogAnswers::instance().message = [&](auto, auto, auto) { return asked = true, 0; };
    auto *bar = m_box->findChild<QtPageBar *>();
    copy.findChild<QtPageBar *>()->SltNextPage();
    bar->SltNextPage();
    theirs->setText("second page");
    QTest::keyClick(theirs, Qt::Key_Return);
    bar->SltDeleteCurrentPage();
    QVERIFY(asked);
    bar->SltPrevPage();
    // "conf" has gone: all rows are written again.
    QVERIFY(QDir(AppPaths::confFolder()).removeRecursively());
    first->setText("third");
    QTest::keyClick(first, Qt::Key_Return);
    QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#third\n1#theirs\n11#second page\n"));
}

// What can't be read is not written over, and every failure says why.
void TestSendBox::tellsWhatItCannotStore()
{
    const auto fold = [](const char *name) { // root may read any file, but none of these
        QFile::remove(AppPaths::confFolder() + '/' + name);
        QVERIFY(QDir(AppPaths::confFolder()).mkdir(name));
    };
    m_box.reset();
    fold("ser_multi_conf.txt");
    fold("ser_send_data.txt");
    makeBox();
    const QSignalSpy notices(m_box.get(), &QtSendBoxWidget::notify);
    QTRY_COMPARE(notices.count(), 2);
    QTest::keyClicks(m_editor, "x");
    QTRY_COMPARE(notices.count(), 3);
    auto *row = child<QLineEdit>("multiEdit0");
    row->setText("y");
    QTest::keyClick(row, Qt::Key_Return);
    QVERIFY(notices.count() >= 4);
    for (const int answer : {0, 1}) {
        DialogAnswers::instance().message = [answer](auto, auto, auto) { return answer; };
        QCOMPARE(m_box->saveBeforeExit(), answer == 1);
    }
    for (const QList<QVariant> &notice : notices) {
        QVERIFY2(noticeOf(notice).text.endsWith(QStringLiteral("失败：不是普通文件")),
                 qPrintable(noticeOf(notice).text));
        QVERIFY(noticeOf(notice).isError());
    }
    QVERIFY(QDir(AppPaths::confFolder()).rmdir("ser_multi_conf.txt"));
    QTest::keyClick(row, Qt::Key_Return); // tried again
    QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#y\n"));
}

void TestSendBox::addsAndDeletesPages()
{
    int asked = 0;
    int answer = 1;
    DialogAnswers::instance().message = [&](auto, auto, auto) {
        ++asked;
        return answer;
    };
    auto *bar = m_box->findChild<QtPageBar *>();
    auto *edit = child<QLineEdit>("multiEdit0");
    for (int page = 1; page <= 5; ++page) {
        edit->setText(QString::number(page));
        bar->SltNextPage();
    }
    bar->SltAddNewPage();
    bar->SltJumpLastPage();
    edit->setText("6");
    QCOMPARE(bar->pageCount(), 6);

    answer = 0;
    bar->SltDeleteCurrentPage();
    QCOMPARE(bar->pageCount(), 6);
    QCOMPARE(edit->text(), QStringLiteral("6"));
    answer = 1;
    bar->SltPrevPage(); // page 5 of 6: a page in the middle
    bar->SltDeleteCurrentPage();
    QCOMPARE(edit->text(), QStringLiteral("6")); // the next one moved here
    QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#1\n10#2\n20#3\n30#4\n40#6\n"));
    bar->SltDeleteCurrentPage(); // the last page
    QCOMPARE(bar->currentPage(), 4);
    QCOMPARE(edit->text(), QStringLiteral("4"));
    QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#1\n10#2\n20#3\n30#4\n"));
    bar->SltJumpFirshPage();
    edit->setText("1b");
    bar->SltDeleteCurrentPage(); // with text that was being typed
    QCOMPARE(edit->text(), QStringLiteral("2"));
    QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#2\n10#3\n20#4\n"));
    QCOMPARE(asked, 4);
    bar->SltAddNewPage();
    bar->SltJumpLastPage();
    bar->SltDeleteCurrentPage(); // empty
    QCOMPARE(asked, 4);
    QCOMPARE(bar->pageCount(), 3);
}

void TestSendBox::clearingAPageAsksFirst()
{
    auto *edit = child<QLineEdit>("multiEdit4");
    edit->setText("x");
    int asked = 0;
    DialogAnswers::instance().message = [&](auto, auto, auto) { return asked++; };
    press("btnClearMulti"); // answered with 0: no
    QCOMPARE(edit->text(), QStringLiteral("x"));
    press("btnClearMulti");
    QCOMPARE(asked, 2);
    QCOMPARE(edit->text(), QString());
    QCOMPARE(file("ser_multi_conf.txt"), QByteArray());
}

void TestSendBox::listsFilesToSend()
{
    DialogAnswers::instance().fileNames = [](auto, auto, auto, const QString &filter) {
        return filter == QStringLiteral("所有文件(*.*)") ? QStringList{"/tmp/a.bin", "/tmp/b.bin"}
                                                         : QStringList();
    };
    FileSendPage *page = m_box->filePage();
    press("btnOpenFiles");
    QCOMPARE(page->files(), (QStringList{"/tmp/a.bin", "/tmp/b.bin"}));
    m_box->setDeviceOpen(false);
    QVERIFY(!child<QPushButton>("btnSendFiles")->isEnabled());
    m_box->setDeviceOpen(true);
    QSignalSpy requests(m_box.get(), &QtSendBoxWidget::signalSendFile);
    press("btnSendFiles");
    QCOMPARE(requests.last().at(0).toInt(), 1);
    QCOMPARE(requests.last().at(1).toInt(), 1024);
    QCOMPARE(requests.last().at(2).toStringList().size(), 2);

    // While files are on their way the button stops them.
    page->setSending(true);
    QCOMPARE(child<QPushButton>("btnSendFiles")->text(), QStringLiteral("停止发送"));
    QVERIFY(!child<QPushButton>("btnClearFiles")->isEnabled());
    press("btnSendFiles");
    QCOMPARE(requests.last().at(2).toStringList(), QStringList());
    // What is said last is seen, however the lines before it break.
    m_box->setCurrentPage(QtSendBoxWidget::FilePage);
    auto *said = child<QPlainTextEdit>("textTransfer");
    for (int width = 120; width < 160; width += 4) {
        said->clear();
        said->setFixedSize(width, 120);
        for (const char *text :
             {"\n1->\n/tmp/a long/name/of two/lines.bin", "ok", "\n2->\n/tmp/b.bin", "ok"}) {
            page->appendText(text);
            QCoreApplication::processEvents();
        }
        QCOMPARE(said->verticalScrollBar()->value(), said->verticalScrollBar()->maximum());
    }
    page->setSending(false);
    press("btnClearFiles");
    QCOMPARE(page->files(), QStringList());
    press("btnSendFiles"); // nothing to send, and nothing to stop
    QCOMPARE(requests.size(), 2);
}

QTEST_MAIN(TestSendBox)
#include "test_sendbox.moc"
