// What the serial page saves, when asked and when it closes.

#include "serialpagetest.h"

#include "bytespool.h"
#include "fulldisk.h"
#include "leftoveroffer.h"
#include "qtmessagebox.h"
#include "receivedfiles.h"
#include "safefile.h"
#include "settings.h"
#include "textcodec.h"

#include "leftoveroffer.h"
#include "qtmessagebox.h"

#include <QAbstractTextDocumentLayout>
#include <QLineEdit>
#include <QLockFile>
#include <QMenu>
#include <QPushButton>
#include <QTextBlock>

class TestSerialFiles : public SerialPageTest
{
    Q_OBJECT

private slots:
    void savesTextAndBytes()
    {
        click("btnSaveRecv");
        QCOMPARE(lastNotice(), QStringLiteral("当前无数据需要保存！"));
        openPort();
        const QByteArray first("before\r\n");
        const QByteArray second("\xce\xc2\x80\xff"
                                "end\r\n");
        receive(first);
        click("btnClearRecv");
        receive(second);
        const QByteArray text = save(QStringLiteral("记录.txt"));
        QCOMPARE(lastNotice(), QStringLiteral("文件保存完成!"));
        QVERIFY(!QGuiApplication::overrideCursor());
        QVERIFY(text.startsWith("\xce\xc2") && text.endsWith("end\n"));
        QCOMPARE(save("data.bin"), first + second); // the session, as it came
        QApplication::setActiveWindow(m_page.get());
        QTest::keyClick(child<QtTerminalWidget>("recvBrowser"), Qt::Key_L, Qt::ControlModifier);
        QCOMPARE(shown(), QString());
        QCOMPARE(save("cleared"), first + second); // bytes: no text is left
        const int notices = m_notices->count();
        chooseFile(QString()); // cancelled
        click("btnSaveRecv");
        QCOMPARE(m_notices->count(), notices);
    }

    // What could not be saved is still unsaved, by hand and at the end.
    void failedSavesDoNotCount()
    {
        Questions questions(QtMessageBox::Cancel);
        openPort();
        receive("data");
        for (const char *name : {"no/such/folder/x.txt", "no/such/folder/x.bin"}) {
            Settings::instance().closeBehaviour = Settings::Ask;
            const int before = m_notices->count();
            save(QLatin1String(name));
            QCOMPARE(m_notices->count(), before + 2);
            QCOMPARE(m_notices->at(before).at(0).toString(), QStringLiteral("文件保存失败!"));
            QVERIFY(lastError().endsWith(QStringLiteral("：文件夹不存在")));
            questions.asked.clear();
            questions.answer = QtMessageBox::Cancel;
            QVERIFY(!m_page->mayClose());
            QCOMPARE(questions.asked.size(), 1);
            questions.answer = QtMessageBox::Save; // to the same place
            QVERIFY(m_page->mayClose());
            QVERIFY(!m_page->saveBeforeExit());
            Settings::instance().closeBehaviour = Settings::AutoSave;
            QVERIFY(writeFile(m_root->filePath("save"), {})); // in the way
            qputenv("HOME", "/dev/null");                     // the user's documents
            questions.answer = QtMessageBox::Cancel;
            QVERIFY(!m_page->saveBeforeExit());
            QVERIFY(!m_page->saveBeforeExit());
            QCOMPARE(questions.asked.size(), 4); // each time
        }
        Settings::instance().closeBehaviour = Settings::Ask;
        QVERIFY(!m_page->mayClose());
        Settings::instance().closeBehaviour = Settings::AutoSave;
        chooseFile(m_root->filePath("elsewhere.bin"));
        questions.answer = QtMessageBox::Save;
        QVERIFY(m_page->saveBeforeExit());
        QCOMPARE(contentOf(m_root->filePath("elsewhere.bin")), QByteArray("data"));
        receive("more");
        questions.answer = QtMessageBox::Discard;
        QVERIFY(m_page->saveBeforeExit());
    }

