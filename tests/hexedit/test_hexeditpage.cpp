// The page with real files: open, edit, save, close, and what stands in the way.

#include "app/apppaths.h"
#include "app/settings.h"
#include "hexedit/hexeditwidget.h"
#include "hexedit/qhexedit.h"
#include "resources/korvexresources.h"
#include "shell/base/dialoganswers.h"
#include "shell/base/qtmessagetip.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

class TestHexEditPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void init();
    void cleanup();
    void hasTheToolButtons();
    void opensEditsAndSaves();
    void cannotOpen();
    void savesNothingWithoutAFile();
    void asksBeforeEditsAreLost();
    void noticesAChangeOnDisk();
    void tellsWhenItCannotSave();
    void opensDroppedFiles();
    void findsAndReplaces();
    void jumpsAndSums();
    void showsWhatHasBeenRead();
    void stopsLongWork();

private:
    template <class Widget> Widget *child(const char *name) const
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *name) { child<QAbstractButton>(name)->click(); }
    void tool(int id) { m_page->sltToolBtnsClicked(id); }
    bool isWorking() const { return !child<QPushButton>("btnStopWork")->isHidden(); }
    QHexEdit *edit() const { return m_page->findChild<QHexEdit *>(); }
    QString path(const QString &name) const { return m_root->filePath(name); }
    void put(const QString &name, const QByteArray &bytes)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    QByteArray shown() const { return edit()->document().read(0, 1 << 20); }
    void open(const QString &name)
    {
        DialogAnswers::instance().fileNames = [name](auto, auto, auto, auto) {
            return name.isEmpty() ? QStringList() : QStringList(name);
        };
        tool(HexEditWidget::OpenFile);
        // A busy machine takes more than one turn even for a small file.
        if (QFileInfo(name).size() < 1 << 20)
            QTRY_VERIFY(!isWorking());
    }
    QString tip() const { return QtMessageTip::current() ? QtMessageTip::current()->text() : QString(); }

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<HexEditWidget> m_page;
    QStringList m_questions; // "title|text" of the boxes
    int m_answer = 1;
};

void TestHexEditPage::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    AppPaths::setRoot(m_root->path());
    AppPaths::makeFolders();
    Settings::instance() = Settings();
    m_questions.clear();
    m_answer = 1;
    DialogAnswers::instance().message = [this](const QString &title, const QString &text, int) {
        m_questions.append(title + '|' + text);
        return m_answer;
    };
    m_page = std::make_unique<HexEditWidget>();
    m_page->resize(1000, 500);
    m_page->show();
    put("rom.bin", "0123456789");
    QtMessageTip::showTip(QString());
}

void TestHexEditPage::cleanup()
{
    m_page.reset();
    DialogAnswers::instance() = DialogAnswers();
}

void TestHexEditPage::hasTheToolButtons()
{
    const std::pair<const char *, const char *> buttons[] = {
        {"打开文件 快捷键 Ctrl+O", "Ctrl+O"}, {"保存文件 快捷键 Ctrl+S", "Ctrl+S"},
        {"撤销 快捷键 Ctrl+Z", "Ctrl+Z"},     {"恢复撤销 快捷键 Ctrl+Shift+Z", "Ctrl+Shift+Z"},
        {"关闭文件 快捷键 Ctrl+W", "Ctrl+W"},
    };
    auto *group = m_page->findChild<QButtonGroup *>();
    QCOMPARE(group->buttons().size(), 5);
    for (int id = 0; id < 5; ++id) {
        QCOMPARE(group->button(id)->toolTip(), QString::fromUtf8(buttons[id].first));
        QCOMPARE(group->button(id)->shortcut().toString(), QString::fromLatin1(buttons[id].second));
    }
    QCOMPARE(m_page->counts(), (QStringList{"Address: 0", "Size: 0"}));
    QCOMPARE(child<QLabel>("labelAddress")->text(), QStringLiteral("Address: 0"));
    QVERIFY(!child<QLabel>("labelFile")->text().isEmpty() &&
            !child<QPushButton>("btnMode")->text().isEmpty());
    QVERIFY(!group->button(HexEditWidget::Undo)->isEnabled());
}

