// The camera page's registers, one by one and as tables, against a board in a
// process of its own.

#include "camerapagetest.h"
#include "camerareceiver.h"
#include "datamanagerwidget.h"
#include "dialoganswers.h"
#include "linksession.h"
#include "registersession.h"
#include "settings.h"

#include <QAbstractItemModel>
#include <QAction>
#include <QLabel>
#include <QSpinBox>
#include <QTableView>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QUdpSocket>

class TestCameraRegisters : public CameraPageTest
{
    Q_OBJECT

private slots:
    // The board's registers hold seven times their address.
    void readsAndWritesRegisters()
    {
        BoardProcess board;
        QVERIFY(connectBoard(board, {"--value-length", "2"}));
        child<QSpinBox>("spinValueLength")->setValue(2);
        QCOMPARE(readValue("3008"), QStringLiteral("5038"));
        QCOMPARE(tip(), QString());
        auto *value = child<QLineEdit>("editRegisterValue");
        value->setText("ffee");
        click("btnWriteRegister");
        QCOMPARE(readValue("3008"), QStringLiteral("FFEE"));
        QCOMPARE(m_page->counts().at(0).toInt(), 16 + 16 + 16);
        auto *readsBack = m_page->findChild<QAction *>("actionVerifyWrites");
        QVERIFY(!readsBack->isChecked());
        readsBack->trigger();
        click("btnWriteRegister");
        const auto confirmed = QStringLiteral("寄存器[3008]写入FFEE，回读一致！");
        QTRY_COMPARE_WITH_TIMEOUT(lastNotice().section(QStringLiteral("（"), 0, 0), confirmed, 20000);
        DataManagerWidget *const writes = openTable("btnWriteTable", {{"3001", "11"}, {"00DD", "22"}});
        press(writes, "btnConfirm"); // the board is silent about the second
        QTRY_COMPARE_WITH_TIMEOUT(progress(writes), QString("已完成 2/2，不符 0，无应答 1，错误 0"), 20000);
        readsBack->trigger();
        for (const auto &error : {std::make_pair("4000", "没有这个寄存器!"),
                                  std::make_pair("00EE", "寄存器读取错误，错误代码[5]!")}) {
            child<QLineEdit>("editRegisterAddress")->setText(error.first);
            click("btnReadRegister");
            QTRY_COMPARE_WITH_TIMEOUT(tip(), QString::fromUtf8(error.second), 20000);
        }
        child<QSpinBox>("spinAddressLength")->setValue(5);
        m_notices->clear(); // a slow board's
        click("btnReadRegister");
        QCOMPARE(tip(), QStringLiteral("寄存器地址长度设置错误[1~4]"));
        m_page->findChild<RegisterSession *>()->advanceSingle();
        QVERIFY(!lastNotice().contains(QStringLiteral("没有应答")));
        child<QSpinBox>("spinAddressLength")->setValue(2);
        child<QSpinBox>("spinValueLength")->setValue(0);
        value->setText("5A");
        click("btnWriteRegister");
        QCOMPARE(tip(), QStringLiteral("寄存器值长度设置错误[1~4]"));
    }

    void reportsBadReplies()
    {
        const QByteArray begin("ORVN\0", 5);
        m_page->SltRecvImageData("board", begin + QByteArray::fromHex("1000000011010830000000"));
        QCOMPARE(tip(), QStringLiteral("数据包接收错误!"));
        m_page->SltRecvImageData("board", begin + QByteArray::fromHex("11000000110008305a5a0000"));
        QCOMPARE(tip(), QStringLiteral("当前数据长度与配置不符合！"));
    }

