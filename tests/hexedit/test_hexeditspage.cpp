// The page's operations, typed values and new files, through its menus, dialogs and keys.

#include "dialoganswers.h"
#include "freshfolder.h"
#include "hexeditwidget.h"
#include "korvexresources.h"
#include "qhexedit.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "settings.h"
#include "testfiles.h"

#include <QtTest>
#include <QtWidgets>

class TestHexEditsPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void init()
    {
        m_root = std::make_unique<FreshFolder>();
        m_answer = QtMessageBox::Cancel;
        m_questions = 0;
        m_saveAs.clear();
        DialogAnswers::instance().message = [this](auto, auto, auto) { return ++m_questions, m_answer; };
        DialogAnswers::instance().fileNames = [this](auto, auto, auto, auto) {
            return m_saveAs.isEmpty() ? QStringList() : QStringList(path(m_saveAs));
        };
        m_page = std::make_unique<HexEditWidget>();
        m_page->resize(1000, 500);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get(), 30000));
        QVERIFY(writeFile(path("rom.bin"), "0123456789"));
        m_page->openFile(path("rom.bin"));
        waitForWork();
        QtMessageTip::showTip(QString());
    }
    void cleanup()
    {
        m_page.reset();
        DialogAnswers::instance() = DialogAnswers();
    }

    void changesTheSelection()
    {
        using Fields = QMap<QString, QVariant>;
        const auto changed = [this](const char *command, qint64 begin, qint64 length, const Fields &fields) {
            edit()->select(begin, length);
            run(command, fields);
            const QByteArray bytes = shown();
            while (edit()->document().canUndo())
                edit()->undo();
            return bytes;
        };
        QCOMPARE(changed("actionHexFill", 2, 5, {{"editOperand", "58 59"}}), QByteArray("01XYXYX789"));
        QCOMPARE(changed("actionHexFill", 2, 5, {{"editOperand", "5"}}), QByteArray("0123456789"));
        QVERIFY(tip().contains("成对"));
        Fields swap{{"comboOperation", "交换单元内的字节"}, {"comboOperationUnit", "4字节"}};
        QCOMPARE(changed("actionHexOperate", 0, 9, swap), QByteArray("3210765489"));
        QVERIFY(tip().startsWith("末尾1字节"));
        QCOMPARE(changed("actionHexOperate", 0, 3, swap), QByteArray("0123456789"));
        QVERIFY(tip().startsWith("未改动"));
        QCOMPARE(changed("actionHexOperate", 1, 2, {{"comboOperation", "加"}, {"editOperand", "-1"}}),
                 QByteArray("0013456789"));
        QVERIFY(!action("actionHexInsert")->isEnabled() &&
                action("actionHexInsert")->toolTip().contains("Insert"));
        edit()->setOverwrite(false);
        QCOMPARE(changed("actionHexInsert", 3, 0, {{"spinInsertCount", 200000}, {"editOperand", "41"}}),
                 "012" + QByteArray(200000, 'A') + "3456789");
        edit()->goTo(0);
        QVERIFY(!action("actionHexFill")->isEnabled());
        edit()->setAddresses(HexAddressMap(HexRuns{{0x100, 0, 4}, {0x200, 4, 6}}));
        QVERIFY(!action("actionHexInsert")->isEnabled());
        QCOMPARE(changed("actionHexFill", 2, 4, {{"editOperand", "58"}}), QByteArray("01XXXX6789"));
        QCOMPARE(changed("actionHexOperate", 2, 4, {{"comboOperation", "颠倒所有字节的顺序"}}),
                 QByteArray("0123456789"));
        edit()->select(2, 4);
        edit()->copyAs(HexCopyText::Form::HexDump);
        QVERIFY(QApplication::clipboard()->text().contains("\n00000200  34 35 "));
    }

    void editsValues()
    {
        child<QComboBox>("comboByteOrder")->setCurrentIndex(1);
        edit()->select(1, 3);
        auto *value = child<QLabel>("inspect_uint16");
        auto *field = child<QLineEdit>("editInspected");
        QTest::mouseDClick(value, Qt::LeftButton);
        QVERIFY(field->isVisible() && field->text() == value->text());
        const auto enter = [field](const QString &text) {
            field->selectAll();
            QTest::keyClicks(field, text);
            QTest::keyClick(field, Qt::Key_Return);
        };
        enter("65536");
        QVERIFY(field->isVisible() && field->text() == "65536" && tip().contains("0到65535"));
        enter("0x4142");
        QVERIFY(field->isHidden() && value->text() == "16706");
        QCOMPARE(shown(), QByteArray("0AB3456789"));
        QCOMPARE(edit()->selectionLength(), qint64(3));
        value->setFocus();
        QTest::keyClick(value, Qt::Key_Return);
        QTest::keyClicks(field, "1");
        edit()->setFocus(); // leads away without writing, which is said
        QVERIFY(field->isHidden() && tip().contains("未改写"));
        edit()->undo();
        QCOMPARE(shown(), QByteArray("0123456789"));
        edit()->setReadOnly(true, "because");
        QTest::mouseDClick(value, Qt::LeftButton);
        QVERIFY(field->isHidden() && tip() == "because");
    }

    void remembersJumps()
    {
        Settings::instance().hexEditPage.jumpHistory.set({"0x9"});
        auto *field = child<QLineEdit>("editJumpAddress");
        field->setFocus();
        for (const char *address : {"2", "end-2", "0x2"}) {
            field->setText(address);
            QTest::keyClick(field, Qt::Key_Return);
        }
        QCOMPARE(Settings::instance().hexEditPage.jumpHistory.value(), (QStringList{"0x2", "0x8", "0x9"}));
        QCOMPARE(child<QLabel>("labelHexAddress")->text(), QString("0x2"));
        field->setText("7");
        field->setFocus();
        QString seen;
        for (const int key :
             {Qt::Key_Up, Qt::Key_Up, Qt::Key_Up, Qt::Key_Up, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down}) {
            QTest::keyClick(field, Qt::Key(key));
            seen += field->text() + ' ';
        }
        QCOMPARE(seen, QString("0x2 0x8 0x9 0x9 0x8 0x2 7 "));
    }

    void tellsGrowthOnce()
    {
        edit()->goTo(9);
        for (const char *expected : {"", "变长", ""}) { // the last byte, one behind it, another one
            QtMessageTip::showTip(QString());
            QTest::keyClicks(edit(), "41");
            QVERIFY(*expected ? tip().contains(expected) : tip().isEmpty());
        }
    }

    void makesNewFiles()
    {
        const auto press = [this] {
            QTest::keyClick(m_page->windowHandle(), Qt::Key_N, Qt::ControlModifier);
            waitForWork();
        };
        emit child<QPushButton>("btnRecent")->menu()->aboutToShow(); // the menu must not take the key
        press();
        QVERIFY(m_page->fileName().isEmpty() && edit()->size() == 0 && m_questions == 0);
        QVERIFY(m_page->mayClose()); // nothing is in it
        QTest::keyClicks(edit(), "4142");
        QCOMPARE(shown(), QByteArray("AB"));
        press();
        m_page->openFile(path("rom.bin"));
        QVERIFY(!m_page->mayClose() && m_questions == 3 && shown() == "AB");
        m_answer = QtMessageBox::Save; // but no name is given
        m_page->openFile(path("rom.bin"));
        QVERIFY(!m_page->mayClose() && !m_page->saveBeforeExit() && shown() == "AB");
        m_saveAs = "missing/new.bin"; // can't be written
        QVERIFY(m_page->mayClose());
        m_page->closeLinks();
        waitForWork();
        QVERIFY(!m_page->saveBeforeExit() && edit()->isModified() && shown() == "AB");
        m_saveAs = "new.bin";
        QVERIFY(m_page->mayClose() && !QFile::exists(path("new.bin")));
        m_page->closeLinks();
        waitForWork();
        QVERIFY(m_page->saveBeforeExit() && m_page->fileName() == path("new.bin"));
        QCOMPARE(contentOf(path("new.bin")), QByteArray("AB"));

        press(); // saved on the way to another file
        QTest::keyClicks(edit(), "43");
        m_saveAs = "other.bin";
        m_page->openFile(path("rom.bin"));
        QTRY_COMPARE_WITH_TIMEOUT(m_page->fileName(), path("rom.bin"), 30000);
        waitForWork();
        QVERIFY(shown() == "0123456789" && contentOf(path("other.bin")) == "C" && edit()->isOverwrite());
    }

    void showsReadOnlyFiles()
    {
        QLabel *label = child<QLabel>("labelReadOnly");
        QVERIFY(label->isHidden());
        QVERIFY(QFile::setPermissions(path("rom.bin"), QFile::ReadOwner));
        m_page->openFile(path("rom.bin"));
        waitForWork();
        const bool isWritable = QFileInfo(path("rom.bin")).isWritable(); // by a superuser all the same
        QCOMPARE(label->isHidden(), isWritable);
        QCOMPARE(label->toolTip().contains("文件为只读"), !isWritable);
        QVERIFY(!edit()->isReadOnly()); // it can be saved elsewhere
    }

