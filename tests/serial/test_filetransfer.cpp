// Sending files from the serial page: the port goes to the driver and comes
// back after every outcome, and the page says what happens.

#include "serialpagetest.h"

#include "filelist.h"
#include "filesendpage.h"
#include "filetransfer.h"
#include "qtsendboxwidget.h"
#include "quietreader.h"
#include "settings.h"
#include "stateindicator.h"
#include "transferlogdialog.h"
#include "ymodempackets.h"

#include <QClipboard>
#include <QComboBox>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QLabel>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QSpinBox>

#include <sys/inotify.h>
#include <unistd.h>

class TestFileTransfer : public SerialPageTest
{
    Q_OBJECT

private slots:
    void listsFilesOnce()
    {
        const QString name = makeFile("50%version.bin", 3000);
        const QString longName = makeFile(QString(200, 'n'), 3000);
        chooseFiles({name, longName});
        click("btnOpenFiles");
        makeFile("50%version.bin", 4000);
        click("btnOpenFiles");
        const auto *list = child<QListWidget>("listFiles");
        QCOMPARE(list->count(), 2);
        QCOMPARE(list->item(0)->text(), QStringLiteral("50%version.bin  (4000 字节)"));
        QFile::remove(longName);
        openPort();
        click("btnSendFiles");
        QCOMPARE(list->item(1)->text(), QString(200, 'n') + QStringLiteral("  (文件不存在)"));

        m_page->findChild<QtSendBoxWidget *>()->setCurrentPage(QtSendBoxWidget::FilePage);
        auto *page = m_page->findChild<FileSendPage *>();
        const auto *bar = child<QProgressBar>("progressTransfer");
        page->setProgress(20, name);
        QCOMPARE(bar->text().remove(QChar(0x2060)), QStringLiteral("50%version.bin  20%"));
        QTRY_VERIFY(bar->width() > 200);
        page->setProgress(20, longName);
        QVERIFY(bar->text().endsWith(QStringLiteral("  20%")));
        QVERIFY(bar->fontMetrics().horizontalAdvance(bar->text()) <= bar->width());
    }

    void sendsFiles()
    {
        QVERIFY(!isEnabled("btnSendFiles"));
        child<QComboBox>("comboBaudRate")->setEditText("57600");
        openPort();
        QVERIFY(!isEnabled("btnSendFiles")); // no file
        const int watch = inotify_init1(IN_NONBLOCK);
        QVERIFY(inotify_add_watch(watch, QFile::encodeName(m_board->device()), IN_OPEN | IN_CLOSE) >= 0);
        const QString name = makeFile("a.bin", 3000);
        chooseFiles({name});
        click("btnOpenFiles");
        doubleClick("btnSendFiles");
        QCOMPARE(sendButton(), QStringLiteral("停止发送"));
        QVERIFY(!isEnabled("btnOpen"));
        QVERIFY(!isEnabled("comboPort"));
        QVERIFY(!isEnabled("btnClearFiles"));
        QVERIFY(child<StateIndicator>("stateIndicator")->isOn());

        QCOMPARE(answered("C", 133).size(), 133);
        QCOMPARE(text(), QStringLiteral("\n开始传输文件->\n%1\n握手成功").arg(name));
        m_board->write("\x06");
        QCOMPARE(answered("C", 1029).size(), 1029);
        QCOMPARE(child<QProgressBar>("progressTransfer")->value(), 34); // 1024 of 3000
        QCOMPARE(child<QProgressBar>("progressTransfer")->text(), QStringLiteral("a.bin  34%"));
        QVERIFY(child<QLabel>("labelTransferAmount")->text().startsWith("1.0 KB / 2.9 KB"));
        // Another adapter comes: no reason to end anything.
        m_page->SltSerialportChanged({"COM7 other"});
        answered("\x06", 1029);
        answered("\x06", 1029);
        answered("\x06", 1);
        m_board->write("\x06");
        answered("C", 133);
        m_board->write("\x06Programming completed\n");
        QVERIFY(waitForEnd());
        QTRY_COMPARE(shown(), QStringLiteral("Programming completed\n"));
        QCOMPARE(received(), qint64(22));
        char event[256];
        QCOMPARE(read(watch, event, sizeof event), ssize_t(-1)); // DTR would go down and up
        close(watch);
        QVERIFY(text().endsWith(QStringLiteral("握手成功\n\n传输完成")));
        const QString log = m_page->findChild<YmodemFileTransmit *>()->log().text();
        QVERIFY(log.contains(QStringLiteral("端口 %1，波特率 57600").arg(m_board->device())));
        QCOMPARE(child<QProgressBar>("progressTransfer")->text(), QStringLiteral("传输完成  100%"));
        QCOMPARE(child<QLabel>("labelTransferAmount")->text(), QStringLiteral("2.9 KB / 2.9 KB"));
        QCOMPARE(lastNotice(), QStringLiteral("文件传输完成！"));
        QCOMPARE(lastKind(), 0);
        checkThePort();
        QCOMPARE(m_page->counts().at(0), QStringLiteral("0")); // the page itself sent nothing
    }