    // Only what the asked board says becomes the value.
    void readsFromTheBoardAsked()
    {
        auto *value = child<QLineEdit>("editRegisterValue");
        const std::tuple<const char *, const char *, const char *, const char *> refused[] = {
            {"123456", "5A", "btnReadRegister", "数值超出设置的长度！"},
            {"5", "5A", "btnReadRegister", "请输入2到8位十六进制数！"},
            {"3008", "5A5", "btnWriteRegister", "数值超出设置的长度！"}};
        for (const auto &[address, number, button, why] : refused) {
            child<QLineEdit>("editRegisterAddress")->setText(address);
            value->setText(number);
            click(button);
            QCOMPARE(tip(), QString(why));
        }
        QCOMPARE(m_page->focusWidget(), value);
        QVERIFY(m_notices->isEmpty()); // nothing was to be sent
        const quint16 port = openPort(Udp);
        QUdpSocket asked;
        QUdpSocket other;
        QVERIFY(asked.bind(QHostAddress(QHostAddress::LocalHost)) &&
                other.bind(QHostAddress(QHostAddress::LocalHost)));
        child<QLineEdit>("editCameraDestinationPort")->setText(QString::number(asked.localPort()));
        const auto reply = [this, port](QUdpSocket &board, const char *text) {
            const int before = m_page->counts().at(1).toInt();
            const QByteArray packet = "ORVN" + QByteArray::fromHex(text);
            board.writeDatagram(packet, QHostAddress::LocalHost, port);
            return QTest::qWaitFor([&] { return m_page->counts().at(1).toInt() == before + packet.size(); },
                                   20000);
        };
        click("btnReadRegister");
        QCOMPARE(value->text(), QString());                      // no answer leaves none
        m_page->findChild<RegisterSession *>()->advanceSingle(); // its timer does in a second
        QCOMPARE(lastNotice(), QStringLiteral("寄存器[3008]没有应答！"));
        QVERIFY(reply(asked, "00100000001100aaaa010000")); // the board is known now
        QVERIFY(reply(other, "001000000011000830020000"));
        QCOMPARE(value->text(), QString());
        QVERIFY(reply(asked, "001000000011000830040000"));
        QCOMPARE(value->text(), QStringLiteral("04"));
        click("btnReadRegister");
        QTest::keyClicks(value, "77"); // meanwhile
        QVERIFY(reply(asked, "001000000011000830040000"));
        QCOMPARE(value->text(), QStringLiteral("77"));
        child<QComboBox>("comboCameraDevice")->setCurrentIndex(1);
        click("btnReadRegister");
        QVERIFY(reply(asked, "011000000011000830090000"));
        QCOMPARE(value->text(), QStringLiteral("09"));
        m_notices->clear();
        for (const auto end : {&LinkSession::closing, &LinkSession::closed}) { // then nothing is expected
            click("btnReadRegister");
            emit(m_page->findChild<LinkSession *>()->*end)();
            QCoreApplication::processEvents();
            m_page->findChild<RegisterSession *>()->advanceSingle();
            QCOMPARE(m_notices->size(), 0);
        }
        child<QSpinBox>("spinAddressLength")->setValue(3); // counts for tables, too
        DataManagerWidget *const writes = openTable("btnWriteTable", {{"123456", "11"}});
        press(writes, "btnConfirm");
        QTRY_COMPARE(progress(writes), QStringLiteral("已完成 1/1"));

        // Asked by a broadcast, any of them may answer.
        for (const auto &[host, mayAnswer] : {std::pair{"10.0.0.8", false},
                                              {"10.0.0.7", true},
                                              {"10.0.0.255", true},
                                              {"255.255.255.255", true},
                                              {"239.1.2.3", true}})
            QCOMPARE(CameraReceiver().mayAnswer("10.0.0.7:9", QHostAddress(host), 8000), mayAnswer);
    }

    void readsAndWritesTables()
    {
        BoardProcess board;
        QVERIFY(connectBoard(board));
        QVERIFY(m_page->mayClose());
        DataManagerWidget *const writes =
            openTable("btnWriteTable", {{"3001", "11"}, {"3002", "1234"}, {"3003", "33"}});
        press(writes, "btnConfirm");
        QTRY_COMPARE_WITH_TIMEOUT(progress(writes), QStringLiteral("已完成 2/2，未发送 1"), 20000);
        // The board is silent about the third and refuses the fourth.
        DataManagerWidget *const reads =
            openTable("btnReadTable", {{"3001", ""}, {"3002", ""}, {"00DD", "old"}, {"4000", "old"}});
        press(reads, "btnConfirm");
        press(writes, "btnConfirm");
        QCOMPARE(lastNotice(), QStringLiteral("另一个寄存器表正在读写，请稍候！"));
        QTRY_COMPARE_WITH_TIMEOUT(progress(reads), QStringLiteral("已完成 4/4，无应答 1，错误 1"), 20000);
        const QStringList values{"11", "0E", "", ""}; // a board's register holds seven times its address
        for (int row = 0; row < values.size(); ++row)
            QCOMPARE(reads->findChild<QTableView *>()->model()->index(row, 2).data().toString(),
                     values.at(row));
        writes->activateWindow();
        click("btnReadTable");
        QTRY_VERIFY(reads->isActiveWindow());
        int questions = 0;
        DialogAnswers::instance().message = [&questions](auto...) { return questions++; }; // cancelled
        QVERIFY(!m_page->mayClose());
        QCOMPARE(questions, 1);
    }