void TestHexEditPage::opensEditsAndSaves()
{
    QSignalSpy counts(m_page.get(), &HexEditWidget::signalRefresCounts);
    open(path("rom.bin"));
    QCOMPARE(shown(), QByteArray("0123456789"));
    QCOMPARE(child<QLabel>("labelSize")->text(), QStringLiteral("Size: 10"));
    QCOMPARE(counts.takeLast().at(0).toInt(), 4);
    QTest::keyClicks(edit(), "4142");
    QCOMPARE(m_page->counts(), (QStringList{"Address: 2", "Size: 10"}));
    tool(HexEditWidget::Undo);
    QCOMPARE(shown(), QByteArray("0123456789"));
    tool(HexEditWidget::Redo);
    tool(HexEditWidget::SaveFile);
    QCOMPARE(tip(), QStringLiteral("  文件已保存  "));
    QCOMPARE(content("rom.bin"), QByteArray("AB23456789"));
    QVERIFY(!QFile::exists(path("rom.bin.~tmp")));
    QVERIFY(!edit()->isModified());
    QVERIFY(m_questions.isEmpty());
    QCOMPARE(Settings::instance().recentFiles, QStringList{path("rom.bin")});
    Settings::load();
    QCOMPARE(Settings::instance().recentFiles, QStringList{path("rom.bin")});
    tool(HexEditWidget::CloseFile);
    QCOMPARE(m_page->counts(), (QStringList{"Address: 0", "Size: 0"}));
    QVERIFY(m_page->fileName().isEmpty());
    open(QString()); // cancelled
    QVERIFY(m_page->fileName().isEmpty());
}

void TestHexEditPage::cannotOpen()
{
    open(path("rom.bin"));
    for (const QString &name : {path("missing"), m_root->path(), QStringLiteral("/dev/zero")}) {
        QtMessageTip::showTip(QString());
        open(name);
        QCOMPARE(tip(), QStringLiteral("打开文件失败!"));
    }
    QCOMPARE(shown(), QByteArray("0123456789")); // the open file stays
    QCOMPARE(m_page->fileName(), path("rom.bin"));
    Settings::instance().recentFiles.append(path("missing"));
    open(path("missing"));
    QCOMPARE(Settings::instance().recentFiles, QStringList{path("rom.bin")});
    put("empty", QByteArray());
    open(path("empty"));
    QTest::keyClicks(edit(), "41");
    tool(HexEditWidget::SaveFile);
    QCOMPARE(content("empty"), QByteArray("A"));
}

void TestHexEditPage::savesNothingWithoutAFile()
{
    const QStringList before = QDir(m_root->path()).entryList(QDir::Files | QDir::Hidden);
    tool(HexEditWidget::SaveFile);
    QVERIFY(!tip().isEmpty());
    open(path("rom.bin"));
    tool(HexEditWidget::CloseFile);
    QtMessageTip::showTip(QString());
    tool(HexEditWidget::SaveFile);
    QVERIFY(!tip().isEmpty() && tip() != QStringLiteral("  文件已保存  "));
    QCOMPARE(content("rom.bin"), QByteArray("0123456789"));
    QCOMPARE(QDir(m_root->path()).entryList(QDir::Files | QDir::Hidden), before);
    QVERIFY(m_questions.isEmpty());
}

void TestHexEditPage::asksBeforeEditsAreLost()
{
    put("other.bin", "other");
    open(path("rom.bin"));
    QVERIFY(m_page->mayClose());
    QVERIFY(m_questions.isEmpty());
    QTest::keyClicks(edit(), "41");
    m_answer = 0;
    open(path("other.bin"));
    tool(HexEditWidget::CloseFile);
    QVERIFY(!m_page->mayClose());
    QCOMPARE(m_questions.size(), 3);
    QCOMPARE(shown(), QByteArray("A123456789"));
    m_answer = 1;
    QVERIFY(m_page->mayClose());
    open(path("other.bin"));
    QCOMPARE(shown(), QByteArray("other"));
    QCOMPARE(content("rom.bin"), QByteArray("0123456789"));
}