    // Sent lines, colors and control characters, and parts of the log in files.
    void showsAndSavesTheChosenView()
    {
        const auto choose = [this](const QString &text) {
            for (QAction *action : child<QPushButton>("btnView")->menu()->actions())
                if (action->text() == text)
                    action->trigger();
        };
        openPort();
        receive("\x1b[31ma1\r\n10%\r20%\r\n");
        QVERIFY(lastNotice().contains(QStringLiteral("解释ANSI转义序列")));
        const QString raw = shown();
        choose(QStringLiteral("解释ANSI转义序列"));
        QCOMPARE(shown(), QString("a1\n20%\n"));
        choose(QStringLiteral("显示发送的数据"));
        receive("open");
        m_page->SltWriteDataToSerialport("AT\r\n");
        receive("b2\n");
        QCOMPARE(shown(), QString("a1\n20%\nopen\nAT\nb2\n"));
        const auto *terminal = child<QtTerminalWidget>("recvBrowser");
        const QImage image = terminal->viewport()->grab().toImage();
        const auto hasColorOf = [&](int line, const std::function<bool(QColor)> &isColor) {
            const QTextDocument *document = terminal->document();
            const QRect row =
                document->documentLayout()->blockBoundingRect(document->findBlockByNumber(line)).toRect();
            for (int y = row.top(); y < row.bottom(); ++y)
                for (int x = 0; x < image.width() / 2; ++x)
                    if (isColor(image.pixelColor(x, y)))
                        return true;
            return false;
        };
        const auto isRed = [](const QColor &color) { return color.red() > color.blue() + 60; };
        const auto isBlue = [](const QColor &color) { return color.blue() > color.red() + 60; };
        QVERIFY(hasColorOf(0, isRed) && !hasColorOf(0, isBlue));
        QVERIFY(hasColorOf(3, isBlue) && !hasColorOf(3, isRed));

        QCOMPARE(save("plain.txt"), QByteArray("a1\n20%\nopen\nAT\nb2\n"));
        choose(QStringLiteral("保存文本时带行时间"));
        const QString stamped = TextCodec::decode(save("stamped.txt"), Settings::instance().textCodec);
        const QRegularExpression lines(
            QStringLiteral("^(\\[\\d\\d:\\d\\d:\\d\\d\\.\\d{3} (收|发)\\] .*\n){5}$"));
        QVERIFY2(lines.match(stamped).hasMatch(), qPrintable(stamped));
        QCOMPARE(stamped.count(QStringLiteral("发] AT\n")), 1);
        choose(QStringLiteral("保存文本时带行时间"));
        click("btnLogFind");
        child<QLineEdit>("editLogFind")->setText("2");
        click("checkLogFilter");
        chooseFile(m_root->filePath("part.txt"));
        QTRY_COMPARE(shown().isEmpty(), false);
        choose(QStringLiteral("保存筛选结果…"));
        QCOMPARE(contentOf(m_root->filePath("part.txt")), QByteArray("20%\nb2\n"));
        click("btnLogFindClose");
        child<QtTerminalWidget>("recvBrowser")->selectAll();
        chooseFile(m_root->filePath("part.txt"));
        choose(QStringLiteral("保存选中内容…"));
        QCOMPARE(contentOf(m_root->filePath("part.txt")), QByteArray("a1\n20%\nopen\nAT\nb2\n"));
        QCOMPARE(save("all.bin"), QByteArray("\x1b[31ma1\r\n10%\r20%\r\nopenb2\n"));

        choose(QStringLiteral("解释ANSI转义序列")); // off again: all as it came
        QVERIFY(shown().startsWith(raw));
        click("checkStopShow");
        m_page->SltWriteDataToSerialport("hidden");
        QVERIFY(child<QWidget>("btnResumeShow")->isVisible());
        click("btnResumeShow");
        QVERIFY(!child<QWidget>("btnResumeShow")->isVisible());
        m_page->SltWriteDataToSerialport("seen");
        QVERIFY(shown().endsWith("b2\nseen\n"));
        choose(QStringLiteral("保存文本时带行时间"));
        receive(QByteArray("x\n").repeated(9000)); // more than are read at a time
        const QByteArray many = save("many.txt");
        QVERIFY(many.count('\n') > 9000 && many.count("\n[") == many.count('\n') - 1);
    }