    // What the menu does, and what another device does to a table that runs.
    void comparesAndReports()
    {
        BoardProcess board;
        QVERIFY(connectBoard(board));
        openTable("btnReadTable", {{"3001", "07"}, {"3002", "0F"}});
        DataManagerWidget *const writes = openTable("btnWriteTable", {});
        const auto trigger = [writes](const char *name) {
            writes->findChild<QAction *>(QLatin1String(name))->trigger();
        };
        trigger("actionCopyReadTable");
        trigger("actionCompareRegisters");
        const auto compared = QStringLiteral("已完成 2/2，不同 1，无应答 0，错误 0");
        QTRY_COMPARE_WITH_TIMEOUT(progress(writes), compared, 20000);
        auto *view = writes->findChild<QTableView *>();
        QCOMPARE(view->model()->index(1, 2).data().toString(), QStringLiteral("0F ≠ 板上 0E"));
        const QTemporaryDir folder;
        const QString name = folder.filePath("report.csv");
        DialogAnswers::instance().fileNames = [name](auto...) { return QStringList(name); };
        trigger("actionSaveReport");
        QFile report(name);
        QVERIFY(report.open(QIODevice::ReadOnly));
        QVERIFY(report.readAll().contains("2,3002,0F,0E,不同,1,"));
        trigger("actionDifferencesOnly");
        DialogAnswers::instance().message = [](auto...) { return 0; };
        press(writes, "btnConfirm"); // would write the hidden row, too
        QCOMPARE(progress(writes), QStringLiteral("报告已保存"));
        view->selectAll();
        trigger("actionSelectedRegisters");
        QTRY_COMPARE_WITH_TIMEOUT(progress(writes), QStringLiteral("已完成 1/1"), 20000);

        auto *delay = writes->findChild<QSpinBox *>("spinBatchDelay");
        trigger("actionDifferencesOnly");
        trigger("actionBatchOptions");
        delay->setValue(10000);
        press(writes, "btnConfirm");
        QTRY_COMPARE_WITH_TIMEOUT(progress(writes), QStringLiteral("正在进行 1/2"), 20000);
        child<QComboBox>("comboCameraDevice")->setCurrentIndex(1);
        QCOMPARE(progress(writes), QStringLiteral("已停止 1/2，设备、长度或组编号已更改"));
        delay->setValue(0);
    }

    void stopsTables()
    {
        BoardProcess board;
        QVERIFY(connectBoard(board));
        DataManagerWidget *const table =
            openTable("btnReadTable", QVector<QStringList>(90, {"00DD", ""}).toList());
        auto *confirm = table->findChild<QPushButton *>("btnConfirm");
        const QList<std::function<void()>> ends{
            [table] { press(table, "btnStopRegisters"); }, [table] { press(table, "btnCancel"); },
            [&board] { board.stop(); }, // the next request reaches no board
        };
        for (const auto &end : ends) {
            table->show();
            press(table, "btnConfirm");
            QTRY_VERIFY_WITH_TIMEOUT(progress(table).startsWith(QStringLiteral("正在进行")), 20000);
            end();
            QTRY_VERIFY_WITH_TIMEOUT(confirm->isEnabled(), 20000);
            QVERIFY(progress(table).startsWith(QStringLiteral("已停止")));
        }
        openPort(Udp);
        child<QLineEdit>("editCameraDestinationPort")->setText("9");
        table->show();
        press(table, "btnConfirm");
        m_page.reset(); // while it runs
    }

