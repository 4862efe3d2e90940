// The page with real files: open, edit, save, close, and what stands in the way.

#include "apppaths.h"
#include "dialoganswers.h"
#include "hexeditwidget.h"
#include "korvexresources.h"
#include "qhexedit.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "settings.h"

#include <QButtonGroup>
#include <QClipboard>
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
    void savesAsAnotherFile();
    void offersWhatAFailedSaveLeft();
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
    m_page->resize(1000, 430); // what the smallest usual window leaves
    QApplication::processEvents();
    for (const char *name : {"inspect_double", "comboByteOrder"})
        QCOMPARE(child<QWidget>(name)->visibleRegion().boundingRect(), child<QWidget>(name)->rect());
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
    const QString missing = QStringLiteral("文件不存在");
    const QString strange = QStringLiteral("不是普通文件");
    const QMap<QString, QString> reasons{
        {path("missing"), missing}, {m_root->path(), strange}, {QStringLiteral("/dev/zero"), strange}};
    for (const QString &name : reasons.keys()) {
        QtMessageTip::showTip(QString());
        open(name);
        QCOMPARE(tip(), QStringLiteral("打开文件失败! ") + reasons.value(name));
    }
    QCOMPARE(shown(), QByteArray("0123456789")); // the open file stays
    QCOMPARE(m_page->fileName(), path("rom.bin"));
    Settings::instance().recentFiles.set({path("rom.bin"), path("missing")});
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
    m_answer = QtMessageBox::Cancel;
    open(path("other.bin"));
    tool(HexEditWidget::CloseFile);
    QVERIFY(!m_page->mayClose());
    QCOMPARE(m_questions.size(), 3);
    QCOMPARE(shown(), QByteArray("A123456789"));
    m_answer = QtMessageBox::Discard;
    QVERIFY(m_page->mayClose() && m_page->saveBeforeExit());
    QCOMPARE(content("rom.bin"), QByteArray("0123456789"));
    m_answer = QtMessageBox::Save;
    open(path("other.bin"));
    QCOMPARE(shown(), QByteArray("other"));
    QCOMPARE(content("rom.bin"), QByteArray("A123456789"));
    QTest::keyClicks(edit(), "41");
    m_questions.clear();
    QVERIFY(m_page->mayClose());
    QCOMPARE(content("other.bin"), QByteArray("other")); // asking changes nothing
    m_page->saver().freeBytes = [](const QString &) { return qint64(0); };
    QVERIFY(!m_page->saveBeforeExit()); // what could not be saved stays
    QVERIFY(edit()->isModified());
    m_page->saver().freeBytes = [](const QString &) { return qint64(1) << 40; };
    QVERIFY(m_page->saveBeforeExit());
    QCOMPARE(content("other.bin"), QByteArray("Ather"));
    QCOMPARE(m_questions.size(), 2); // the question and the failure
}

// At once, without a question that another one may stand in front of.
void TestHexEditPage::noticesAChangeOnDisk()
{
    const auto bar = [this] { return child<QWidget>("hexChangeBar"); };
    open(path("rom.bin"));
    edit()->goTo(3);
    QVERIFY(bar()->isHidden());
    put("rom.bin", "another program");
    QTRY_VERIFY_WITH_TIMEOUT(bar()->isVisible(), 30000);
    click("btnReload");
    QTRY_COMPARE(shown(), QByteArray("another program"));
    QTRY_COMPARE(edit()->address(), qint64(3)); // when all is read
    QVERIFY(bar()->isHidden() && !edit()->isModified());

    put("rom.bin", "again");
    QTRY_VERIFY_WITH_TIMEOUT(bar()->isVisible(), 30000);
    click("btnKeepOurs");
    QVERIFY(bar()->isHidden() && edit()->isModified());
    m_answer = 0;
    tool(HexEditWidget::SaveFile);
    QCOMPARE(m_questions.size(), 1);
    QCOMPARE(content("rom.bin"), QByteArray("again"));
    m_answer = 1;
    tool(HexEditWidget::SaveFile);
    QCOMPARE(content("rom.bin"), QByteArray("another program"));
    m_questions.clear();
    edit()->goTo(0);
    QTest::keyClicks(edit(), "42");
    tool(HexEditWidget::SaveFile); // our own save is no other program's
    QVERIFY(QFile::remove(path("rom.bin")));
    QTRY_VERIFY_WITH_TIMEOUT(bar()->isVisible(), 30000);
    QVERIFY(edit()->isModified()); // these are the only bytes left
    tool(HexEditWidget::SaveFile);
    QVERIFY(m_questions.isEmpty() && bar()->isHidden());
    QCOMPARE(content("rom.bin"), QByteArray("Bnother program"));
}