void TestHexEditPage::noticesAChangeOnDisk()
{
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    put("rom.bin", "another program");
    m_answer = 0;
    tool(HexEditWidget::SaveFile);
    QCOMPARE(m_questions.size(), 1);
    QCOMPARE(content("rom.bin"), QByteArray("another program"));
    m_answer = 1;
    tool(HexEditWidget::SaveFile);
    QCOMPARE(content("rom.bin"), QByteArray("A123456789"));
    m_questions.clear();
    QTest::keyClicks(edit(), "42");
    tool(HexEditWidget::SaveFile); // our own save is no other program's
    QVERIFY(m_questions.isEmpty());
    QVERIFY(QFile::remove(path("rom.bin")));
    tool(HexEditWidget::SaveFile); // nothing there to be lost
    QVERIFY(m_questions.isEmpty());
    QCOMPARE(content("rom.bin"), QByteArray("AB23456789"));
}

void TestHexEditPage::tellsWhenItCannotSave()
{
    const QString message = QStringLiteral("QHexEdit|Cannot write file %1.").arg(path("rom.bin"));
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    m_page->saver().freeBytes = [](const QString &) { return qint64(0); };
    tool(HexEditWidget::SaveFile);
    QCOMPARE(m_questions, QStringList{message});
    QCOMPARE(content("rom.bin"), QByteArray("0123456789"));
    QVERIFY(edit()->isModified() && !edit()->isReadOnly());
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(tip() != QStringLiteral("  文件已保存  "));

    m_page->saver().freeBytes = [](const QString &) { return qint64(1) << 40; };
    m_page->saver().copy = [](const QString &, const QString &) { return false; };
    m_questions.clear();
    tool(HexEditWidget::SaveFile);
    QCOMPARE(m_questions, QStringList{message});
    QCOMPARE(content("rom.bin.~tmp"), QByteArray("A123456789"));
    QVERIFY(edit()->isModified());

    // All is done but for the temporary file, which can't be removed.
    m_page->saver().copy = [](const QString &from, const QString &to) {
        return QFile::rename(from, to) && QDir().mkdir(from);
    };
    m_questions.clear();
    tool(HexEditWidget::SaveFile);
    QCOMPARE(m_questions, QStringList{message});
    QVERIFY(QDir().rmdir(path("rom.bin.~tmp")));
    m_questions.clear();
    tool(HexEditWidget::SaveFile); // nobody else has changed the file
    QCOMPARE(m_questions, QStringList{message});
    QCOMPARE(content("rom.bin"), QByteArray("A123456789"));
}