private:
    template <class Widget> Widget *child(const QString &name) const
    {
        return m_page->findChild<Widget *>(name);
    }
    QAction *action(const char *name) const { return m_page->findChild<QAction *>(name); }
    QHexEdit *edit() const { return m_page->findChild<QHexEdit *>(); }
    void waitForWork() { QTRY_VERIFY_WITH_TIMEOUT(!edit()->task()->isRunning(), 60000); }
    // In the dialog, which is canceled where a field is refused.
    void run(const char *command, const QMap<QString, QVariant> &fields)
    {
        QTimer::singleShot(0, this, [&fields] {
            QWidget *dialog = QApplication::activeModalWidget();
            for (auto field = fields.begin(); field != fields.end(); ++field) {
                auto *widget = dialog->findChild<QWidget *>(field.key());
                if (!widget->isVisible())
                    qFatal("%s is hidden", qPrintable(field.key()));
                if (auto *box = qobject_cast<QComboBox *>(widget))
                    box->setCurrentText(field->toString());
                else
                    widget->setProperty(qobject_cast<QSpinBox *>(widget) ? "value" : "text", *field);
            }
            dialog->findChild<QPushButton *>("btnOperationOk")->click();
            if (dialog->isVisible())
                qobject_cast<QDialog *>(dialog)->reject();
        });
        action(command)->trigger();
        waitForWork();
    }
    QString path(const QString &name) const { return m_root->filePath(name); }
    QByteArray shown() const { return edit()->document().read(0, 1 << 20); }
    static QString tip() { return QtMessageTip::current() ? QtMessageTip::current()->text() : QString(); }

    std::unique_ptr<FreshFolder> m_root;
    std::unique_ptr<HexEditWidget> m_page;
    QString m_saveAs;
    int m_answer = 0;
    int m_questions = 0;
};

QTEST_MAIN(TestHexEditsPage)
#include "test_hexeditspage.moc"