void TestHexEditPage::savesAsAnotherFile()
{
    const auto saveAs = [this](const QString &name) {
        DialogAnswers::instance().fileNames = [=](DialogAnswers::FileMode mode, auto, const QString &proposed,
                                                  auto) {
            return mode == DialogAnswers::FileMode::Save && proposed == m_page->fileName() ? QStringList(name)
                                                                                           : QStringList();
        };
        click("btnSaveAs");
    };
    saveAs(path("new.bin"));
    QVERIFY(!QFile::exists(path("new.bin"))); // nothing is open
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    saveAs(QString());
    saveAs(path("missing/new.bin"));
    QCOMPARE(m_questions.size(), 1);
    QVERIFY(m_questions.takeFirst().contains("missing") && edit()->isModified());
    put("new.bin.~tmp", "of a save that failed");
    saveAs(path("new.bin"));
    QCOMPARE(content("new.bin.~bak"), QByteArray("of a save that failed"));
    QCOMPARE(content("new.bin"), QByteArray("A123456789"));
    QCOMPARE(content("rom.bin"), QByteArray("0123456789"));
    QCOMPARE(m_page->fileName(), path("new.bin"));
    QVERIFY(!edit()->isModified());
    QTest::keyClicks(edit(), "42");
    tool(HexEditWidget::SaveFile);
    QCOMPARE(content("new.bin"), QByteArray("AB23456789"));
}

// After a copy that failed, opening the file again finds its bytes.
void TestHexEditPage::offersWhatAFailedSaveLeft()
{
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    m_page->saver().copy = [](const QString &, const QString &) { return false; };
    tool(HexEditWidget::SaveFile);
    m_page = std::make_unique<HexEditWidget>();
    m_page->show();
    put("rom.bin.~bak", "older");
    m_questions.clear();
    m_answer = 0;
    open(path("rom.bin"));
    QVERIFY(m_page->fileName().isEmpty());
    QCOMPARE(m_questions.size(), 2); // both files
    QVERIFY(m_questions.first().contains(path("rom.bin.~tmp")));
    open(path("rom.bin"));
    QCOMPARE(m_questions.size(), 2); // once is enough
    m_page = std::make_unique<HexEditWidget>();
    m_page->show();
    m_answer = 1;
    open(path("rom.bin"));
    QCOMPARE(shown(), QByteArray("A123456789"));
    QCOMPARE(m_page->fileName(), path("rom.bin"));
    QVERIFY(edit()->isModified());
    tool(HexEditWidget::SaveFile);
    QCOMPARE(content("rom.bin"), QByteArray("A123456789"));
    QVERIFY(!QFile::exists(path("rom.bin.~tmp")) && !edit()->isModified());
}

