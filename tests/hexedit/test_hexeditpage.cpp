// The page with real files: open, edit, save, close, quit, and what stands in the way.

#include "dialoganswers.h"
#include "freshfolder.h"
#include "hexeditwidget.h"
#include "korvexresources.h"
#include "qhexedit.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "testfiles.h"

#include <QtTest>
#include <QtWidgets>

class TestHexEditPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void init()
    {
        m_root = std::make_unique<FreshFolder>();
        m_questions.clear();
        m_answer = 1;
        DialogAnswers::instance().message = [this](const QString &title, const QString &text, int) {
            m_questions.append(title + '|' + text);
            return m_answer;
        };
        makePage();
        put("rom.bin", "0123456789");
        QtMessageTip::showTip(QString());
    }

    void cleanup()
    {
        m_page.reset();
        QVERIFY(!QApplication::overrideCursor());
        DialogAnswers::instance() = DialogAnswers();
    }

    // A key of what is not possible says why.
    void enablesWhatIsPossible()
    {
        auto *group = m_page->findChild<QButtonGroup *>();
        const auto enabled = [group] {
            QString ids;
            for (int id = 0; id < 5; ++id)
                ids += group->button(id)->isEnabled() ? QString::number(id) : QString();
            return ids;
        };
        for (const int key : {Qt::Key_S, Qt::Key_Z, Qt::Key_W}) {
            QtMessageTip::showTip(QString());
            QTest::keyClick(edit(), Qt::Key(key), Qt::ControlModifier);
            QVERIFY2(!tip().isEmpty(), qPrintable(QString(QChar(key))));
        }
        for (const char *field : {"editReplace", "editJumpAddress"}) {
            QtMessageTip::showTip(QString());
            QTest::keyClick(child<QLineEdit>(field), Qt::Key_S, Qt::ControlModifier);
            QVERIFY2(!tip().isEmpty(), field);
        }
        child<QWidget>("editReplace")->setFocus();
        open("rom.bin");
        QCOMPARE(m_page->focusWidget(), edit());
        QCOMPARE(enabled(), QString("014"));
        type("41");
        QCOMPARE(enabled(), QString("0124"));
        click("btnUndo");
        QCOMPARE(enabled(), QString("0134"));
        QVERIFY(QTest::qWaitForWindowActive(m_page.get(), 30000));
        QTest::keyClick(m_page->windowHandle(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(shown(), QByteArray("A123456789"));

        m_page->resize(1000, 430); // what the smallest usual window leaves
        QApplication::processEvents();
        for (const char *name : {"inspect_double", "comboByteOrder"})
            QCOMPARE(child<QWidget>(name)->visibleRegion().boundingRect(), child<QWidget>(name)->rect());
    }

    void opensEditsAndSaves()
    {
        QSignalSpy counts(m_page.get(), &HexEditWidget::signalRefresCounts);
        open("rom.bin");
        QCOMPARE(shown(), QByteArray("0123456789"));
        QCOMPARE(text("labelSize"), QString("Size: 10"));
        QCOMPARE(Settings::instance().recentFiles.value(), QStringList{path("rom.bin")});
        QCOMPARE(counts.takeLast().at(0).toInt(), 4);
        counts.clear();
        type("4142");
        QCOMPARE(counts.size(), 2);
        QCOMPARE(m_page->counts(), (QStringList{"Address: 2", "Size: 10"}));
        QCOMPARE(text("labelAddress"), QString("Address: 2"));
        QVERIFY(text("labelFile").contains("未保存"));
        tool(HexEditWidget::Undo);
        QCOMPARE(shown(), QByteArray("0123456789"));
        tool(HexEditWidget::Redo);
        edit()->setOverwrite(false);
        counts.clear();
        QTest::keyClick(edit(), Qt::Key_Delete); // changes the size and no address
        QCOMPARE(counts.size(), 1);
        tool(HexEditWidget::Undo);
        tool(HexEditWidget::SaveFile);
        QCOMPARE(tip(), QString("  文件已保存  "));
        QCOMPARE(content("rom.bin"), QByteArray("AB23456789"));
        QVERIFY(!QFile::exists(path("rom.bin.~tmp")) && !edit()->isModified() && m_questions.isEmpty());
        Settings::load();
        QCOMPARE(Settings::instance().recentFiles, QStringList{path("rom.bin")});
        open("missing");
        QCOMPARE(tip(), QString("打开文件失败! 文件不存在"));
        const auto recent = [this] {
            QMenu *menu = child<QPushButton>("btnRecent")->menu();
            emit menu->aboutToShow();
            return menu->actions();
        };
        Settings::instance().recentFiles.set({path("rom.bin"), path("missing&")});
        QCOMPARE(recent().size(), 4); // below the one for a new file
        QCOMPARE(recent().last()->text(), QString("missing&&"));
        QCOMPARE(recent().last()->toolTip(), QDir::toNativeSeparators(path("missing&")));
        recent().last()->trigger();
        QCOMPARE(tip(), QString("打开文件失败! 文件已不存在，不再列入最近打开"));
        QVERIFY(shown() == "AB23456789" && m_page->fileName() == path("rom.bin")); // stays
        QCOMPARE(Settings::instance().recentFiles, QStringList{path("rom.bin")});
        Settings::instance().recentFiles.set({});
        QVERIFY(recent().size() == 3 && !recent().last()->isEnabled());
        tool(HexEditWidget::CloseFile);
        QCOMPARE(m_page->counts(), (QStringList{"Address: 0", "Size: 0"}));
        type("41"); // into nothing
        tool(HexEditWidget::SaveFile);
        beginOpening(QString()); // canceled
        QVERIFY(m_page->fileName().isEmpty() && edit()->size() == 0);
        const QImage hint = edit()->grab().toImage();
        edit()->setPlaceholderText(QString());
        QVERIFY(edit()->grab().toImage() != hint);
    }

    void asksBeforeEditsAreLost()
    {
        put("other.bin", "other");
        open("rom.bin");
        type("41");
        m_answer = QtMessageBox::Cancel;
        open("other.bin");
        tool(HexEditWidget::CloseFile);
        QCOMPARE(m_questions.size(), 2);
        QVERIFY(m_questions.last().contains("rom.bin"));
        m_answer = QtMessageBox::Save;
        setSavable(false);
        open("other.bin");
        QCOMPARE(shown(), QByteArray("A123456789")); // what could not be saved stays
        setSavable(true);
        open("other.bin");
        QCOMPARE(shown(), QByteArray("other"));
        QCOMPARE(content("rom.bin"), QByteArray("A123456789"));
        type("41");
        m_answer = QtMessageBox::Discard;
        tool(HexEditWidget::CloseFile);
        QCOMPARE(edit()->size(), qint64(0));
        QCOMPARE(content("other.bin"), QByteArray("other"));
    }

    void savesBeforeItEnds()
    {
        open("rom.bin");
        QVERIFY(m_page->mayClose() && m_questions.isEmpty());
        type("41");
        m_answer = QtMessageBox::Cancel;
        QVERIFY(!m_page->mayClose() && !m_page->saveBeforeExit() && edit()->isModified());
        m_answer = QtMessageBox::Discard;
        QVERIFY(m_page->mayClose());
        m_page->closeLinks();
        QVERIFY(m_page->isClosed() && m_page->saveBeforeExit());
        m_answer = QtMessageBox::Save;
        QVERIFY(m_page->mayClose());
        QCOMPARE(content("rom.bin"), QByteArray("0123456789")); // neither discarding nor asking changes it
        setSavable(false);
        m_questions.clear();
        QSignalSpy notices(m_page.get(), &HexEditWidget::signalNotify);
        m_page->closeLinks();
        QVERIFY(!m_page->saveBeforeExit() && edit()->isModified()); // what could not be saved stays
        QCOMPARE(m_questions.size(), 1);                            // the failure, told once
        const QString name = QDir::toNativeSeparators(path("rom.bin"));
        QVERIFY(m_questions.first().startsWith(QString("QHexEdit|Cannot write file %1.\n").arg(name)));
        for (const QString &told : {m_questions.first(), notices.value(0).value(0).toString()})
            QVERIFY(told.contains("临时文件的名称已被占用") && told.contains("原文件未改动"));
        setSavable(true);
        QVERIFY(m_page->mayClose() && m_page->saveBeforeExit()); // at a log-off
        QCOMPARE(content("rom.bin"), QByteArray("A123456789"));
        type("42"); // another program has canceled it, and then it comes
        m_page->closeLinks();
        QTRY_COMPARE_WITH_TIMEOUT(content("rom.bin"), QByteArray("AB23456789"), 30000);
        QVERIFY(m_page->saveBeforeExit());
        type("43");
        QSignalSpy closed(m_page.get(), &QtWidgetBase::signalClosed);
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        QVERIFY(m_page->mayClose()); // perhaps while it is being saved
        QTRY_VERIFY_WITH_TIMEOUT(m_page->isClosed(), 30000);
        QVERIFY(closed.size() == 1 && m_page->saveBeforeExit());
        QCOMPARE(content("rom.bin"), QByteArray("ABC3456789"));
        QCOMPARE(notices.size(), 1);
    }

    // At once, without a question that another one may stand in front of.
    void noticesAChangeOnDisk()
    {
        const auto bar = [this] { return child<QWidget>("hexChangeBar"); };
        const auto text = [&] { return bar()->findChild<QLabel *>()->text(); };
        open("rom.bin");
        edit()->goTo(1);
        put("rom.bin", "another program");
        QTRY_VERIFY_WITH_TIMEOUT(bar()->isVisible(), 30000);
        QVERIFY(!text().contains("丢失"));
        click("btnReload");
        QCOMPARE(shown(), QByteArray("another program"));
        QVERIFY(edit()->address() == 1 && bar()->isHidden() && !edit()->isModified());

        type("41");
        QApplication::setActiveWindow(m_page.get());
        put("rom.bin", "again");
        QEvent activation(QEvent::ActivationChange); // finds it before the system reports it
        QApplication::sendEvent(m_page.get(), &activation);
        QVERIFY(bar()->isVisible() && text().contains("将丢失未保存的修改"));
        click("btnKeepOurs");
        QVERIFY(bar()->isHidden() && edit()->isModified());
        for (const char *expected : {"again", "aAother program"}) { // refused, then agreed to
            m_answer = m_questions.size();
            tool(HexEditWidget::SaveFile);
            QCOMPARE(content("rom.bin"), QByteArray(expected));
        }
        QVERIFY(QFile::rename(path("rom.bin"), path("away")));
        QTRY_VERIFY_WITH_TIMEOUT(bar()->isVisible() && child<QWidget>("btnReload")->isHidden(), 30000);
        QVERIFY(edit()->isModified()); // these may be the only bytes left
        QVERIFY(QFile::rename(path("away"), path("rom.bin")));
        QTRY_VERIFY_WITH_TIMEOUT(bar()->isHidden(), 30000);
        QVERIFY(QFile::remove(path("rom.bin")));
        QTRY_VERIFY_WITH_TIMEOUT(bar()->isVisible(), 30000);
        tool(HexEditWidget::SaveFile);
        QVERIFY(m_questions.size() == 2 && bar()->isHidden());
        QCOMPARE(content("rom.bin"), QByteArray("aAother program"));
    }

    void savesAsAnotherFile()
    {
        const auto saveAs = [this](const QString &name) {
            DialogAnswers::instance().fileNames = [=](auto mode, auto, const QString &proposed, auto) {
                const bool isRight = mode == DialogAnswers::FileMode::Save &&
                                     proposed == m_page->fileName() && !name.isEmpty();
                return isRight ? QStringList(path(name)) : QStringList();
            };
            click("btnSaveAs");
        };
        open("rom.bin");
        type("41");
        saveAs(QString());
        saveAs("missing/new.bin");
        QVERIFY(m_questions.takeFirst().contains("missing") && m_questions.isEmpty() && edit()->isModified());
        saveAs("new.bin");
        QCOMPARE(content("new.bin"), QByteArray("A123456789"));
        QCOMPARE(content("rom.bin"), QByteArray("0123456789"));
        QVERIFY(m_page->fileName() == path("new.bin") && !edit()->isModified());
        QCOMPARE(Settings::instance().recentFiles.value().value(0), path("new.bin"));
        put("new.bin", "another program's");
        m_answer = 0;
        saveAs("new.bin"); // is saving, which asks
        QCOMPARE(m_questions.size(), 1);
        QCOMPARE(content("new.bin"), QByteArray("another program's"));
    }

    // After a copy that failed, opening the file again finds its bytes.
    void offersWhatAFailedSaveLeft()
    {
        QVERIFY(QFile::remove(path("rom.bin")));
        put("rom.bin.~tmp", "new bytes");
        put("rom.bin.~bak", "oldest");
        put("rom.bin.~bak1", "older");
        m_answer = 0;
        open("rom.bin");
        open("rom.bin");
        QVERIFY(m_page->fileName().isEmpty());
        QCOMPARE(m_questions.size(), 2); // one for each file, once
        QVERIFY(m_questions.first().contains(path("rom.bin.~tmp")));
        QVERIFY(m_questions.last().contains(path("rom.bin.~bak1"))); // the newest of these
        const auto saved = [this] { return QFileInfo(path("rom.bin.~tmp")).lastModified(); };
        const QDateTime before = saved();
        QTRY_VERIFY((put("rom.bin.~tmp", "new bytes"), saved() > before)); // another one
        open("rom.bin");
        QCOMPARE(m_questions.size(), 3);
        makePage();
        m_answer = 1;
        open("rom.bin");
        QCOMPARE(shown(), QByteArray("new bytes"));
        QVERIFY(m_page->fileName() == path("rom.bin") && edit()->isModified() &&
                tip().contains("保存后写入"));
        tool(HexEditWidget::SaveFile);
        QCOMPARE(content("rom.bin"), QByteArray("new bytes"));
        QVERIFY(!QFile::exists(path("rom.bin.~tmp")) && !edit()->isModified());
    }

    // As a copy: a source whose file was moved deletes it.
    void opensDroppedFiles()
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path("rom.bin"))});
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
        QTRY_COMPARE(shown(), QByteArray("0123456789"));
        data.setUrls(data.urls() + data.urls()); // which of them?
        enter.ignore();
        QApplication::sendEvent(m_page.get(), &enter);
        QVERIFY(!enter.isAccepted());
    }

    void finds()
    {
        put("text.bin", "ab\xD6\xD0!ab\xE4\xB8\xAD!ab");
        open("text.bin");
        // What is selected then, and the beginning of what is said.
        const std::tuple<int, QString, const char *, qint64, qint64, const char *> rows[] = {
            {0, "61 62", "btnFindNext", 0, 2, ""},
            {0, "61 62", "btnFindNext", 5, 2, ""},
            {0, "21", "btnFindNext", 10, 1, ""},
            {0, "21", "btnFindNext", 4, 1, "已到末尾"},
            {1, "中", "btnFindNext", 7, 3, ""},
            {2, "中", "btnFindPrevious", 2, 2, ""},
            {1, "ab", "btnFindPrevious", 0, 2, ""},
            {1, "ab", "btnFindPrevious", 11, 2, "已到开头"},
            {0, "6", "btnFindNext", 11, 2, "请输入成"},
            {1, "nowhere", "btnFindNext", 11, 2, "未找到要"},
            {1, "", "btnFindNext", 11, 2, "请输入要"},
            {0, QString("61").repeated(4001), "btnFindNext", 11, 2, "查找的内"}};
        for (const auto &[kind, text, button, begin, length, says] : rows) {
            QtMessageTip::showTip(QString());
            child<QComboBox>("comboFindKind")->setCurrentIndex(kind);
            enter("editFind", text);
            if (begin == 5)
                QTest::keyClick(child<QLineEdit>("editFind"), Qt::Key_Return);
            else
                click(button);
            waitForWork();
            QCOMPARE(edit()->selectionBegin(), begin);
            QCOMPARE(edit()->selectionLength(), length);
            QCOMPARE(tip().left(4), QString(says));
        }
        auto *field = child<QLineEdit>("editFind");
        field->setText("61");
        QApplication::clipboard()->setText(QString(20001, '6'));
        field->paste();
        QTRY_COMPARE(field->text(), QString("61"));
        field->setFocus();
        QTest::keyClick(field, Qt::Key_Escape);
        QCOMPARE(m_page->focusWidget(), edit());
        QVERIFY(QTest::qWaitForWindowActive(m_page.get(), 30000));
        field->setFocus();
        field->deselect();
        QTest::keyClick(m_page->windowHandle(), Qt::Key_F, Qt::ControlModifier);
        QVERIFY(field->hasFocus() && field->selectedText() == "61");
        QTest::keyClick(m_page->windowHandle(), Qt::Key_G, Qt::ControlModifier);
        QVERIFY(child<QLineEdit>("editJumpAddress")->hasFocus());
        QTest::keyClick(child<QLineEdit>("editJumpAddress"), Qt::Key_Escape);
        QVERIFY(edit()->hasFocus());
    }

    void replaces()
    {
        put("text.bin", "ab-ab-ab");
        open("text.bin");
        enter("editFind", "61");
        enter("editReplace", "6");
        click("btnReplaceAll");
        QCOMPARE(tip(), QString("请输入成对的十六进制字符"));
        child<QComboBox>("comboFindKind")->setCurrentIndex(1);
        enter("editFind", "ab");
        enter("editReplace", "long");
        click("btnReplaceAll"); // overwriting moves nothing
        QVERIFY(!edit()->isModified() && tip().contains("须等长替换"));
        enter("editReplace", "XY");
        click("btnReplace"); // finds the first one
        QVERIFY(!edit()->isModified());
        click("btnReplace");
        QCOMPARE(shown(), QByteArray("XY-ab-ab"));
        QCOMPARE(edit()->selectionBegin(), qint64(3));
        edit()->setOverwrite(false);
        enter("editReplace", "long");
        click("btnReplaceAll");
        QCOMPARE(tip(), QString("已替换2处"));
        QCOMPARE(shown(), QByteArray("XY-long-long"));
        tool(HexEditWidget::Undo);
        tool(HexEditWidget::Undo);
        QVERIFY(!edit()->isModified());
    }

    void jumpsAndSums()
    {
        put("sum.bin", "##123456789#######");
        open("sum.bin");
        enter("editJumpAddress", "F"); // as the address column shows it
        child<QWidget>("editJumpAddress")->setFocus();
        QTest::keyClick(child<QWidget>("editJumpAddress"), Qt::Key_Return);
        QCOMPARE(edit()->address(), qint64(15));
        QCOMPARE(m_page->focusWidget(), edit());
        QCOMPARE(text("inspect_uint8"), QString("35"));
        QCOMPARE(text("inspect_int32"), QString("-"));
        enter("editJumpAddress", "14");
        click("btnJump");
        QVERIFY(tip().endsWith("0到0x12）"));
        child<QComboBox>("comboJumpBase")->setCurrentIndex(1);
        click("btnJump");
        QCOMPARE(edit()->address(), qint64(14));
        child<QComboBox>("comboByteOrder")->setCurrentIndex(1);
        edit()->select(9, 2);
        QCOMPARE(text("inspect_uint16"), QString::number('8' << 8 | '9'));
        const auto sum = [this](const char *name) { return child<QLineEdit>(name)->text(); };
        edit()->select(2, 9);
        click("btnChecksum");
        QCOMPARE(text("labelChecksumRange"), QString("范围：地址2起9字节"));
        QCOMPARE(text("labelSelection"), QString("选中：0x2起9字节"));
        QCOMPARE(sum("editCrc32"), QString("0xCBF43926"));
        QCOMPARE(sum("editCrc16"), QString("0x4B37"));
        QCOMPARE(sum("editMd5"), QString("25f9e794323b453885f5181f1b624d0b"));
        QVERIFY(
            sum("editSha256").startsWith("15e2b0d3c33891ebb0f1ef609ec419420c20e320ce94c65fbc8c3312448eb225"));
        edit()->select(17, 1);
        QCOMPARE(text("labelSelection"), QString("选中：0x11起1字节"));
        edit()->select(2, 9);
        type("00");
        QVERIFY(sum("editCrc32").isEmpty() && text("labelSelection").isEmpty()); // of bytes that are gone
        click("btnChecksum");                                                    // of all
        QCOMPARE(sum("editSum"), QString("0x000002E7"));
    }

    // What has been read is there at once; stopping brings back what was open.
    void stopsOpening()
    {
        putLarge("huge.bin", 4097);
        m_answer = 0;
        open("huge.bin");
        QVERIFY(m_page->fileName().isEmpty() && m_questions.takeLast().contains("4.0 GB"));
        constexpr qint64 megabytes = 300;
        putLarge("large.bin", megabytes);
        open("rom.bin");
        type("41");
        m_answer = QtMessageBox::Discard;
        beginOpening(path("large.bin"));
        QVERIFY(edit()->task()->isRunning() && child<QWidget>("btnStopWork")->isVisible());
        QVERIFY(edit()->size() < megabytes << 20);
        type("42");
        m_page->sltToolBtnsClicked(HexEditWidget::CloseFile); // not while it is being opened
        m_page->openFile(path("rom.bin"));
        QCOMPARE(edit()->document().read(0, 5), QByteArray("begin"));
        click("btnStopWork");
        QCOMPARE(m_page->fileName(), path("rom.bin"));
        QCOMPARE(shown(), QByteArray("A123456789"));
        QVERIFY(edit()->isModified() && !edit()->isReadOnly() && child<QWidget>("btnStopWork")->isHidden());

        QtMessageTip::showTip(QString());
        open("large.bin");
        QCOMPARE(text("labelSize"), QString("Size: %1").arg(megabytes << 20));
        QVERIFY(tip().isEmpty() && !edit()->isModified() && !edit()->isReadOnly());
        beginOpening(path("large.bin"));
        QVERIFY(m_page->mayClose()); // ending in the middle of it loses nothing
    }

    void stopsLongWork()
    {
        putLarge("large.bin", 200);
        open("large.bin");
        auto *checksum = child<QPushButton>("btnChecksum");
        checksum->setFocus();
        child<QLineEdit>("editCrc32")->setText("of the time before");
        checksum->click();
        const auto areEnabled = [this](bool enabled) {
            for (const char *name : {"btnOpenFile", "btnSaveFile", "btnSaveAs", "btnFindNext",
                                     "btnReplaceAll", "btnChecksum", "btnRecent"})
                if (child<QPushButton>(name)->isEnabled() != enabled)
                    return false;
            return true;
        };
        QVERIFY(areEnabled(false));
        // Nothing is ignored in silence, and the bytes keep still.
        const std::pair<int, Qt::KeyboardModifiers> keys[] = {
            {Qt::Key_S, Qt::ControlModifier}, {Qt::Key_V, Qt::ControlModifier}, {Qt::Key_4, Qt::NoModifier}};
        for (const auto &[key, modifiers] : keys) {
            QtMessageTip::showTip(QString());
            QTest::keyClick(edit(), Qt::Key(key), modifiers);
            QVERIFY2(tip().contains("正在计算校验"), qPrintable(QString(QChar(key))));
        }
        QtMessageTip::showTip(QString());
        m_page->openFile(path("rom.bin")); // as one that is dropped
        QVERIFY(tip().contains("正在计算校验"));
        click("btnStopWork");
        QVERIFY(areEnabled(true) && child<QWidget>("progressHex")->isHidden());
        QCOMPARE(m_page->focusWidget(), checksum);
        QVERIFY(child<QLineEdit>("editCrc32")->text().isEmpty() && !edit()->isModified());
        enter("editFind", "00");
        enter("editReplace", "01");
        child<QPushButton>("btnReplaceAll")->click();
        QVERIFY(edit()->task()->isRunning());
        click("btnStopWork");
        QVERIFY(!edit()->isModified() && tip().contains("没有替换")); // all or nothing
        emit edit()->task()->progressed(7);                           // of work that can't be stopped now
        QVERIFY(!child<QWidget>("btnStopWork")->isEnabled() &&
                child<QProgressBar>("progressHex")->value() == 7);

        // Saving as well: the file stays what it was.
        type("41");
        m_answer = QtMessageBox::Cancel;
        checksum->click();
        QVERIFY(child<QWidget>("progressHex")->isVisible() && !m_page->mayClose() &&
                !edit()->task()->isRunning());
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        QVERIFY(edit()->task()->isRunning() && QApplication::overrideCursor());
        click("btnStopWork");
        QVERIFY(edit()->isModified() && tip().contains("原文件未改动"));
        QCOMPARE(content("large.bin").left(5), QByteArray("begin"));
        m_page->sltToolBtnsClicked(HexEditWidget::SaveFile);
        QVERIFY(edit()->task()->isRunning()); // while the page ends
    }