    void savesEverythingOfAFlood()
    {
        openPort();
        QByteArray all;
        for (int i = 0; all.size() < 2 * 1000 * 1000; ++i)
            all += "line " + QByteArray::number(i) + " \xce\xc2\n";
        QVERIFY(m_board->write(all));
        QTRY_COMPARE_WITH_TIMEOUT(received(), qint64(all.size()), 20000);
        QVERIFY(save("a.txt") == all);
        QVERIFY(save("a.bin") == all);
        bool ranMeanwhile = false; // timers
        child<QtTerminalWidget>("recvBrowser")->setTerminalText(QString(4000000, QChar(0x6E29)));
        QTimer::singleShot(0, this, [&] { ranMeanwhile = true; });
        QCOMPARE(save("long.txt").size(), 8000000);
        QVERIFY(ranMeanwhile);
    }

    void tellsAFullDisk()
    {
        openPort();
        receive(QByteArray(500, 'a'));
        std::optional<FullDisk> full(1000);
        receive(QByteArray(800, 'b'));
        QTRY_VERIFY(lastKind() == 255);
        const QString notice = lastNotice();
        save("full.txt");
        const QString saved = lastNotice();
        Settings::instance().closeBehaviour = Settings::AutoSave;
        qputenv("HOME", "/dev/null"); // the user's documents
        const Questions questions(QtMessageBox::Cancel);
        const bool mayExit = m_page->saveBeforeExit();
        QString reason;
        const bool written = SafeFile::write(m_root->filePath("full.dat"), QByteArray(5000, 'c'), &reason);
        full.reset();
        QVERIFY(!written && !mayExit);
        Settings::instance().closeBehaviour = Settings::Ask;
        QVERIFY(!m_page->mayClose());
        for (const QString &text : {notice, saved, reason})
            QVERIFY2(text.contains(QStringLiteral("磁盘空间")), qPrintable(text));
        QVERIFY(!QFileInfo::exists(m_root->filePath("full.txt"))); // no half file
        QVERIFY(QDir(m_root->filePath("save")).isEmpty());
        const QByteArray all = QByteArray(500, 'a') + QByteArray(800, 'b');
        QCOMPARE(shown(), QString::fromLatin1(all));
        QCOMPARE(save("room.bin"), all); // the user has made room
        receive("c");
        QTRY_COMPARE(lastNotice(), QStringLiteral("缓存文件恢复写入，接收数据没有丢失"));
    }

    void tellsThatTheTextIsNotComplete()
    {
        std::optional<FullDisk> full(0);
        child<QtTerminalWidget>("recvBrowser")->insertRecvData(QByteArray(65 << 20, 'x'), false, false);
        QCOMPARE(shown().size(), 20480);
        QCOMPARE(m_notices->count(), 1);
        QVERIFY(lastError().contains(QStringLiteral("后续显示内容将无法保存为文本文件")));
        full.reset();
    }

