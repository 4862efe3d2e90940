// The page with real files: open, edit, save, close, quit, and what stands in the way.

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
    void asksBeforeEditsAreLost();
    void savesBeforeItEnds();
    void noticesAChangeOnDisk();
    void savesAsAnotherFile();
    void offersWhatAFailedSaveLeft();
    void tellsWhenItCannotSave();
    void opensDroppedFiles();
    void findsAndReplaces();
    void jumpsAndSums();
    void stopsOpening();
    void stopsLongWork();

private:
    template <class Widget> Widget *child(const char *name) const
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *name)
    {
        child<QAbstractButton>(name)->click();
        waitForWork();
    }
    // A busy machine takes more than one slice even for a small file.
    void waitForWork() { QTRY_VERIFY_WITH_TIMEOUT(!edit()->task()->isRunning(), 60000); }
    void tool(int id)
    {
        m_page->sltToolBtnsClicked(id);
        waitForWork();
    }
    QHexEdit *edit() const { return m_page->findChild<QHexEdit *>(); }
    QString path(const QString &name) const { return m_root->filePath(name); }
    void put(const QString &name, const QByteArray &bytes)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    void putLarge(const QString &name, qint64 megabytes)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.write("begin") == 5 && file.resize(megabytes << 20));
    }
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
    }
    QByteArray shown() const { return edit()->document().read(0, 1 << 20); }
    void beginOpening(const QString &name)
    {
        DialogAnswers::instance().fileNames = [name](auto, auto, auto, auto) {
            return name.isEmpty() ? QStringList() : QStringList(name);
        };
        m_page->sltToolBtnsClicked(HexEditWidget::OpenFile);
    }
    void open(const QString &name)
    {
        beginOpening(name);
        waitForWork();
    }
    // In the way of the temporary file of rom.bin.
    void setSavable(bool savable)
    {
        QVERIFY(savable ? QDir().rmdir(path("rom.bin.~tmp")) : QDir().mkdir(path("rom.bin.~tmp")));
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
    QVERIFY(!QApplication::overrideCursor());
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
    const auto enabled = [group] {
        QString ids;
        for (int id = 0; id < 5; ++id)
            ids += group->button(id)->isEnabled() ? QString::number(id) : QString();
        return ids;
    };
    for (int id = 0; id < 5; ++id) {
        QCOMPARE(group->button(id)->toolTip(), QString::fromUtf8(buttons[id].first));
        QCOMPARE(group->button(id)->shortcut().toString(), QString::fromLatin1(buttons[id].second));
    }
    QCOMPARE(m_page->counts(), (QStringList{"Address: 0", "Size: 0"}));
    QCOMPARE(child<QLabel>("labelAddress")->text(), QStringLiteral("Address: 0"));
    QVERIFY(!child<QLabel>("labelFile")->text().isEmpty());
    m_page->resize(1000, 430); // what the smallest usual window leaves
    QApplication::processEvents();
    for (const char *name : {"inspect_double", "comboByteOrder"})
        QCOMPARE(child<QWidget>(name)->visibleRegion().boundingRect(), child<QWidget>(name)->rect());

    // What is not possible is disabled, and its key says why.
    QCOMPARE(enabled(), QStringLiteral("0"));
    for (const int key : {Qt::Key_S, Qt::Key_Z, Qt::Key_W}) {
        QtMessageTip::showTip(QString());
        QTest::keyClick(edit(), Qt::Key(key), Qt::ControlModifier);
        QVERIFY2(!tip().isEmpty(), qPrintable(QString(QChar(key))));
    }
    open(path("rom.bin"));
    QCOMPARE(enabled(), QStringLiteral("014"));
    QTest::keyClicks(edit(), "41");
    QCOMPARE(enabled(), QStringLiteral("0124"));
    click("btnUndo");
    QCOMPARE(enabled(), QStringLiteral("0134"));
    QVERIFY(QTest::qWaitForWindowActive(m_page.get(), 30000));
    QTest::keyClick(m_page->windowHandle(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(shown(), QByteArray("A123456789"));
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
    QVERIFY(child<QLabel>("labelFile")->text().contains(QStringLiteral("未保存")));
    tool(HexEditWidget::Undo);
    QCOMPARE(shown(), QByteArray("0123456789"));
    tool(HexEditWidget::Redo);
    tool(HexEditWidget::SaveFile);
    QCOMPARE(tip(), QStringLiteral("  文件已保存  "));
    QCOMPARE(content("rom.bin"), QByteArray("AB23456789"));
    QVERIFY(!QFile::exists(path("rom.bin.~tmp")));
    QVERIFY(!edit()->isModified());
    QVERIFY(m_questions.isEmpty());
    Settings::load();
    QCOMPARE(Settings::instance().recentFiles, QStringList{path("rom.bin")});
    tool(HexEditWidget::CloseFile);
    QCOMPARE(m_page->counts(), (QStringList{"Address: 0", "Size: 0"}));
    QVERIFY(m_page->fileName().isEmpty());
    QTest::keyClicks(edit(), "41"); // into nothing
    tool(HexEditWidget::SaveFile);
    open(QString()); // cancelled
    QVERIFY(m_page->fileName().isEmpty() && edit()->size() == 0);
}

void TestHexEditPage::cannotOpen()
{
    open(path("rom.bin"));
    open(path("missing"));
    QCOMPARE(tip(), QStringLiteral("打开文件失败! 文件不存在"));
    QCOMPARE(shown(), QByteArray("0123456789")); // the open file stays
    QCOMPARE(m_page->fileName(), path("rom.bin"));
    Settings::instance().recentFiles.set({path("rom.bin"), path("missing")});
    open(path("missing"));
    QCOMPARE(Settings::instance().recentFiles, QStringList{path("rom.bin")});
}

void TestHexEditPage::asksBeforeEditsAreLost()
{
    put("other.bin", "other");
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    m_answer = QtMessageBox::Cancel;
    open(path("other.bin"));
    tool(HexEditWidget::CloseFile);
    QCOMPARE(m_questions.size(), 2);
    QCOMPARE(shown(), QByteArray("A123456789"));
    m_answer = QtMessageBox::Save;
    setSavable(false);
    open(path("other.bin"));
    QCOMPARE(shown(), QByteArray("A123456789")); // what could not be saved stays
    setSavable(true);
    open(path("other.bin"));
    QCOMPARE(shown(), QByteArray("other"));
    QCOMPARE(content("rom.bin"), QByteArray("A123456789"));
    QTest::keyClicks(edit(), "41");
    m_answer = QtMessageBox::Discard;
    tool(HexEditWidget::CloseFile);
    QCOMPARE(edit()->size(), qint64(0));
    QCOMPARE(content("other.bin"), QByteArray("other"));
}

void TestHexEditPage::savesBeforeItEnds()
{
    open(path("rom.bin"));
    QVERIFY(m_page->mayClose() && m_questions.isEmpty());
    QTest::keyClicks(edit(), "41");
    m_answer = QtMessageBox::Cancel;
    QVERIFY(!m_page->mayClose());
    QVERIFY(!m_page->saveBeforeExit() && edit()->isModified());
    m_answer = QtMessageBox::Discard;
    QVERIFY(m_page->mayClose());
    m_page->closeLinks();
    QVERIFY(m_page->isClosed() && m_page->saveBeforeExit());
    QCOMPARE(content("rom.bin"), QByteArray("0123456789"));

    m_answer = QtMessageBox::Save;
    QVERIFY(m_page->mayClose());
    QCOMPARE(content("rom.bin"), QByteArray("0123456789")); // asking changes nothing
    setSavable(false);
    m_questions.clear();
    m_page->closeLinks();
    QVERIFY(!m_page->saveBeforeExit() && edit()->isModified()); // what could not be saved stays
    QCOMPARE(m_questions.size(), 1);                            // the failure, told once
    setSavable(true);
    QVERIFY(m_page->mayClose()); // at a log-off
    QVERIFY(m_page->saveBeforeExit());
    QCOMPARE(content("rom.bin"), QByteArray("A123456789"));
    QTest::keyClicks(edit(), "42"); // it was cancelled by another program, and then it comes
    m_page->closeLinks();
    QVERIFY(m_page->saveBeforeExit());
    QCOMPARE(content("rom.bin"), QByteArray("AB23456789"));
    QTest::keyClicks(edit(), "43");
    QSignalSpy closed(m_page.get(), &QtWidgetBase::signalClosed);
    m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
    QVERIFY(m_page->mayClose()); // perhaps while it is being saved
    QTRY_VERIFY_WITH_TIMEOUT(m_page->isClosed(), 30000);
    QVERIFY(closed.size() == 1 && m_page->saveBeforeExit());
    QCOMPARE(content("rom.bin"), QByteArray("ABC3456789"));
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
    QCOMPARE(shown(), QByteArray("another program"));
    QCOMPARE(edit()->address(), qint64(3));
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
    QVERIFY(QFile::remove(path("rom.bin")));
    QTRY_VERIFY_WITH_TIMEOUT(bar()->isVisible(), 30000);
    QVERIFY(edit()->isModified()); // these are the only bytes left
    tool(HexEditWidget::SaveFile);
    QVERIFY(m_questions.size() == 2 && bar()->isHidden());
    QCOMPARE(content("rom.bin"), QByteArray("another program"));
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
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    saveAs(QString());
    saveAs(path("missing/new.bin"));
    QCOMPARE(m_questions.size(), 1);
    QVERIFY(m_questions.takeFirst().contains("missing") && edit()->isModified());
    saveAs(path("new.bin"));
    QCOMPARE(content("new.bin"), QByteArray("A123456789"));
    QCOMPARE(content("rom.bin"), QByteArray("0123456789"));
    QCOMPARE(m_page->fileName(), path("new.bin"));
    QVERIFY(!edit()->isModified());
    QCOMPARE(Settings::instance().recentFiles.value().value(0), path("new.bin"));
    put("new.bin", "another program's");
    m_answer = 0;
    saveAs(path("new.bin")); // is saving, which asks
    QCOMPARE(m_questions.size(), 1);
    QCOMPARE(content("new.bin"), QByteArray("another program's"));
}

// After a copy that failed, opening the file again finds its bytes.
void TestHexEditPage::offersWhatAFailedSaveLeft()
{
    QVERIFY(QFile::remove(path("rom.bin")));
    put("rom.bin.~tmp", "new bytes");
    put("rom.bin.~bak", "older");
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
    QCOMPARE(shown(), QByteArray("new bytes"));
    QCOMPARE(m_page->fileName(), path("rom.bin"));
    QVERIFY(edit()->isModified());
    tool(HexEditWidget::SaveFile);
    QCOMPARE(content("rom.bin"), QByteArray("new bytes"));
    QVERIFY(!QFile::exists(path("rom.bin.~tmp")) && !edit()->isModified());
}

void TestHexEditPage::tellsWhenItCannotSave()
{
    QSignalSpy notices(m_page.get(), &HexEditWidget::signalNotify);
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    setSavable(false);
    tool(HexEditWidget::SaveFile);
    // One box that begins with the message, goes on with reason and consequence, and stays as a notice.
    const QString message =
        QStringLiteral("QHexEdit|Cannot write file %1.\n").arg(QDir::toNativeSeparators(path("rom.bin")));
    QVERIFY(m_questions.size() == 1 && m_questions.first().startsWith(message));
    for (const QString &text : {m_questions.first(), notices.value(0).value(0).toString()}) {
        QVERIFY2(text.contains(QStringLiteral("临时文件的名称已被占用")), qPrintable(text));
        QVERIFY2(text.contains(QStringLiteral("原文件未改动")), qPrintable(text));
    }
    QVERIFY(edit()->isModified() && !edit()->isReadOnly());
    QVERIFY(tip() != QStringLiteral("  文件已保存  "));
    setSavable(true);
    tool(HexEditWidget::SaveFile);
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
void TestHexEditPage::stopsOpening()
{
    constexpr qint64 megabytes = 300;
    putLarge("large.bin", megabytes);
    open(path("rom.bin"));
    QTest::keyClicks(edit(), "41");
    m_answer = QtMessageBox::Discard;
    beginOpening(path("large.bin"));
    QVERIFY(edit()->task()->isRunning() && !child<QWidget>("btnStopWork")->isHidden());
    QCOMPARE(edit()->document().read(0, 5), QByteArray("begin"));
    QVERIFY(edit()->size() < megabytes << 20);
    QTest::keyClicks(edit(), "42");
    m_page->sltToolBtnsClicked(HexEditWidget::CloseFile); // not while it is being opened
    m_page->openFile(path("rom.bin"));
    QCOMPARE(edit()->document().read(0, 5), QByteArray("begin"));
    click("btnStopWork");
    QCOMPARE(m_page->fileName(), path("rom.bin"));
    QCOMPARE(shown(), QByteArray("A123456789"));
    QVERIFY(edit()->isModified() && !edit()->isReadOnly() && child<QWidget>("btnStopWork")->isHidden());

    QtMessageTip::showTip(QString());
    open(path("large.bin"));
    QCOMPARE(m_page->counts().at(1), QStringLiteral("Size: %1").arg(megabytes << 20));
    QVERIFY(tip().isEmpty() && !edit()->isModified() && !edit()->isReadOnly());
    beginOpening(path("large.bin"));
    QVERIFY(m_page->mayClose()); // ending in the middle of it loses nothing
    m_page.reset();
}

void TestHexEditPage::stopsLongWork()
{
    putLarge("large.bin", 200);
    open(path("large.bin"));
    auto *checksum = child<QPushButton>("btnChecksum");
    checksum->setFocus();
    checksum->click();
    const QStringList names{"btnOpenFile", "btnSaveFile",   "btnSaveAs",  "btnFindNext",
                            "btnReplace",  "btnReplaceAll", "btnChecksum"};
    for (const QString &name : names)
        QVERIFY2(!m_page->findChild<QPushButton *>(name)->isEnabled(), qPrintable(name));
    // Nothing is ignored in silence, and the bytes keep still.
    const std::pair<int, Qt::KeyboardModifiers> keys[] = {
        {Qt::Key_S, Qt::ControlModifier}, {Qt::Key_V, Qt::ControlModifier}, {Qt::Key_4, Qt::NoModifier}};
    for (const auto &[key, modifiers] : keys) {
        QtMessageTip::showTip(QString());
        QTest::keyClick(edit(), Qt::Key(key), modifiers);
        QVERIFY2(tip().contains(QStringLiteral("正在计算校验")), qPrintable(QString(QChar(key))));
    }
    click("btnStopWork");
    for (const QString &name : names.mid(0, 4))
        QVERIFY2(m_page->findChild<QPushButton *>(name)->isEnabled(), qPrintable(name));
    QCOMPARE(m_page->focusWidget(), checksum);
    QVERIFY(child<QLineEdit>("editCrc32")->text().isEmpty());
    QVERIFY(!edit()->isModified() && !edit()->isReadOnly());

    // Saving as well: the file stays what it was.
    QTest::keyClicks(edit(), "41");
    m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
    QVERIFY(edit()->task()->isRunning());
    click("btnStopWork");
    QVERIFY(edit()->isModified() && tip().contains(QStringLiteral("原文件未改动")));
    QCOMPARE(content("large.bin").left(5), QByteArray("begin"));
}

QTEST_MAIN(TestHexEditPage)
#include "test_hexeditpage.moc"