    // Of the registers, and of the link that was opened.
    void keepsSettings()
    {
        QTcpServer board;
        QVERIFY(board.listen());
        choose(Client);
        child<QLineEdit>("editCameraServerAddress")->setText("localhost");
        child<QLineEdit>("editCameraPort")->setText(QString::number(board.serverPort()));
        m_page->SltRecvImageData("a", "this is no packet");
        click("btnCameraOpen");
        QTRY_COMPARE(int(Settings::instance().camera.type), int(Client)); // once it is open
        QVERIFY(child<QLabel>("labelImageError")->isHidden());
        m_page->SltRecvImageData("b", "this is no packet");
        QCOMPARE(child<QLabel>("labelImageError")->text(), QStringLiteral("数据错误: 1"));
        click("btnCameraOpen");
        QTRY_VERIFY(!isOpen());
        const QString port = QString::number(openPort(Udp));
        click("btnCameraOpen");
        child<QComboBox>("comboCameraLocalAddress")->setEditText("127.0.0.1");
        child<QLineEdit>("editCameraDestinationAddress")->setText("127.0.0.2");
        child<QLineEdit>("editCameraDestinationPort")->setText("1234");
        child<QLineEdit>("editCameraPort")->setText(port);
        click("btnCameraOpen");
        QVERIFY(isOpen());
        child<QSpinBox>("spinAddressLength")->setValue(3);
        child<QSpinBox>("spinValueLength")->setValue(4);
        child<QSpinBox>("spinValueLength")->setValue(7); // nothing that could be used
        Settings::instance() = Settings();
        Settings::load();
        const CameraDebugWidget again;
        QCOMPARE(fieldsOf(again), QString("UDP 127.0.0.1 localhost %1 127.0.0.2 1234 921600 3 4").arg(port));
        Settings::instance() = Settings(); // restored: a link that is open keeps its fields
        m_page->reloadSettings();
        QCOMPARE(child<QSpinBox>("spinAddressLength")->value(), 2);
        QCOMPARE(child<QLineEdit>("editCameraPort")->text(), port);
        click("btnCameraOpen");
        m_page->reloadSettings();
        QCOMPARE(fieldsOf(*m_page),
                 QString("TCP Server 所有网络接口 127.0.0.1 8000 127.0.0.1 8000 921600 2 1"));
    }

private:
    // All that is kept: the link, and the lengths of addresses and values.
    static QString fieldsOf(const CameraDebugWidget &page)
    {
        QStringList texts;
        for (const char *name :
             {"comboCameraProtocol", "comboCameraLocalAddress", "editCameraServerAddress", "editCameraPort",
              "editCameraDestinationAddress", "editCameraDestinationPort", "comboCameraBaudRate",
              "spinAddressLength", "spinValueLength"}) {
            const auto *field = page.findChild<QWidget *>(name);
            texts += field->property(field->inherits("QComboBox") ? "currentText" : "text").toString();
        }
        return texts.join(' ');
    }
    // With these addresses and values.
    DataManagerWidget *openTable(const char *button, const QList<QStringList> &rows)
    {
        child<QPushButton>(button)->click();
        DataManagerWidget *table = nullptr;
        for (auto *dialog : m_page->findChildren<DataManagerWidget *>())
            if (dialog->windowTitle().contains(child<QPushButton>(button)->text()))
                table = dialog;
        QAbstractItemModel *model = table->findChild<QTableView *>()->model();
        for (int row = 0; row < rows.size(); ++row)
            for (int column = 0; column < 2; ++column)
                model->setData(model->index(row, column + 1), rows.at(row).at(column));
        return table;
    }
    static void press(DataManagerWidget *table, const char *button)
    {
        QTest::mouseClick(table->findChild<QPushButton *>(QLatin1String(button)), Qt::LeftButton);
    }
    static QString progress(DataManagerWidget *table)
    {
        return table->findChild<QLabel *>("labelRegisterProgress")->text();
    }
    QString readValue(const char *address)
    {
        child<QLineEdit>("editRegisterAddress")->setText(address);
        click("btnReadRegister");
        auto *value = child<QLineEdit>("editRegisterValue");
        return QTest::qWaitFor([value] { return !value->text().isEmpty(); }, 20000) ? value->text()
                                                                                    : QString();
    }
};

QTEST_MAIN(TestCameraRegisters)
#include "test_camera_registers.moc"