    // Block 0 and the data need all eight bits, and no line has one and a half stop bits then.
    void sendsWithEightBits()
    {
        for (const auto &[chosen, used] : {std::pair(QSerialPort::OneAndHalfStop, QSerialPort::OneStop),
                                           {QSerialPort::TwoStop, QSerialPort::TwoStop}}) {
            SerialSettings settings;
            settings.name = m_board->device();
            settings.dataBits = QSerialPort::Data7;
            settings.stopBits = chosen;
            SerialLink link;
            QVERIFY(link.open(settings, SerialLink::Refusal::KeepsOpen));
            QuietReader reader(
                &link, [] { return 0; }, nullptr);
            FileSendPage page;
            FileTransfer transfer(&link, &reader, &page, nullptr);
            transfer.create(nullptr);
            transfer.start(1, 1024, {makeFile("a.bin", 1)});
            QCOMPARE(link.settings().dataBits, QSerialPort::Data8);
            QCOMPARE(link.settings().stopBits, used);
            transfer.abandon();
        }
    }

    // The amount with its speed, and the log with what can be done with it.
    void showsAmountsAndTheLog()
    {
        auto *page = m_page->findChild<FileSendPage *>();
        const auto amount = [&](qint64 sent, qint64 size) {
            page->setAmount(sent, size);
            return child<QLabel>("labelTransferAmount")->text();
        };
        page->setSending(true);
        QVERIFY(!amount(0, 1000000).contains("/s"));
        const QRegularExpression form("^1 B / 976\\.6 KB   \\d B/s   剩余 \\d{1,3}:[0-5]\\d:[0-5]\\d$");
        QTRY_VERIFY(form.match(amount(1, 1000000)).hasMatch());
        page->setProgress(0, "next file"); // whose speed is not known yet
        QCOMPARE(amount(500000, 1000000), QStringLiteral("488.3 KB / 976.6 KB"));
        page->setSending(false);
        QVERIFY(isEnabled("btnTransferLog"));

        chooseFile(m_root->filePath("log.txt"));
        TransferLogDialog dialog("first\nlast", nullptr);
        for (auto *button : dialog.findChildren<QAbstractButton *>())
            button->click();
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("first\nlast"));
        QCOMPARE(contentOf(m_root->filePath("log.txt")), QByteArray("first\nlast"));
    }

    void endsInEveryWay()
    {
        const std::pair<QString, QString> rows[] = {{"cancel", "传输终止\n接收端取消了传输\n"},
                                                    {"stop", "传输终止\n用户停止了传输\n"},
                                                    {"early", "传输完成\n接收端提前结束了本批传输"}};
        for (const auto &[how, words] : rows) {
            cleanup();
            init();
            openPort();
            const QString name = makeFile("a.bin", 3000);
            beginSending(how == "early" ? QStringList{makeFile("first.bin", 1), name} : QStringList{name});
            answered("C", 133);
            if (how == "cancel") { // two blocks later
                m_board->write("\x06");
                answered("C", 1029);
                answered("\x06", 1029);
                m_board->write("\x18");
            } else if (how == "early") { // asks for the next file before it has accepted the end
                m_board->write("\x06");
                answered("C", 133);
                answered("\x06", 1);
                answered("C", 133);
                m_board->write("\x06");
            } else {
                m_board->write("\x06");
                for (int i = 0; i < 4; ++i) // as a board that was reset
                    answered("C", 1029);
                QTRY_VERIFY(lastNotice().contains(QStringLiteral("可能已复位")));
                click("btnSendFiles");
            }
            QVERIFY(waitForEnd());
            QVERIFY2(text().contains(words), qPrintable(text()));
            QCOMPARE(text().count(words), 1);
            QVERIFY(text().endsWith(QStringLiteral("未完成：") + name));
            QCOMPARE(lastKind(), 255);
            if (how == "cancel") {
                QCOMPARE(child<QProgressBar>("progressTransfer")->value(), 68);
                QCOMPARE(child<QLabel>("labelTransferAmount")->text(), QStringLiteral("2.0 KB / 2.9 KB"));
            } else if (how == "stop") {
                QCOMPARE(m_board->read(5), QByteArray("\x18\x18\x18\x18\x18")); // the board is told
            }
            checkThePort();
            beginSending({makeFile("b.bin", 1)});
            QCOMPARE(child<QProgressBar>("progressTransfer")->value(), 0);
            QCOMPARE(answered("C", 133).mid(3, 6), QByteArray("b.bin\0", 6));
            QVERIFY(!text().contains(words)); // of the first
        }
    }

    void keepsItsOwnBytesApart()
    {
        openPort();
        receive("before ");
        m_board->write("just before");
        beginSending({makeFile("a.bin", 1)});
        answered("C", 133);
        m_page->SltWriteDataToSerialport("not for the receiver");
        m_board->write("...C"); // noise, and block 0 once more
        QCOMPARE(m_board->read(133, 20000).mid(3, 6), QByteArray("a.bin\0", 6));
        // Settings restored during a transfer wait for the port to be closed.
        auto *baudRate = child<QComboBox>("comboBaudRate");
        const QString before = baudRate->currentText();
        Settings::instance().serial.baudRate = 9600;
        m_page->reloadSettings();
        click("btnSendFiles");
        QVERIFY(waitForEnd());
        QCOMPARE(shown(), QStringLiteral("before just before"));
        QCOMPARE(m_page->counts().at(0), QStringLiteral("0"));
        QCOMPARE(baudRate->currentText(), before);
        click("btnOpen");
        QCOMPARE(baudRate->currentText(), QStringLiteral("9600"));
    }

    void losesThePort()
    {
        for (const QString &lastWords :
             {QString(), QStringLiteral("\x18resetting")}) { // in the middle, behind the end
            cleanup();
            init();
            openPort();
            beginSending({makeFile("a.bin", 3000)});
            answered("C", 133);
            // A board that ends the transfer and resets itself.
            m_board->write(lastWords.toLatin1());
            if (!lastWords.isEmpty())
                QTRY_VERIFY(text().contains(QStringLiteral("接收端取消了传输")));
            m_board->hangUp();
            QVERIFY(waitForEnd());
            QCOMPARE(shown(), lastWords.mid(1));
            QVERIFY(lastWords.size() > 0 || text().contains(QStringLiteral("传输错误\n串口已断开")));
            QCOMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("打开串口"));
            QVERIFY(isEnabled("btnOpen"));
            QVERIFY(!isEnabled("btnSendFiles"));
            QVERIFY(!child<StateIndicator>("stateIndicator")->isOn());
            QCOMPARE(noticeBefore(), QStringLiteral("串口[%1]打开失败!!!").arg(m_board->device()));
        }
    }

    void startsWhenTheLastBytesHaveLeft()
    {
        openPort();
        const QByteArray bytes(300000, 'x');
        m_page->SltWriteDataToSerialport(bytes);
        beginSending({makeFile("a.bin", 1)});
        QCOMPARE(sendButton(), QStringLiteral("停止发送"));
        click("btnSendFiles"); // stopped before it began
        QCOMPARE(sendButton(), QStringLiteral("发送文件"));
        QVERIFY(text().startsWith(QStringLiteral("传输终止\n用户停止了传输\n")));
        click("btnSendFiles");
        QVERIFY(m_board->write("A sign to the receiver")); // which would cancel
        QCOMPARE(m_board->read(bytes.size(), 20000), bytes);
        QCOMPARE(answered("C", 133).mid(3, 6), QByteArray("a.bin\0", 6));
        QVERIFY(shown().startsWith("A sign to the receiver"));
        m_board->write("\x18");
        QVERIFY(waitForEnd());
        QVERIFY(text().contains(QStringLiteral("接收端取消了传输"))); // not what ended the first
        click("btnSendFiles");
        answered("C", 133);
        m_page.reset(); // and in the middle of a transfer the board is told
        QCOMPARE(m_board->read(5), QByteArray("\x18\x18\x18\x18\x18"));
    }

    // By YModem, from a board that prints before and after, and again until the user stops.
    void receivesFiles()
    {
        QVERIFY(!isEnabled("btnReceiveFiles"));
        openPort();
        chooseFile(m_root->path());
        doubleClick("btnReceiveFiles");
        QCOMPARE(child<QAbstractButton>("btnReceiveFiles")->text(), QStringLiteral("停止接收"));
        QVERIFY(!isEnabled("btnSendFiles") && !isEnabled("btnOpen") && !isEnabled("comboProtocol"));
        QCOMPARE(m_board->read(1), QByteArray("C"));
        m_board->write("dump: ");
        QTRY_COMPARE(shown(), QStringLiteral("dump: ")); // at once
        QCOMPARE(answered(packet(0, QByteArray("../r.bin\0003", 10), 128), 2), QByteArray("\x06"
                                                                                          "C"));
        QCOMPARE(answered(packet(1, "xyz", 128), 1), QByteArray("\x06"));
        QCOMPARE(answered("\x04", 2), QByteArray("\x06"
                                                 "C"));
        m_board->write(packet(0, {}, 128) + "> ");
        QTRY_COMPARE(lastNotice(), QStringLiteral("文件接收完成！"));
        QVERIFY(waitForEnd());
        QCOMPARE(contentOf(m_root->filePath("r.bin")), QByteArray("xyz"));
        QVERIFY(text().contains(QStringLiteral("已保存：")));
        QTRY_COMPARE(shown(), QStringLiteral("dump: > "));
        QCOMPARE(m_board->read(1), QByteArray("\x06"));
        checkThePort();

        click("btnReceiveFiles");
        QCOMPARE(m_board->read(1), QByteArray("C"));
        answered(packet(0, QByteArray("r.bin\0003000", 10), 128), 2);
        answered(packet(1, "x", 1024), 1);
        QCOMPARE(child<QProgressBar>("progressTransfer")->text(), QStringLiteral("r (2).bin  34%"));
        click("btnReceiveFiles");
        QVERIFY(waitForEnd());
        QCOMPARE(m_board->read(5), QByteArray("\x18\x18\x18\x18\x18"));
        QVERIFY(text().endsWith(QStringLiteral("r (2).bin.part")));
        QCOMPARE(contentOf(m_root->filePath("r (2).bin.part")).size(), 1024);
    }

    void sendsOneFileByXmodem()
    {
        openPort();
        child<QComboBox>("comboProtocol")->setCurrentIndex(0);
        child<QComboBox>("comboPacketLength")->setCurrentIndex(0);
        beginSending({makeFile("a.bin", 1), makeFile("b.bin", 200)});
        QVERIFY(lastNotice().startsWith(QStringLiteral("XModem每次只能发送一个文件")));
        child<QListWidget>("listFiles")->setCurrentRow(1);
        click("btnSendFiles");
        QCOMPARE(answered("\x15", 132).left(3), QByteArray("\x01\x01\xFE")); // with a sum
        answered("\x06", 132);
        answered("\x06", 1);
        m_board->write("\x06");
        QVERIFY(waitForEnd());
        QCOMPARE(lastNotice(), QStringLiteral("文件传输完成！"));
    }

    // Without a protocol; what the board echoes is shown meanwhile.
    void sendsRaw()
    {
        openPort();
        child<QAbstractButton>("checkRaw")->click();
        child<QComboBox>("comboRawUnit")->setCurrentIndex(1);
        child<QSpinBox>("spinRawCount")->setValue(1);
        child<QSpinBox>("spinRawTime")->setValue(300);
        QVERIFY(writeFile(m_root->filePath("a.txt"), "one\ntwo\nlast"));
        beginSending({m_root->filePath("a.txt")});
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(m_board->read(4), QByteArray("one\n"));
        m_board->write("echo");
        QTRY_COMPARE(shown(), QStringLiteral("echo"));
        QCOMPARE(m_board->read(8), QByteArray("two\nlast"));
        QVERIFY(clock.elapsed() >= 500);
        QVERIFY(waitForEnd());
        QCOMPARE(lastNotice(), QStringLiteral("文件传输完成！"));
        click("btnSendFiles");
        QCOMPARE(m_board->read(4), QByteArray("one\n"));
        m_board->hangUp();
        QVERIFY(waitForEnd());
        QVERIFY(text().contains(QStringLiteral("传输错误\n串口已断开")));
    }

    void ordersAndRemovesFiles()
    {
        auto *list = child<FileList>("listFiles");
        QMimeData dropped;
        dropped.setUrls({QUrl::fromLocalFile(makeFile("a", 1)), QUrl::fromLocalFile(makeFile("b", 1)),
                         QUrl::fromLocalFile(makeFile("c", 1)), QUrl::fromLocalFile(m_root->path())});
        const auto drop = [&] {
            QDragEnterEvent enter({5, 5}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(list->viewport(), &enter);
            QDropEvent event({5, 5}, Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
            if (enter.isAccepted())
                QCoreApplication::sendEvent(list->viewport(), &event);
        };
        drop();
        const auto names = [&] {
            QStringList all;
            for (const QString &name : list->files())
                all += QFileInfo(name).fileName();
            return all.join(QString());
        };
        QCOMPARE(names(), QStringLiteral("abc"));
        list->setCurrentRow(2);
        QTest::keyClick(list, Qt::Key_Up, Qt::ControlModifier);
        QCOMPARE(names(), QStringLiteral("acb"));
        QTest::keyClick(list, Qt::Key_Delete);
        QCOMPARE(names(), QStringLiteral("ab"));
        openPort();
        click("btnSendFiles");
        QTest::keyClick(list, Qt::Key_Delete); // they are being sent
        drop();
        QCOMPARE(names(), QStringLiteral("ab"));
    }

    void asksBeforeClosing()
    {
        for (const bool isReceiving : {false, true}) {
            cleanup();
            init();
            openPort();
            if (isReceiving) {
                chooseFile(m_root->path());
                click("btnReceiveFiles");
                QCOMPARE(m_board->read(1), QByteArray("C"));
            } else {
                beginSending({makeFile("a.bin", 3000)});
                answered("C", 133);
            }
            Questions questions(0);
            QVERIFY(!m_page->mayClose());
            QCOMPARE(questions.asked, QStringList(QStringLiteral("正在传输文件，是否终止传输并退出？")));
            QVERIFY(!isEnabled("comboProtocol")); // it goes on
            questions.answer = 1;
            QVERIFY(m_page->mayClose());
            m_page->closeLinks();
            QTRY_VERIFY(m_page->isClosed());
            QCOMPARE(child<QAbstractButton>("btnOpen")->text(), QStringLiteral("打开串口"));
            QCOMPARE(m_board->read(5), QByteArray("\x18\x18\x18\x18\x18")); // the board is told
        }
    }

private:
    QString makeFile(const QString &name, int size)
    {
        if (!writeFile(m_root->filePath(name), QByteArray(size, 'x')))
            qFatal("cannot make a file");
        return m_root->filePath(name);
    }

    void beginSending(const QStringList &files)
    {
        chooseFiles(files);
        click("btnClearFiles");
        click("btnOpenFiles");
        click("btnSendFiles");
    }

    QByteArray answered(const QByteArray &answer, int count)
    {
        m_board->write(answer);
        return m_board->read(count, 20000);
    }

    QString text() { return child<QPlainTextEdit>("textTransfer")->toPlainText(); }
    QString sendButton() { return child<QAbstractButton>("btnSendFiles")->text(); }
    bool waitForEnd()
    {
        return QTest::qWaitFor([this] { return isEnabled("comboProtocol"); }, 20000);
    }
    // The page has its port again: what the board says is shown.
    void checkThePort()
    {
        QVERIFY(isPortShownOpen());
        QVERIFY(isEnabled("btnOpen"));
        QVERIFY(isEnabled("btnClearFiles"));
        receive("back again");
        QTRY_VERIFY(shown().endsWith("back again"));
    }
};

QTEST_MAIN(TestFileTransfer)
#include "test_filetransfer.moc"