    void closingFollowsTheSetting()
    {
        using Box = QtMessageBox;
        const QString all = QStringLiteral("data, and more while another page asks");
        const std::tuple<int, int, bool, bool, QString> rows[] = {
            // chooses a file, closes, saved
            {Settings::Discard, -1, false, true, ""},       {Settings::Ask, Box::Discard, false, true, ""},
            {Settings::Ask, Box::Cancel, false, false, ""}, {Settings::Ask, Box::Save, true, true, all},
            {Settings::Ask, Box::Save, false, false, ""},   {Settings::AutoSave, -1, false, true, all}};
        for (const auto &[behaviour, answers, choosesFile, closes, saved] : rows) {
            cleanup();
            init();
            openPort();
            receive("data");
            Settings::instance().closeBehaviour = behaviour;
            const Questions questions(answers);
            const QDir folder(m_root->filePath("save"));
            chooseFile(choosesFile ? folder.filePath("recv_asked.txt") : QString());
            QVERIFY(folder.mkpath("."));
            QCOMPARE(m_page->mayClose(), closes);
            QVERIFY(folder.entryList({"recv_*"}, QDir::Files).isEmpty()); // not before all have been asked
            if (closes) {
                receive(", and more while another page asks");
                m_page->closeLinks();
                QTRY_VERIFY(m_page->isClosed());
                QVERIFY(m_page->saveBeforeExit());
            }
            const bool asks = behaviour == Settings::Ask;
            QCOMPARE(questions.asked, asks
                                          ? QStringList{QStringLiteral("当前有数据未保存，是否保存接收数据?")}
                                          : QStringList());
            QByteArray content;
            for (const QString &name : folder.entryList({"recv_*.txt"}, QDir::Files))
                content += contentOf(folder.filePath(name));
            QCOMPARE(QString::fromUtf8(content), saved);
        }
    }

