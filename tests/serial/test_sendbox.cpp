// The send box: what is typed, what goes out, and what is kept.

#include "answers.h"
#include "fieldmemory.h"
#include "filesendpage.h"
#include "freshfolder.h"
#include "korvexresources.h"
#include "notice.h"
#include "qtmessagetip.h"
#include "qtpagebar.h"
#include "qtsendboxwidget.h"
#include "qttexteditinput.h"
#include "sendoptions.h"
#include "testfiles.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
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
    void init()
    {
        initKorvexResources();
        m_root = std::make_unique<FreshFolder>();
        makeBox();
    }

    void cleanup()
    {
        DialogAnswers::instance() = DialogAnswers();
        m_box.reset();
    }

    void filtersKeysInHexMode()
    {
        const QSignalSpy hints(m_box.get(), &QtSendBoxWidget::showErrorHint);
        const auto press = [this](std::initializer_list<Qt::Key> keys) {
            for (const Qt::Key key : keys)
                QTest::keyClick(m_editor, key);
        };
        m_box->setHexSend(true);
        QTest::keyClicks(m_editor, "0a F9");
        press({Qt::Key_Left, Qt::Key_Backspace, Qt::Key_Return, Qt::Key_Shift, Qt::Key_Control,
               Qt::Key_CapsLock});
        QCOMPARE(m_editor->toPlainText(), QStringLiteral("0a \n9"));
        QCOMPARE(hints.count(), 0);
        QTest::keyClicks(m_editor, "g-");
        press({Qt::Key_Delete, Qt::Key_Enter, Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End});
        QTest::keyClick(m_editor, Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(m_editor->toPlainText(), QStringLiteral("0a \n9"));
        QCOMPARE(hints.count(), 9);
        m_box->setHexSend(false);
        QTest::keyClicks(m_editor, "g");
        QCOMPARE(m_editor->toPlainText(), QStringLiteral("0a \ng9"));
    }

    void reducesPastedText()
    {
        const auto paste = [this](const QString &text) {
            m_editor->selectAll();
            QGuiApplication::clipboard()->setText(text);
            m_editor->paste();
            return m_editor->toPlainText();
        };
        QCOMPARE(paste("any 文本\n2"), QStringLiteral("any 文本\n2"));
        const QString limit(200 * 1000, 'x');
        QCOMPARE(paste(limit), limit);
        QCOMPARE(paste(limit + 'y'), limit); // refused, with a tip
        QVERIFY(QtMessageTip::current());
        m_box->setHexSend(true);
        const QSignalSpy hints(m_box.get(), &QtSendBoxWidget::showErrorHint);
        QCOMPARE(paste("0x01, 0X2f"), QStringLiteral("01 2f"));
        QCOMPARE(hints.count(), 0);
        QCOMPARE(paste("01 zz 02"), QStringLiteral("01 02"));
        QCOMPARE(hints.count(), 1);
    }

    void sendsTypedText()
    {
        m_editor->setPlainText(QStringLiteral("温"));
        press("btnSingleSend");
        QCOMPARE(lastSent(), QByteArray("\xce\xc2"));
        Settings::instance().textCodec = 0;
        m_box->setNewline(true);
        press("btnSingleSend");
        QCOMPARE(lastSent(), QByteArray("\xe6\xb8\xa9\r\n"));
        press("btnClearSend");
        press("btnSingleSend");
        QCOMPARE(lastSent(), QByteArray("\r\n"));
        m_box->setNewline(false);
        press("btnSingleSend"); // nothing to send
        QCOMPARE(m_sent->count(), 3);
        m_editor->undo();
        QCOMPARE(m_editor->toPlainText(), QStringLiteral("温"));
        // And tells once what hexadecimal ignores.
        m_editor->setPlainText("hello");
        const QSignalSpy notices(m_box.get(), &QtSendBoxWidget::notify);
        m_box->setHexSend(true);
        m_box->setNewline(true);
        press("btnSingleSend");
        QCOMPARE(m_sent->count(), 3);
        QCOMPARE(notices.count(), 1);
        m_editor->setPlainText("01 02 fF 7");
        press("btnSingleSend");
        QCOMPARE(lastSent(), QByteArray("\x01\x02\xff\r\n"));
        QVERIFY(noticeOf(notices.last()).isError());
        QVERIFY(noticeOf(notices.last()).text.contains(QStringLiteral("末尾1个字符")));
        press("btnSingleSend"); // each time the user asks for it
        QCOMPARE(notices.count(), 3);
        m_box->setAutoInterval(10);
        m_box->setAutoSend(true);
        QTRY_VERIFY(m_sent->count() >= 7);
        m_box->setAutoSend(false);
        QCOMPARE(notices.count(), 4);
        m_editor->setPlainText("01");
        press("btnSingleSend");
        QCOMPARE(notices.count(), 4);
    }

    void refusesWithoutDevice()
    {
        m_box->setDeviceOpen(false);
        m_editor->setPlainText("x");
        child<QLineEdit>("multiEdit0")->setText("row");
        press("btnSingleSend");
        press("multiSend0");
        m_box->setAutoSend(true);
        QVERIFY(!m_box->isAutoSending());
        QCOMPARE(m_sent->count(), 0);
        QVERIFY(QtMessageTip::current());
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("请确认通信设备是否打开?"));
        QMetaObject::invokeMethod(m_box.get(), "sltSendXYModemFile");
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("请先打开需要发送的文件"));
    }

    // Up and Down walk through what was sent, of the same kind; the draft comes back.
    void walksThroughTheHistory()
    {
        SendOptions options(m_box.get());
        const auto send = [this](const char *text) {
            m_editor->setPlainText(text);
            press("btnSingleSend");
        };
        const auto press = [this](Qt::Key key) {
            QTest::keyClick(m_editor, key);
            return m_editor->toPlainText();
        };
        send("first");
        send("second\nline");
        m_box->setHexSend(true);
        send("0A");
        m_box->setHexSend(false);
        m_editor->setPlainText("draft");
        QCOMPARE(press(Qt::Key_Up), QString("second\nline"));
        QCOMPARE(press(Qt::Key_Up), QString("first"));
        QCOMPARE(press(Qt::Key_Up), QString("first"));
        QCOMPARE(press(Qt::Key_Down), QString("second\nline"));
        QCOMPARE(press(Qt::Key_Up), QString("second\nline")); // to the line above
        QCOMPARE(press(Qt::Key_Down), QString("second\nline"));
        QCOMPARE(press(Qt::Key_Down), QString("draft"));
        makeBox();
        QCOMPARE(press(Qt::Key_Up), QString("second\nline")); // after a start as well
        QCOMPARE(file("ser_send_history.txt"), QByteArray("H 0A\nT second\\nline\nT first\n"));
    }

    void addsWhatTheBarSays()
    {
        FieldMemory memory;
        SendOptions options(m_box.get());
        options.remember(&memory, &Settings::instance().serialArea, &Settings::instance().serialSend);
        auto *bytes = child<QLabel>("labelSendBytes");
        const auto *newline = options.findChild<QCheckBox *>("checkNewline");
        QVERIFY(!bytes->isVisible());
        m_editor->setPlainText("AT");
        press("btnSendFormat");
        QTRY_COMPARE(bytes->text(), QString("发送2字节 41 54"));
        auto *lineEnd = child<QComboBox>("comboSendLineEnd");
        lineEnd->setCurrentIndex(2);
        emit lineEnd->activated(2);
        QVERIFY(newline->isChecked());
        child<QComboBox>("comboSendChecksum")->setCurrentIndex(4);
        press("btnSendFormat"); // closed, and the bytes stay in sight
        QTRY_COMPARE(bytes->text(), QString("发送5字节 41 54 30 1F 0A"));
        QVERIFY(bytes->isVisible());
        m_editor->setFocus();
        child<QCheckBox>("checkEnterSends")->setChecked(true);
        QTest::keyClick(m_editor, Qt::Key_Return);
        QCOMPARE(lastSent(), QByteArray("AT\x30\x1f\n"));
        QTest::keyClick(m_editor, Qt::Key_Return, Qt::ShiftModifier);
        QCOMPARE(m_editor->toPlainText(), QString("\nAT"));
        m_box->setCurrentPage(QtSendBoxWidget::MultiPage);
        finish(child<QLineEdit>("multiEdit0"), "row");
        press("multiSend0");
        QCOMPARE(lastSent(), QByteArray("row\n")); // the checksum belongs to the single send
        child<QCheckBox>("checkSendEscapes")->setChecked(true);
        m_editor->setPlainText("\\q");
        m_box->setCurrentPage(QtSendBoxWidget::SinglePage);
        const int sent = m_sent->count();
        press("btnSingleSend");
        QCOMPARE(m_sent->count(), sent);
    }

    void autoSendsWithItsPeriod()
    {
        SendOptions options(m_box.get());
        auto *check = options.findChild<QCheckBox *>("checkAutoSend");
        auto *edit = options.findChild<QLineEdit *>("editAutoInterval");
        QStringList order;
        for (QWidget *field = &options; order.size() < 6; field = field->nextInFocusChain())
            if (field != &options && options.isAncestorOf(field) && (field->focusPolicy() & Qt::TabFocus))
                order += field->objectName();
        QCOMPARE(order.join(' '),
                 "comboSendPage checkNewline radioSendText radioSendHex checkAutoSend editAutoInterval");
        for (const char *text : {"9", "", "abc", "-20", "99999999999"}) {
            edit->setText(text);
            options.applyInterval();
            QCOMPARE(m_box->autoInterval(), 1000);
            QCOMPARE(edit->text(), QStringLiteral("1000"));
        }
        edit->setText("10");
        options.applyInterval();
        QCOMPARE(m_box->autoInterval(), 10);
        m_editor->setPlainText("ping");
        check->click();
        QVERIFY(m_box->isAutoSending());
        QTRY_VERIFY(m_sent->count() >= 3);
        // On a page that shows another text it neither goes on nor starts.
        m_editor->setMinimumHeight(2000); // the box is as high as the page shown needs
        const QSignalSpy notices(m_box.get(), &QtSendBoxWidget::notify);
        m_box->setCurrentPage(QtSendBoxWidget::MultiPage);
        QVERIFY(noticeOf(notices.value(0)).text.contains(QStringLiteral("自动发送已停止")));
        QVERIFY(m_box->minimumSizeHint().height() < 2000);
        QVERIFY(!check->isChecked() && !m_box->isAutoSending());
        check->click();
        QVERIFY(!check->isChecked() && !m_box->isAutoSending());
        m_box->setCurrentPage(QtSendBoxWidget::SinglePage);
        QVERIFY(m_box->minimumSizeHint().height() > 2000);
        check->click();
        QVERIFY(m_box->isAutoSending());
        m_box->setDeviceOpen(false);
        QVERIFY(!check->isChecked() && !m_box->isAutoSending());
    }

    void keepsTheTypedText()
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

    void loadsDataFiles()
    {
        const QString name = m_root->filePath(QStringLiteral("数据.txt"));
        const auto load = [&](const QByteArray &content) {
            QVERIFY(writeFile(name, content));
            press("btnLoadDataFile");
        };
        chooseFile(name);
        load("\xce\xc2");
        QCOMPARE(m_editor->toPlainText(), QStringLiteral("温"));
        m_box->setHexSend(true);
        load(QByteArray(200 * 1000 / 3, '\x01'));
        QCOMPARE(m_editor->toPlainText().size(), 199998);

        const QSignalSpy notices(m_box.get(), &QtSendBoxWidget::notify);
        load(QByteArray(200 * 1000 / 3 + 1, '\x01'));
        QCOMPARE(notices.count(), 1);
        QFile::remove(name);
        press("btnLoadDataFile");
        QCOMPARE(noticeOf(notices.at(1)).text, QStringLiteral("文件加载失败!"));
        QCOMPARE(noticeOf(notices.at(2)).text, QStringLiteral("文件不存在"));
        chooseFile(QString());
        press("btnLoadDataFile"); // cancelled
        QCOMPARE(notices.count(), 3);
        QCOMPARE(m_editor->toPlainText().size(), 199998);
    }

    void keepsAndSendsRows()
    {
        auto *third = child<QLineEdit>("multiEdit2");
        QTest::keyClicks(third, "AT#1");
        QTest::keyClick(third, Qt::Key_Return);
        QCOMPARE(file("ser_multi_conf.txt"), QByteArray("2#AT#1\n"));
        m_box->setHexSend(true);
        third->clear();
        QGuiApplication::clipboard()->setText("01\r\n02\n"); // of two lines a row makes one
        third->paste();
        press("multiSend2"); // typed but not finished counts
        QCOMPARE(lastSent(), QByteArray("\x01\x02"));
        press("multiSend5"); // empty
        QCOMPARE(m_sent->count(), 1);

        // Turning the page stores what is being typed.
        child<QLineEdit>("multiEdit0")->setText("unfinished");
        auto *bar = m_box->findChild<QtPageBar *>();
        bar->SltNextPage();
        QCOMPARE(child<QLineEdit>("multiEdit0")->text(), QString());
        child<QLineEdit>("multiEdit9")->setText("row 19");
        makeBox(); // so does the end
        QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#unfinished\n2#01 02\n19#row 19\n"));
        QCOMPARE(child<QLineEdit>("multiEdit2")->text(), QStringLiteral("01 02"));
    }

    void sharesRowsWithAnotherCopy()
    {
        auto *first = child<QLineEdit>("multiEdit0");
        finish(first, "mine");
        QtSendBoxWidget copy(QtSendBoxWidget::Serial);
        auto *theirs = copy.findChild<QLineEdit *>("multiEdit1");
        finish(theirs, "theirs");
        finish(first, "mine again");
        QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#mine again\n1#theirs\n"));
        QCOMPARE(child<QLineEdit>("multiEdit1")->text(), QStringLiteral("theirs"));
        // Deleting a page that only the other copy has filled asks first.
        const Questions questions(0);
        auto *bar = m_box->findChild<QtPageBar *>();
        copy.findChild<QtPageBar *>()->SltNextPage();
        bar->SltNextPage();
        finish(theirs, "second page");
        bar->SltDeleteCurrentPage();
        QCOMPARE(questions.asked.size(), 1);
        bar->SltPrevPage();
        // "conf" has gone: all rows are written again.
        QVERIFY(QDir(AppPaths::confFolder()).removeRecursively());
        bar->SltJumpLastPage();
        bar->SltDeleteCurrentPage(); // an empty one
        bar->SltJumpFirshPage();
        finish(first, "third");
        QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#third\n1#theirs\n11#second page\n"));
    }

    // What can't be read is not written over, and every failure says why.
    void tellsWhatItCannotStore()
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
        finish(row, "y");
        QVERIFY(notices.count() >= 4);
        for (const int answer : {0, 1}) {
            const Questions questions(answer);
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
        fold("ser_multi_conf.txt");
        row->setText("z");
        const int before = notices.count();
        m_box.reset(); // its receiver has gone
        QCOMPARE(notices.count(), before);
    }

    void clearsAndDeletesPages()
    {
        Questions questions(0);
        auto *bar = m_box->findChild<QtPageBar *>();
        auto *edit = child<QLineEdit>("multiEdit0");
        for (int page = 1; page <= 5; ++page) {
            edit->setText(QString::number(page));
            bar->SltNextPage();
        }
        bar->SltAddNewPage();
        bar->SltJumpLastPage();
        edit->setText("6");
        bar->SltDeleteCurrentPage();
        press("btnClearMulti");
        QCOMPARE(questions.asked.size(), 2); // and refused
        QCOMPARE(bar->pageCount(), 6);
        QCOMPARE(edit->text(), QStringLiteral("6"));
        questions.answer = 1;
        bar->SltPrevPage(); // page 5 of 6: a page in the middle
        bar->SltDeleteCurrentPage();
        QCOMPARE(edit->text(), QStringLiteral("6")); // the next one moved here
        bar->SltDeleteCurrentPage();                 // the last page
        QCOMPARE(bar->currentPage(), 4);
        bar->SltJumpFirshPage();
        edit->setText("1b");
        bar->SltDeleteCurrentPage(); // with text that was being typed
        QCOMPARE(edit->text(), QStringLiteral("2"));
        QCOMPARE(file("ser_multi_conf.txt"), QByteArray("0#2\n10#3\n20#4\n"));
        press("btnClearMulti");
        QCOMPARE(edit->text(), QString());
        QCOMPARE(file("ser_multi_conf.txt"), QByteArray("10#3\n20#4\n"));
        bar->SltDeleteCurrentPage(); // empty: not asked
        QCOMPARE(questions.asked.size(), 6);
        QCOMPARE(edit->text(), QStringLiteral("3"));
    }

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
    static QByteArray file(const char *name)
    {
        return contentOf(AppPaths::confFolder() + '/' + QLatin1String(name));
    }
    void finish(QLineEdit *row, const char *text)
    {
        row->setText(text);
        QTest::keyClick(row, Qt::Key_Return);
    }

    void makeBox()
    {
        m_box.reset(); // writes what it has first
        m_box = std::make_unique<QtSendBoxWidget>(QtSendBoxWidget::Serial);
        m_box->show();
        m_sent = std::make_unique<QSignalSpy>(m_box.get(), &QtSendBoxWidget::signalSendData);
        m_editor = child<QtTextEditInput>("textEditSend");
        m_box->setDeviceOpen(true);
    }

    std::unique_ptr<FreshFolder> m_root;
    std::unique_ptr<QtSendBoxWidget> m_box;
    std::unique_ptr<QSignalSpy> m_sent;
    QtTextEditInput *m_editor = nullptr;
};

QTEST_MAIN(TestSendBox)
#include "test_sendbox.moc"
