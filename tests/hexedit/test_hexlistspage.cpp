// What the page keeps and lists below the bytes: finds, texts, differences, bookmarks and
// checksum rules.

#include "answers.h"
#include "freshfolder.h"
#include "hexeditwidget.h"
#include "korvexresources.h"
#include "notice.h"
#include "qhexedit.h"
#include "testfiles.h"

#include <QtTest>
#include <QtWidgets>

class TestHexListsPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void init()
    {
        m_root = std::make_unique<FreshFolder>();
        makePage();
    }
    void cleanup()
    {
        m_page.reset();
        DialogAnswers::instance() = DialogAnswers();
    }

    void listsFindsAndTexts()
    {
        open("a.bin", QByteArray("\x55\x01\x02\x55\xF1\x02hello world\0\x55\x02", 20));
        child<QLineEdit>("editFind")->setText("55 ?1 02");
        child<QAction>("actionHexResults")->trigger();
        click("btnListAll");
        auto *table = child<QTableView>("hexResultsTable");
        QCOMPARE(table->model()->rowCount(), 2);
        QVERIFY(table->isVisible());
        table->selectRow(1);
        QVERIFY(edit()->address() == 6 && edit()->selectionLength() == 3);
        QCOMPARE(table->model()->index(1, 0).data().toString(), QString("0x3"));
        edit()->replaceSelection("abc");
        QVERIFY(child<QLabel>("hexResultsSummary")->text().contains("已修改"));
        child<QAction>("actionHexStrings")->trigger();
        click("btnListStrings");
        auto *texts = child<QTableView>("hexStringsTable");
        QCOMPARE(texts->model()->rowCount(), 1);
        QCOMPARE(texts->model()->index(0, 3).data().toString(), QString("abchello world"));
        Questions discard(2);
        open("b.bin", "other");
        QVERIFY(table->model()->rowCount() == 0 && texts->model()->rowCount() == 0);
    }

    void comparesWhileEdited()
    {
        QVERIFY(writeFile(path("b.bin"), "0123456789"));
        open("a.bin", "01234x6789");
        child<QAction>("actionHexCompare")->trigger();
        chooseFile(path("b.bin"));
        click("btnCompareFile");
        auto *table = child<QTableView>("hexDifferencesTable");
        QTRY_COMPARE(table->model()->rowCount(), 1);
        click("btnNextDifference");
        QVERIFY(edit()->selectionBegin() == 5 && edit()->selectionLength() == 1);
        edit()->replaceSelection("5");
        QTRY_COMPARE(table->model()->rowCount(), 0);
        QVERIFY(child<QLabel>("labelCompare")->text().contains("完全相同"));
        click("btnCompareSaved");
        QTRY_COMPARE(table->model()->rowCount(), 1);
        chooseFile(path("nowhere"));
        click("btnCompareFile");
        QVERIFY(child<QLabel>("labelCompare")->text().contains("未选择"));
    }

    // Firmware images stand beside each other by their addresses.
    void comparesImages()
    {
        const QByteArray records = ":020000040800F2\n:0400100001020304E2\n:02010000AABB98\n";
        QVERIFY(
            writeFile(path("b.hex"), ":020000040800F2\n:0400100001020904DC\n:01020000CC31\n:00000001FF\n"));
        QVERIFY(writeFile(path("c.bin"), QByteArray("\1\2\3\4", 4) + QByteArray(0xEC, '\0') + "\xAA\xBB"));
        QVERIFY(writeFile(path("a.hex"), records + ":00000001FF\n"));
        m_page->openFile(path("a.hex"));
        QTRY_COMPARE(edit()->size(), 6);
        child<QAction>("actionHexCompare")->trigger();
        chooseFile(path("b.hex"));
        click("btnCompareFile");
        auto *list = child<QTableView>("hexDifferencesTable")->model();
        QTRY_COMPARE(list->rowCount(), 2); // a byte, and two that are not there
        QCOMPARE(list->index(0, 0).data().toString(), QString("0x8000012"));
        QCOMPARE(list->index(1, 0).data().toString(), QString("0x8000100"));
        QVERIFY(child<QLabel>("labelCompare")->text().contains("另有1字节"));
        chooseFile(path("c.bin")); // which begins where the image does
        click("btnCompareFile");
        QTRY_VERIFY(child<QLabel>("labelCompare")->text().contains("完全相同"));
        QCOMPARE(list->rowCount(), 0);
        open("d.bin", QByteArray("\1\2\3", 3)); // plain bytes, which grow
        edit()->setAddresses(HexAddressMap(0x8000010));
        chooseFile(path("a.hex"));
        click("btnCompareFile");
        QTRY_VERIFY(child<QLabel>("labelCompare")->text().contains("完全相同，另有3字节"));
        edit()->document().replace(3, 0, "\4");
        edit()->contentEdited(4);
        QTRY_VERIFY(child<QLabel>("labelCompare")->text().contains("完全相同，另有2字节"));
        edit()->setAddresses(HexAddressMap(0));
        QTRY_VERIFY(child<QLabel>("labelCompare")->text().contains("另有6字节"));
    }

    void keepsBookmarks()
    {
        open("a.bin", "0123456789");
        edit()->select(2, 3);
        DialogAnswers::instance().name = [](const QString &) { return QString("表头"); };
        click("btnAddBookmark");
        QVERIFY(!QFile::exists(path("a.bin.kvnotes")));
        child<QCheckBox>("checkNotesBeside")->setChecked(true);
        QVERIFY(QFile::exists(path("a.bin.kvnotes")));
        makePage(); // the program is started again
        m_page->openFile(path("a.bin"));
        auto *table = child<QTableWidget>("tableBookmarks");
        QTRY_COMPARE(table->rowCount(), 1);
        QCOMPARE(table->item(0, 2)->text(), QString("表头"));
        table->selectRow(0);
        QVERIFY(edit()->selectionBegin() == 2 && edit()->selectionLength() == 3);
        chooseFile(path("copy.bin"));
        click("btnSaveAs");
        QTRY_VERIFY(QFile::exists(path("copy.bin.kvnotes"))); // they go with the bytes
        click("btnRemoveBookmark");
        QVERIFY(!QFile::exists(path("copy.bin.kvnotes")) && QFile::exists(path("a.bin.kvnotes")));
        // What another copy of the program adds stays, and what was removed is gone.
        makePage();
        m_page->openFile(path("a.bin"));
        auto other = std::move(m_page);
        makePage();
        m_page->openFile(path("a.bin"));
        edit()->select(7, 1);
        click("btnAddBookmark");
        QCOMPARE(child<QTableWidget>("tableBookmarks")->rowCount(), 2);
        m_page.swap(other);
        child<QTableWidget>("tableBookmarks")->selectRow(0);
        click("btnRemoveBookmark");
        QCOMPARE(child<QTableWidget>("tableBookmarks")->rowCount(), 1);
        QCOMPARE(child<QTableWidget>("tableBookmarks")->item(0, 0)->text(), QString("0x7"));
        // What can't be read is not written over.
        QVERIFY(writeFile(path("b.bin.kvnotes"), "{"));
        open("b.bin", "bytes");
        click("btnAddBookmark");
        QCOMPARE(contentOf(path("b.bin.kvnotes")), QByteArray("{"));
        QVERIFY(m_errors > 0);
    }

    void renewsChecksums()
    {
        open("a.bin", "123456789....");
        child<QAction>("actionHexRules")->trigger();
        click("btnDigestCompute");
        QCOMPARE(child<QLineEdit>("editDigestResult")->text(), QString("CBF43926"));
        child<QLineEdit>("editDigestCompare")->setText("0x2639f4cb");
        QVERIFY(child<QLabel>("labelDigestCompare")->text().contains("字节序相反"));
        click("btnDigestWrite");
        QCOMPARE(edit()->document().read(9, 4).toHex(), QByteArray("2639f4cb"));
        click("btnDigestKeep");
        auto *rules = child<QTableWidget>("tableDigestRules");
        QCOMPARE(rules->rowCount(), 1);
        QTRY_COMPARE(rules->item(0, 1)->text(), QString("一致"));
        rules->item(0, 2)->setCheckState(Qt::Checked);
        edit()->select(0, 1);
        edit()->replaceSelection("2");
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        QTRY_VERIFY(!edit()->isModified());
        const QByteArray saved = contentOf(path("a.bin"));
        QVERIFY(saved.startsWith("223456789") && saved.right(4).toHex() != "2639f4cb");
        // Checked at the next opening, also after another program has changed the file.
        QVERIFY(writeFile(path("a.bin"), "3" + saved.mid(1)));
        makePage();
        m_page->openFile(path("a.bin"));
        QTRY_COMPARE(m_errors, 1);
        // At the end of the program: renewed as well.
        Questions save(1);
        edit()->select(1, 1);
        edit()->replaceSelection("x");
        QVERIFY(m_page->mayClose());
        QVERIFY(m_page->saveBeforeExit());
        const QByteArray last = contentOf(path("a.bin"));
        QVERIFY(last.startsWith("3x3456789") && last.right(4) != saved.right(4));
        makePage();
        m_page->openFile(path("a.bin"));
        QTRY_COMPARE(m_informations, 1);
    }

    // The first rule's range has the second one's checksum; the last two have each other's.
    void renewsRulesInOrder()
    {
        const QByteArray form = R"({"digest":"%1","begin":"%2","end":"%3","at":"%4","renew":true})";
        QStringList rules;
        for (const QStringList &rule : QList<QStringList>{{"累加和 8位", "0", "A", "A"},
                                                          {"异或 8位", "0", "9", "9"},
                                                          {"异或 8位", "B", "D", "D"},
                                                          {"异或 8位", "C", "E", "B"}})
            rules += QString(form).arg(rule[0], rule[1], rule[2], rule[3]);
        const QString notes = QString(R"({"korvexNotes":1,"checksums":[%1]})").arg(rules.join(','));
        QVERIFY(writeFile(path("a.bin.kvnotes"), notes.toUtf8()));
        open("a.bin", "123456789??xyz");
        m_errors = 0;
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        QTRY_COMPARE(contentOf(path("a.bin")), QByteArray("123456789\x31\x0Exyz")); // 0x1DD + 0x31
        QCOMPARE(m_errors, 1);
    }

    // What another program writes while checksums are renewed is not overwritten unasked.
    void asksAgainAfterRenewal()
    {
        QVERIFY(writeFile(path("a.bin.kvnotes"), R"({"korvexNotes":1,"checksums":[{"digest":"SHA-512",
            "begin":"0","end":"end-40","at":"end-40","renew":true}]})"));
        open("a.bin", QByteArray(64 << 20, 'a'));
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        QVERIFY(edit()->task()->isRunning());
        child<QAction>("actionHexRules")->trigger();
        child<QTableWidget>("tableDigestRules")->selectRow(0);
        click("btnDigestRemove"); // not now
        QVERIFY(writeFile(path("a.bin"), "theirs"));
        Questions cancel(0);
        QTRY_VERIFY_WITH_TIMEOUT(m_page->isClosed(), 60000);
        QCOMPARE(contentOf(path("a.bin")), QByteArray("theirs"));
    }

private:
    void makePage()
    {
        m_page = std::make_unique<HexEditWidget>();
        m_errors = m_informations = 0;
        connect(m_page.get(), &QtWidgetBase::signalNotify, this,
                [this](const QString &, int kind) { ++(kind == Notice::Error ? m_errors : m_informations); });
        m_page->resize(1000, 700);
        m_page->show();
    }
    QString path(const char *name) const { return m_root->filePath(QString::fromUtf8(name)); }
    void open(const char *name, const QByteArray &content)
    {
        QVERIFY(writeFile(path(name), content));
        m_page->openFile(path(name));
        QTRY_VERIFY(!edit()->task()->isRunning() && edit()->size() == content.size());
    }
    template <class T> T *child(const char *name) { return m_page->findChild<T *>(QLatin1String(name)); }
    void click(const char *name) { child<QPushButton>(name)->click(); }
    QHexEdit *edit() { return child<QHexEdit>("hexEdit"); }

    std::unique_ptr<FreshFolder> m_root;
    std::unique_ptr<HexEditWidget> m_page;
    int m_errors = 0;
    int m_informations = 0;
};

QTEST_MAIN(TestHexListsPage)
#include "test_hexlistspage.moc"
