// Firmware images in the page: bytes at their addresses, saved in their form or
// another one, and what is wrong with a file.

#include "dialoganswers.h"
#include "freshfolder.h"
#include "hexeditwidget.h"
#include "korvexresources.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "testfiles.h"

#include <QtTest>
#include <QtWidgets>

namespace {
const QByteArray kImage = ":020000040800F2\n:03FFFD00010203FB\n:020000040801F1\n:0100000004FB\n"
                          ":020000042000DA\n:0200100041426B\n:0400000508000131BD\n:00000001FF\n";
}

class TestHexImagePage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void init()
    {
        m_root = std::make_unique<FreshFolder>();
        m_questions.clear();
        m_answer = 1;
        DialogAnswers::instance().message = [this](const QString &, const QString &text, int) {
            m_questions.append(text);
            return m_answer;
        };
        m_page = std::make_unique<HexEditWidget>();
        m_page->resize(1000, 500);
        m_page->show();
        put("fw.bin", kImage); // the content decides
        QtMessageTip::showTip(QString());
    }

    void cleanup()
    {
        m_page.reset();
        DialogAnswers::instance() = DialogAnswers();
    }

    void editsAtAddresses()
    {
        open("fw.bin");
        QCOMPARE(shown(), QByteArray("\1\2\3\4"
                                     "AB"));
        QCOMPARE(m_page->counts().at(0), QString("Address: %1").arg(0x800FFFD));
        QCOMPARE(text("labelImage"), QString("Intel HEX：2段，6字节，0x0800FFFD到0x20000011"));
        QVERIFY(child<QWidget>("btnFaults")->isHidden() && !edit()->isModified());
        jump("20000011");
        QTest::keyClicks(edit(), "43");
        QVERIFY(text("labelFile").contains("未保存"));
        QtMessageTip::showTip(QString());
        for (const char *nowhere : {"8010001", "800FFFC", "20000013"})
            jump(nowhere);
        QCOMPARE(edit()->address(), 6);
        jump("8010000");
        QCOMPARE(edit()->address(), 3);
        QTest::keyClick(edit(), Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(text("labelSelection"), QString("选中：0x8010000起1字节"));
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        waitForWork();
        QCOMPARE(content("fw.bin"), QByteArray(kImage).replace("41426B", "41436A"));
        QVERIFY(!edit()->isModified() && m_questions.isEmpty());
        m_page->sltToolBtnsClicked(HexEditWidget::Undo);
        QVERIFY(edit()->isModified());
    }

    // A match that has a gap inside is none.
    void replacesInRunsOnly()
    {
        open("fw.bin");
        child<QLineEdit>("editFind")->setText("04 41");
        child<QLineEdit>("editReplace")->setText("00 00");
        click("btnReplaceAll");
        QVERIFY(!edit()->isModified());
        for (const char *button : {"btnFindNext", "btnFindPrevious"}) {
            click(button);
            QCOMPARE(edit()->selectionLength(), 0);
        }
        child<QLineEdit>("editFind")->setText("03 04");
        click("btnReplaceAll");
        QCOMPARE(shown(), QByteArray("\1\2\0\0"
                                     "AB",
                                     6));
    }

    void showsTheTextItself()
    {
        open("fw.bin");
        QTest::keyClicks(edit(), "55");
        m_answer = 0;
        click("btnOtherView");
        QVERIFY(m_questions.size() == 1 && edit()->isModified());
        m_answer = 2; // discards
        click("btnOtherView");
        QCOMPARE(shown(), kImage);
        QVERIFY(child<QWidget>("hexImageBar")->isVisible());
        edit()->setOverwrite(false);
        QTest::keyClicks(edit(), "0A");
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        waitForWork();
        QCOMPARE(content("fw.bin"), '\n' + kImage);
        click("btnOtherView");
        QCOMPARE(edit()->size(), 6);
        m_page->sltToolBtnsClicked(HexEditWidget::CloseFile);
        QVERIFY(child<QWidget>("hexImageBar")->isHidden());
    }

    void reportsFaults()
    {
        put("fw.bin", QByteArray(kImage).replace("6B\n", "6C\nnote\n"));
        open("fw.bin");
        QCOMPARE(shown(), QByteArray("\1\2\3\4"
                                     "AB"));
        QCOMPARE(text("labelFaults"), QString("2处问题"));
        auto *list = child<QListWidget>("listFaults");
        QVERIFY(list->isHidden());
        click("btnFaults");
        QVERIFY(list->isVisible() && list->count() == 2 && list->item(1)->text().startsWith("第7行"));
        const QByteArray before = content("fw.bin");
        QTest::keyClicks(edit(), "01");
        m_answer = 0;
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        QVERIFY(m_questions.size() == 1 && content("fw.bin") == before && edit()->isModified());
        m_answer = 1;
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        waitForWork();
        QCOMPARE(content("fw.bin"), kImage);
        QVERIFY(child<QWidget>("labelFaults")->isHidden() && list->isHidden());
    }

    void savesInOtherForms()
    {
        put("fw.bin", QByteArray(kImage).replace(":020000042000DA\n", ""));
        open("fw.bin"); // at 08010010 now
        saveAs("fw.s19", "S-record");
        QCOMPARE(content("fw.s19"),
                 QByteArray("S3090800FFFD01020304E8\r\nS3070801001041425C\r\nS70508000131C0\r\n"));
        saveAs("filled.bin", "原始数据");
        QCOMPARE(content("filled.bin"), QByteArray("\1\2\3\4") + QByteArray(15, '\xFF') + "AB");
        QTest::keyClicks(edit(), "61");
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        waitForWork();
        QCOMPARE(content("filled.bin"), QByteArray("a\2\3\4") + QByteArray(15, '\xFF') + "AB");
        saveAs("fw.hex", "Intel HEX");
        open("fw.hex");
        QCOMPARE(text("labelImage"), QString("Intel HEX：2段，6字节，0x0800FFFD到0x08010011"));
        QVERIFY(m_questions.isEmpty());
        m_answer = 0;
        saveAs("fw.s19", "原始数据"); // the name says another form
        QVERIFY(m_questions.size() == 1 && content("fw.s19").startsWith("S3"));
    }

    // Also where the file is read again; and the bytes are all at other addresses then.
    void shiftsPlainFiles()
    {
        put("rom", QByteArray(40, 'x'));
        open("rom");
        QVERIFY(child<QWidget>("hexImageBar")->isHidden());
        DialogAnswers::instance().name = [](const QString &) { return QString("08000008"); };
        edit()->actions().at(1)->trigger();
        jump("08000020");
        QCOMPARE(edit()->address(), 24);
        QCOMPARE(m_page->counts().at(0), QString("Address: %1").arg(0x8000020));
        QTest::keyClicks(edit(), "41");
        saveAs("rom.hex", "Intel HEX");
        edit()->setOverwrite(false);
        QVERIFY(edit()->isOverwrite()); // as in a file that was opened
        open("rom.hex");
        QCOMPARE(shown().at(24), 'A');
        QCOMPARE(edit()->shownAddress(0), 0x8000008);
        QVERIFY(!edit()->actions().at(1)->isEnabled());
    }

private:
    template <class Widget> Widget *child(const QString &name) const
    {
        return m_page->findChild<Widget *>(name);
    }
    QString text(const char *label) const { return child<QLabel>(label)->text(); }
    QHexEdit *edit() const { return m_page->findChild<QHexEdit *>(); }
    void waitForWork() { QTRY_VERIFY_WITH_TIMEOUT(!edit()->task()->isRunning(), 60000); }
    void click(const char *name)
    {
        child<QAbstractButton>(name)->click();
        waitForWork();
    }
    void jump(const char *address)
    {
        child<QLineEdit>("editJumpAddress")->setText(address);
        click("btnJump");
    }
    QString path(const QString &name) const { return m_root->filePath(name); }
    void put(const QString &name, const QByteArray &bytes) { QVERIFY(writeFile(path(name), bytes)); }
    QByteArray content(const QString &name) const { return contentOf(path(name)); }
    QByteArray shown() const { return edit()->document().read(0, 1 << 20); }
    void open(const QString &name)
    {
        m_page->openFile(path(name));
        waitForWork();
    }
    void saveAs(const QString &name, const QString &filter)
    {
        DialogAnswers::instance().fileNames = [=](auto, auto, auto, auto) { return QStringList(path(name)); };
        DialogAnswers::instance().filter = [=](const QString &filters) {
            return filters.split(";;").filter(filter).value(0);
        };
        click("btnSaveAs");
    }

    std::unique_ptr<FreshFolder> m_root;
    std::unique_ptr<HexEditWidget> m_page;
    QStringList m_questions;
    int m_answer = 1;
};

QTEST_MAIN(TestHexImagePage)
#include "test_heximagepage.moc"