    // Text can't reproduce bytes that are no characters, nor CR LF; and what was
    // cleared or saved as text only is not in any file as it came.
    void autoSavingKeepsTheBytes()
    {
        Settings::instance().closeBehaviour = Settings::AutoSave;
        const QDir folder(m_root->filePath("save"));
        const auto binaries = [&] { return folder.entryList({"recv_*.bin"}, QDir::Files, QDir::Name); };
        openPort();
        const QByteArray bytes("a\r\n\xff\x80");
        receive(bytes);
        click("btnClearRecv");
        QVERIFY(m_page->saveBeforeExit());
        QCOMPARE(binaries().size(), 1);
        QCOMPARE(contentOf(folder.filePath(binaries().first())), bytes);
        QVERIFY(m_page->saveBeforeExit()); // nothing came since
        QCOMPARE(binaries().size(), 1);
        receive(bytes);
        save("by hand.txt");
        QVERIFY(m_page->saveBeforeExit());
        QCOMPARE(binaries().size(), 2);
        QCOMPARE(contentOf(folder.filePath(binaries().last())), bytes + bytes);
        QCOMPARE(folder.entryList({"recv_*.txt"}).size(), 0);
        qputenv("HOME", m_root->path().toLocal8Bit()); // to the user's documents where "save" cannot be made
        QVERIFY(QDir(m_root->path()).rename("save", "saved") && writeFile(m_root->filePath("save"), {}));
        receive("more");
        QVERIFY(m_page->saveBeforeExit());
        const QDir documents(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
        QCOMPARE(documents.entryList({"recv_*"}).size(), 2);
        const auto record = [] { return QDir(AppPaths::tmpFolder()).entryInfoList({"serial_*"}).value(0); };
        QTRY_COMPARE(record().size(), m_page->spool().size());
        QVERIFY(QFile::resize(record().filePath(), 0)); // by somebody else
        save("x.bin");
        QVERIFY(lastNotice().endsWith(QStringLiteral("缓存文件无法读取")));
        QVERIFY(QFile::remove(m_root->filePath("save")) && QDir(m_root->path()).mkdir("save"));
        // Two copies of the program that end together.
        const auto reserve = [&] { return ReceivedFiles::reserveDatedName(folder.path(), {".bin", ".txt"}); };
        QVERIFY(reserve() != reserve());
    }

    // Files of a program that runs are its own.
    void offersWhatACrashLeft()
    {
        const QDir tmp(AppPaths::tmpFolder());
        const auto names = [&tmp] { return tmp.entryList({"*_abcdef"}, QDir::Files).join(' '); };
        QLockFile running(tmp.filePath("run_77.lock"));
        QVERIFY(running.tryLock());
        for (const char *name : {"serial_99_abcdef", "network_98_abcdef", "text_98_abcdef", "shown_97_abcdef",
                                 "serial_77_abcdef", "text_77_abcdef", "serial_abcdef"})
            QVERIFY(writeFile(tmp.filePath(name), name));
        QVERIFY(writeFile(tmp.filePath("serial_96_abcdef"), {}));
        QLockFile stale(tmp.filePath("run_95.lock"));
        QVERIFY(stale.tryLock());
        const QByteArray ofThisProcess = contentOf(tmp.filePath("run_95.lock"));
        stale.unlock();
        QVERIFY(writeFile(tmp.filePath("run_95.lock"),
                          "999999999" + ofThisProcess.mid(ofThisProcess.indexOf('\n'))));
        const QString others = "serial_77_abcdef serial_abcdef text_77_abcdef";

        Questions questions(QtMessageBox::Cancel);
        LeftoverOffer::make(m_page.get());
        QVERIFY(questions.asked.value(0).contains(QStringLiteral("串口调试助手 16 bytes")));
        QCOMPARE(names(), "network_98_abcdef serial_77_abcdef serial_99_abcdef serial_abcdef text_77_abcdef");

        QVERIFY(!tmp.exists("run_95.lock"));
        questions.answer = QtMessageBox::Save;
        QVERIFY(QFile::remove(tmp.filePath("network_98_abcdef")));
        const QString saved = m_root->filePath("saved.bin");
        DialogAnswers::instance().fileNames = [this, saved, tries = 0](auto...) mutable {
            return QStringList(tries++ == 0 ? m_root->filePath("missing/saved.bin") : saved);
        };
        LeftoverOffer::make(m_page.get()); // tells the failure, and asks again
        QCOMPARE(questions.asked.size(), 3);
        QCOMPARE(contentOf(saved), QByteArray("serial_99_abcdef"));
        QCOMPARE(names(), others);

        QVERIFY(writeFile(tmp.filePath("network_98_abcdef"), "x"));
        questions.answer = QtMessageBox::Discard;
        LeftoverOffer::make(m_page.get());
        QCOMPARE(names(), others);
        LeftoverOffer::make(m_page.get());
        QCOMPARE(questions.asked.size(), 4);
    }

    void closingAsksOnlyForWhatIsUnsaved()
    {
        Settings::instance().closeBehaviour = Settings::Ask;
        const Questions questions(QtMessageBox::Discard);
        const auto asked = [&questions] { return questions.asked.size(); };
        QVERIFY(m_page->mayClose() && m_page->saveBeforeExit());
        openPort();
        receive("data");
        save("saved.txt");
        QVERIFY(m_page->mayClose() && m_page->saveBeforeExit());
        receive("more");
        click("btnClearRecv");
        QVERIFY(m_page->mayClose());
        QCOMPARE(asked(), 0);
        receive("after the other pages were asked");
        QVERIFY(m_page->saveBeforeExit());
        QCOMPARE(asked(), 1);
        click("checkStopShow");
        receive("not shown, not saved");
        QVERIFY(!shown().contains("not saved"));
        QVERIFY(m_page->mayClose());
        QCOMPARE(asked(), 2);
        save("no/such/folder/x.bin");
        save("saved.txt"); // which does not hold it
        QVERIFY(lastNotice().contains(QStringLiteral("停止显示")));
        QVERIFY(m_page->mayClose());
        QCOMPARE(asked(), 3);
        save("saved"); // bytes are offered first
        QCOMPARE(lastNotice(), QStringLiteral("文件保存完成!"));
        QVERIFY(contentOf(m_root->filePath("saved")).endsWith("not saved"));
        QVERIFY(m_page->mayClose());
        QCOMPARE(asked(), 3);
        receive("hidden and cleared");
        click("btnClearRecv");
        click("checkStopShow");
        receive("shown");
        QCOMPARE(save("shown"), QByteArray("shown")); // as text
        QCOMPARE(lastNotice(), QStringLiteral("文件保存完成!"));
    }

private:
    // By hand, to a file of the test's folder. Its content.
    QByteArray save(const QString &name)
    {
        chooseFile(m_root->filePath(name));
        click("btnSaveRecv");
        return contentOf(m_root->filePath(name));
    }
};

QTEST_MAIN(TestSerialFiles)
#include "test_serialfiles.moc"