void TestHexEditPage::opensDroppedFiles()
{
    put("dropped.bin", "dropped");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path("dropped.bin"))});
    QDragEnterEvent enter({300, 200}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(m_page.get(), &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop({300, 200}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(m_page.get(), &drop);
    QTRY_COMPARE(m_page->fileName(), path("dropped.bin"));
    QCOMPARE(shown(), QByteArray("dropped"));
}

void TestHexEditPage::findsAndReplaces()
{
    put("text.bin", QByteArray("ab\xD6\xD0"
                               "ab\xE4\xB8\xAD"
                               "ab"));
    open(path("text.bin"));
    const auto find = [this](int kind, const QString &text, const char *button) {
        child<QComboBox>("comboFindKind")->setCurrentIndex(kind);
        child<QLineEdit>("editFind")->setText(text);
        click(button);
        return std::make_pair(edit()->selectionBegin(), edit()->selectionLength());
    };
    using Range = std::pair<qint64, qint64>;
    QCOMPARE(find(0, "61 62", "btnFindNext"), Range(0, 2));
    QCOMPARE(find(0, "61 62", "btnFindNext"), Range(4, 2));
    QCOMPARE(find(1, QStringLiteral("中"), "btnFindNext"), Range(6, 3));
    QCOMPARE(find(2, QStringLiteral("中"), "btnFindPrevious"), Range(2, 2));
    QCOMPARE(find(1, "ab", "btnFindPrevious"), Range(0, 2));
    QCOMPARE(find(1, "ab", "btnFindPrevious"), Range(9, 2)); // round the start
    QCOMPARE(find(0, "6", "btnFindNext"), Range(9, 2));      // no bytes
    QCOMPARE(find(1, "nowhere", "btnFindNext"), Range(9, 2));

    child<QLineEdit>("editReplace")->setText("long");
    QCOMPARE(find(1, "ab", "btnReplaceAll"), Range(9, 2)); // refused: overwriting moves nothing
    QVERIFY(!edit()->isModified());
    child<QLineEdit>("editReplace")->setText("XY");
    click("btnReplace");
    QCOMPARE(shown(), QByteArray("ab\xD6\xD0"
                                 "ab\xE4\xB8\xAD"
                                 "XY"));
    edit()->setOverwrite(false);
    child<QLineEdit>("editReplace")->setText("long");
    click("btnReplaceAll");
    QCOMPARE(shown(), QByteArray("long\xD6\xD0"
                                 "long\xE4\xB8\xAD"
                                 "XY"));
    tool(HexEditWidget::Undo);
    tool(HexEditWidget::Undo);
    QVERIFY(!edit()->isModified());
}

void TestHexEditPage::jumpsAndSums()
{
    put("sum.bin", "##123456789##");
    open(path("sum.bin"));
    child<QLineEdit>("editJumpAddress")->setText("0xB");
    click("btnJump");
    QCOMPARE(edit()->address(), qint64(11));
    QCOMPARE(child<QLabel>("inspect_uint8")->text(), QStringLiteral("35"));
    QCOMPARE(child<QLabel>("inspect_int32")->text(), QStringLiteral("-"));
    child<QLineEdit>("editJumpAddress")->setText("14");
    click("btnJump");
    QCOMPARE(edit()->address(), qint64(11));
    edit()->select(2, 9);
    click("btnChecksum");
    QCOMPARE(child<QLineEdit>("editCrc32")->text(), QStringLiteral("0xCBF43926"));
    QCOMPARE(child<QLineEdit>("editCrc16")->text(), QStringLiteral("0x4B37"));
    QTest::keyClicks(edit(), "00");
    QVERIFY(child<QLineEdit>("editCrc32")->text().isEmpty()); // of bytes that are gone
}

// What has been read is there at once; stopping brings back what was open.
void TestHexEditPage::showsWhatHasBeenRead()
{
    const qint64 size = qint64(200) << 20;
    QFile file(path("large.bin"));
    QVERIFY(file.open(QIODevice::ReadWrite) && file.write("begin") == 5 && file.resize(size));
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    open(path("large.bin"));
    QVERIFY(isWorking());
    QCOMPARE(edit()->document().read(0, 5), QByteArray("begin"));
    QVERIFY(edit()->size() < size);
    QTest::keyClicks(edit(), "42");
    tool(HexEditWidget::CloseFile); // not while it is being opened
    QCOMPARE(edit()->document().read(0, 5), QByteArray("begin"));
    click("btnStopWork");
    QCOMPARE(m_page->fileName(), path("rom.bin"));
    QCOMPARE(shown(), QByteArray("A123456789"));
    QVERIFY(edit()->isModified() && !edit()->isReadOnly());

    QtMessageTip::showTip(QString());
    open(path("large.bin"));
    QTRY_VERIFY_WITH_TIMEOUT(!isWorking(), 60000);
    QCOMPARE(edit()->size(), size);
    QCOMPARE(m_page->counts().at(1), QStringLiteral("Size: %1").arg(size));
    QVERIFY(tip().isEmpty() && !edit()->isModified() && !edit()->isReadOnly());
    open(path("large.bin"));
    QVERIFY(file.resize(3 << 20)); // by another program
    QTRY_VERIFY_WITH_TIMEOUT(!isWorking(), 60000);
    QVERIFY(edit()->size() < size && !tip().isEmpty());
}

void TestHexEditPage::stopsLongWork()
{
    QFile file(path("large.bin"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(qint64(100) << 20));
    open(path("large.bin"));
    QTRY_VERIFY_WITH_TIMEOUT(!isWorking(), 60000);
    click("btnChecksum");
    QTest::keyClicks(edit(), "41"); // the bytes keep still meanwhile
    click("btnStopWork");
    QVERIFY(!isWorking());
    QVERIFY(child<QLineEdit>("editCrc32")->text().isEmpty());
    QVERIFY(!edit()->isModified() && !edit()->isReadOnly());
}

QTEST_MAIN(TestHexEditPage)
#include "test_hexeditpage.moc"