private:
    template <class Widget> Widget *child(const QString &name) const
    {
        return m_page->findChild<Widget *>(name);
    }
    QString text(const char *label) const { return child<QLabel>(label)->text(); }
    QHexEdit *edit() const { return m_page->findChild<QHexEdit *>(); }
    // A busy machine takes more than one slice even for a small file.
    void waitForWork() { QTRY_VERIFY_WITH_TIMEOUT(!edit()->task()->isRunning(), 60000); }
    void click(const char *name)
    {
        child<QAbstractButton>(name)->click();
        waitForWork();
    }
    void tool(int id)
    {
        m_page->sltToolBtnsClicked(id);
        waitForWork();
    }
    void type(const char *keys) { QTest::keyClicks(edit(), keys); }
    void enter(const char *field, const QString &text) { child<QLineEdit>(field)->setText(text); }
    QString path(const QString &name) const { return m_root->filePath(name); }
    void put(const QString &name, const QByteArray &bytes) { QVERIFY(writeFile(path(name), bytes)); }
    void putLarge(const QString &name, qint64 megabytes)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.write("begin") == 5 && file.resize(megabytes << 20));
    }
    QByteArray content(const QString &name) const { return contentOf(path(name)); }
    QByteArray shown() const { return edit()->document().read(0, 1 << 20); }
    void beginOpening(const QString &name)
    {
        DialogAnswers::instance().fileNames = [name](auto, auto, auto, auto) { return QStringList(name); };
        m_page->sltToolBtnsClicked(HexEditWidget::OpenFile);
    }
    void open(const QString &name)
    {
        beginOpening(path(name));
        waitForWork();
    }
    void makePage()
    {
        m_page = std::make_unique<HexEditWidget>();
        m_page->resize(1000, 500);
        m_page->show();
    }
    // Something stands in the way of the temporary file of rom.bin.
    void setSavable(bool savable)
    {
        QVERIFY(savable ? QDir().rmdir(path("rom.bin.~tmp")) : QDir().mkdir(path("rom.bin.~tmp")));
    }
    static QString tip() { return QtMessageTip::current() ? QtMessageTip::current()->text() : QString(); }

    std::unique_ptr<FreshFolder> m_root;
    std::unique_ptr<HexEditWidget> m_page;
    QStringList m_questions; // "title|text" of the boxes
    int m_answer = 1;
};

QTEST_MAIN(TestHexEditPage)
#include "test_hexeditpage.moc"