void TestHexEditPage::tellsWhenItCannotSave()
{
    const QString message =
        QStringLiteral("QHexEdit|Cannot write file %1.\n").arg(QDir::toNativeSeparators(path("rom.bin")));
    QSignalSpy notices(m_page.get(), &HexEditWidget::signalNotify);
    // One box that begins with the message, goes on with all of that, and stays as a notice.
    const auto told = [&](const QString &consequence) {
        const QString box = m_questions.value(0);
        m_questions.clear();
        return box.startsWith(message) && box.contains(consequence) && notices.size() == 1 &&
               notices.takeFirst().at(0).toString().contains(consequence);
    };
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    m_page->saver().freeBytes = [](const QString &) { return qint64(0); };
    tool(HexEditWidget::SaveFile);
    QVERIFY(told(QStringLiteral("磁盘空间不足")));
    QCOMPARE(content("rom.bin"), QByteArray("0123456789"));
    QVERIFY(edit()->isModified() && !edit()->isReadOnly());
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(tip() != QStringLiteral("  文件已保存  "));

    m_page->saver().freeBytes = [](const QString &) { return qint64(1) << 40; };
    m_page->saver().copy = [](const QString &, const QString &) { return false; };
    tool(HexEditWidget::SaveFile);
    QVERIFY(told(path("rom.bin.~tmp")));
    QCOMPARE(content("rom.bin.~tmp"), QByteArray("A123456789"));
    QVERIFY(edit()->isModified());

    // All is done but for the temporary file, which can't be removed.
    m_page->saver().copy = [](const QString &from, const QString &to) {
        return QFile::rename(from, to) && QDir().mkdir(from);
    };
    tool(HexEditWidget::SaveFile);
    QVERIFY(told(path("rom.bin.~tmp")));
    QVERIFY(QDir().rmdir(path("rom.bin.~tmp")));
    tool(HexEditWidget::SaveFile); // no other program has changed the file
    QVERIFY(told(path("rom.bin.~tmp")));
    QCOMPARE(content("rom.bin"), QByteArray("A123456789"));
}

// As a copy: a source whose file was moved deletes it.
void TestHexEditPage::opensDroppedFiles()
{
    put("dropped.bin", "dropped");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path("dropped.bin"))});
    QDragEnterEvent moveOnly({300, 200}, Qt::MoveAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(m_page.get(), &moveOnly);
    QVERIFY(!moveOnly.isAccepted());
    const Qt::DropActions all = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    QDragEnterEvent enter({300, 200}, all, &data, Qt::LeftButton, Qt::ShiftModifier);
    QDragMoveEvent move({300, 200}, all, &data, Qt::LeftButton, Qt::ShiftModifier);
    QDropEvent drop({300, 200}, all, &data, Qt::LeftButton, Qt::ShiftModifier);
    for (QDropEvent *event : std::initializer_list<QDropEvent *>{&enter, &move, &drop}) {
        event->setDropAction(Qt::MoveAction);
        event->ignore();
        QApplication::sendEvent(m_page.get(), event);
        QVERIFY(event->isAccepted());
        QCOMPARE(event->dropAction(), Qt::CopyAction);
    }
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

    // A part of a long pattern would be another pattern.
    QtMessageTip::showTip(QString());
    QCOMPARE(find(0, QStringLiteral("61").repeated(4001), "btnFindNext"), Range(9, 2));
    QVERIFY(tip().contains("4001"));
    child<QLineEdit>("editFind")->setText("61");
    QApplication::clipboard()->setText(QString(20001, '6'));
    child<QLineEdit>("editFind")->paste();
    QTRY_COMPARE(child<QLineEdit>("editFind")->text(), QStringLiteral("61"));
    child<QLineEdit>("editFind")->setFocus();
    QTest::keyClick(child<QLineEdit>("editFind"), Qt::Key_Escape);
    QCOMPARE(m_page->focusWidget(), edit());

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
    m_answer = QtMessageBox::Discard;
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
    for (const char *name : {"btnSaveFile", "btnSaveAs", "btnFindNext", "btnChecksum"}) {
        QtMessageTip::showTip(QString());
        click(name);
        QVERIFY2(!tip().isEmpty(), name); // nothing is refused in silence
    }
    click("btnStopWork");
    QVERIFY(!isWorking());
    QVERIFY(child<QLineEdit>("editCrc32")->text().isEmpty());
    QVERIFY(!edit()->isModified() && !edit()->isReadOnly());
}

QTEST_MAIN(TestHexEditPage)
#include "test_hexeditpage.moc"
