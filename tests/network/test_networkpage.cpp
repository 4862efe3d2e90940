// The network page by itself: what its controls say and refuse, how it shows
// messages, and what it remembers.

#include "networkpagetest.h"

#include "apppaths.h"
#include "bytespool.h"
#include "qtmessagetip.h"
#include "settings.h"
#include "stateindicator.h"
#include "testfiles.h"
#include "udplink.h"

#include <QAbstractItemView>
#include <QNetworkInterface>
#include <QSettings>
#include <QTcpServer>
#include <QUdpSocket>

class TestNetworkPage : public NetworkPageTest
{
    Q_OBJECT

private slots:
    void opensAndCloses()
    {
        auto *display = child<QtTerminalWidget>("recvBrowser");
        const QString howToBegin = display->placeholderText();
        for (const Type type : {Server, Udp, Server}) {
            const bool isServer = type == Server;
            const quint16 port = open(type);
            QVERIFY(port > 0);
            const QString opened = (isServer ? "TCP" : "UDP") + QStringLiteral("服务监听[端口:%1]已启动!!");
            QCOMPARE(lastNotice(), opened.arg(port));
            QCOMPARE(lastKind(), 0);
            QCOMPARE(caption(), isServer ? QStringLiteral("停止监听") : QStringLiteral("关闭"));
            QVERIFY(fieldsAreEnabled(false));
            QVERIFY(child<StateIndicator>("stateIndicator")->isOn());
            QVERIFY(!child<QWidget>("btnOpen")->property("primary").toBool());
            QCOMPARE(stateText(), (isServer ? QStringLiteral("正在监听端口%1，已连接0个客户端")
                                            : QStringLiteral("正在接收端口%1的数据"))
                                      .arg(port));
            QVERIFY(display->placeholderText().contains(QStringLiteral("等待数据")));
            click("btnOpen");
            QCOMPARE(lastNotice(),
                     (isServer ? QStringLiteral("TCP服务监听[端口:%1]已关闭!!") : opened).arg(port));
            QCOMPARE(caption(), isServer ? QStringLiteral("开始监听") : QStringLiteral("打开"));
            QVERIFY(fieldsAreEnabled(true));
            QVERIFY(!child<StateIndicator>("stateIndicator")->isOn());
            QVERIFY(child<QWidget>("btnOpen")->property("primary").toBool());
            QCOMPARE(display->placeholderText(), howToBegin);
        }
    }

    void refusesBadFields()
    {
        QTcpServer holder;
        QUdpSocket udpHolder;
        QVERIFY(holder.listen(QHostAddress::AnyIPv4) && udpHolder.bind(QHostAddress(QHostAddress::AnyIPv4)));
        for (const Type type : {Server, Udp}) {
            init();
            const int taken = type == Server ? holder.serverPort() : udpHolder.localPort();
            const QString rows[][3] = {{"", "0", QStringLiteral("端口范围为1到65535！")},
                                       {"1.2.3", "8000", QStringLiteral("IP地址无效！")},
                                       {"192.0.2.1", "8000", ""}, // another machine's
                                       {"", QString::number(taken), ""}};
            choose(type);
            for (const auto &[address, port, tip] : rows) {
                m_notices->clear();
                child<QComboBox>("comboLocalAddress")->setEditText(address);
                write("editPort", port);
                click("btnOpen");
                QCOMPARE(m_notices->at(0).at(0).toString(),
                         (type == Server ? "TCP" : "UDP") +
                             QStringLiteral("服务监听[端口:%1]失败，请确认该端口是否可用!!").arg(port));
                QCOMPARE(m_notices->size(), tip.isEmpty() ? 2 : 1);
                QCOMPARE(lastKind(), 255);
                if (tip.isEmpty()) // the second one says why
                    QCOMPARE(lastNotice(), stateText());
                else
                    QCOMPARE(QtMessageTip::current()->text(), tip);
                QVERIFY(fieldsAreEnabled(true));
                QCOMPARE(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Failed);
                QCOMPARE(child<StateIndicator>("stateIndicator")->toolTip(),
                         QStringLiteral("上次错误：") + stateText());
            }
            QVERIFY(!QSettings(AppPaths::configFile(), QSettings::IniFormat).contains("NetTools/Port"));
            // And after that a good port opens.
            child<QComboBox>("comboLocalAddress")->setEditText(QString());
            const quint16 opened = open(type);
            QVERIFY(child<StateIndicator>("stateIndicator")->isOn());
            NetworkToolWidget other;
            const QSignalSpy notices(&other, &NetworkToolWidget::signalNotify);
            other.findChild<QComboBox *>("comboNetType")->setCurrentIndex(type);
            other.findChild<QLineEdit *>("editPort")->setText(QString::number(opened));
            other.findChild<QAbstractButton *>("btnOpen")->click();
            QVERIFY(notices.last().at(0).toString().contains(QStringLiteral("网络调试助手")));
        }
    }

    void offersThisMachinesAddresses()
    {
        auto *box = child<QComboBox>("comboLocalAddress");
        QCOMPARE(box->currentText(), QStringLiteral("所有网络接口")); // though 127.0.0.1 is stored
        for (const QHostAddress &address : QNetworkInterface::allAddresses())
            QVERIFY(box->findText(address.toString()) > 0);
        box->setCurrentIndex(1);
        box->addItem("of a cable that is unplugged");
        box->showPopup();
        box->hidePopup();
        QVERIFY(box->currentIndex() == 1 && box->findText("of a cable that is unplugged") < 0);
        for (int i = 0; i < box->count(); ++i)
            QVERIFY(box->view()->minimumWidth() >
                    box->view()->fontMetrics().horizontalAdvance(box->itemText(i)));
        QCOMPARE(box->lineEdit()->placeholderText(), QStringLiteral("所有网络接口"));
        // The chosen one alone is listened on.
        box->setEditText("127.0.0.9");
        box->showPopup(); // lists them again
        box->hidePopup();
        const quint16 port = open(Server);
        QTcpSocket other;
        other.connectToHost("::1", port);
        QVERIFY(!other.waitForConnected(5000));
        other.connectToHost("127.0.0.9", port);
        QVERIFY(other.waitForConnected(5000));
    }

    void remembersWhatOpened()
    {
        const auto stored = [] {
            const QSettings file(AppPaths::configFile(), QSettings::IniFormat);
            return QStringList{file.value("NetTools/NetType").toString(),
                               file.value("NetTools/IPAddr").toString(),
                               file.value("NetTools/Port").toString()};
        };
        const auto fields = [](const NetworkToolWidget &page) {
            return QStringList{page.findChild<QComboBox *>("comboNetType")->currentText(),
                               page.findChild<QComboBox *>("comboLocalAddress")->currentText(),
                               page.findChild<QLineEdit *>("editServerAddress")->text(),
                               page.findChild<QLineEdit *>("editPort")->text()};
        };
        const auto all = QStringLiteral("所有网络接口");
        const QString server = QString::number(open(Server));
        QCOMPARE(stored(), (QStringList{"0", "0.0.0.0", server}));
        click("btnOpen");
        child<QComboBox>("comboLocalAddress")->setEditText("::1");
        const QString udp = QString::number(open(Udp));
        QCOMPARE(stored(), (QStringList{"2", "::1", udp}));
        Settings::load();
        QCOMPARE(fields(NetworkToolWidget()), (QStringList{"UDP", "::1", "127.0.0.1", udp}));
        click("btnOpen");

        QTcpServer host;
        QVERIFY(host.listen(QHostAddress::AnyIPv4));
        write("editServerAddress", "127.0.0.2");
        open(Client, host.serverPort());
        QCOMPARE(stored().at(0), QString("2")); // not before it is connected
        WAIT_EQUAL(stored(), (QStringList{"1", "127.0.0.2", QString::number(host.serverPort())}));
        Settings::load();
        QCOMPARE(fields(NetworkToolWidget()),
                 (QStringList{"TCP Client", "::1", "127.0.0.2", QString::number(host.serverPort())}));

        // Restored settings wait for an open link to close.
        QVERIFY(Settings::restoreDefaults());
        m_page->reloadSettings();
        QCOMPARE(fields(*m_page).at(0), QString("TCP Client"));
        click("btnOpen");
        QCOMPARE(fields(*m_page), (QStringList{"TCP Server", all, "127.0.0.1", "8000"}));
        QCOMPARE(caption(), QStringLiteral("开始监听"));
        Settings::instance().network.address = QStringLiteral("192.0.2.1"); // was another network's
        m_page->reloadSettings();
        QCOMPARE(fields(*m_page).at(1), QString("192.0.2.1"));
        QTcpSocket deaf; // what is typed stays after a refusal
        QVERIFY(deaf.bind(QHostAddress(QHostAddress::LocalHost), 0, QAbstractSocket::DontShareAddress));
        open(Client, deaf.localPort());
        WAIT_EQUAL(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Failed);
        QCOMPARE(fields(*m_page).at(3), QString::number(deaf.localPort()));
    }

    // What was changed and not opened, and what a link of another kind has no use for.
    void keepsFields()
    {
        const auto edit = [this](const char *field, const char *text) {
            write(field, text);
            emit child<QLineEdit>(field)->editingFinished();
        };
        choose(Udp);
        child<QComboBox>("comboLocalAddress")->setEditText("127.0.0.1");
        edit("editServerAddress", "board.local");
        edit("editDestinationAddress", "10.0.0.7");
        edit("editDestinationPort", "7000");
        edit("editPort", "9000");
        edit("editPort", "0"); // no port
        click("checkReconnect");
        const auto restart = [this] {
            m_page.reset();
            Settings::instance() = Settings();
            Settings::load();
            m_page = std::make_unique<NetworkToolWidget>();
            QStringList fields{child<QComboBox>("comboNetType")->currentText(),
                               child<QComboBox>("comboLocalAddress")->currentText()};
            for (const char *field :
                 {"editServerAddress", "editPort", "editDestinationAddress", "editDestinationPort"})
                fields.append(child<QLineEdit>(field)->text());
            return fields;
        };
        QCOMPARE(restart(), (QStringList{"UDP", "127.0.0.1", "board.local", "9000", "10.0.0.7", "7000"}));
        QVERIFY(child<QAbstractButton>("checkReconnect")->isChecked());
        QVERIFY(open(Udp) > 0); // from here on the port is that of the last link
        click("btnOpen");
        QSettings(AppPaths::configFile(), QSettings::IniFormat).setValue("NetTools/Port", 9100);
        QCOMPARE(restart(), (QStringList{"UDP", "127.0.0.1", "board.local", "9100", "10.0.0.7", "7000"}));
    }

    void showsMessages()
    {
        const auto receive = [this](const char *name, const QByteArray &data) {
            m_page->sltRecvSocketMessage(name, data);
            return shown();
        };
        QCOMPARE(receive("10.0.0.1 7", "one"), QString("[Tcp client 10.0.0.1 7] one"));
        QCOMPARE(receive("b", "two\r\n"), QString("[Tcp client 10.0.0.1 7] one\n[Tcp client b] two"));
        QVERIFY(receive("b", "four\r\n\r\n").endsWith("\n[Tcp client b] two\n[Tcp client b] four\n"));
        QVERIFY(receive("b", "\n\r").endsWith("\n[Tcp client b] four\n[Tcp client b] \n\n"));
        QVERIFY(receive("b", "").endsWith("\n\n[Tcp client b] "));
        QVERIFY(receive("c", "\r\n").endsWith("\n[Tcp client b] \n[Tcp client c] "));
        QCOMPARE(received(), qint64(3 + 5 + 8 + 2 + 2));
        // Hexadecimal has no headers and drops nothing.
        click("radioRecvHex");
        receive("c", "\x0a\xff");
        QVERIFY(receive("d", "\r\n").endsWith("\n[Tcp client c] \n0A FF 0D 0A "));
        click("radioRecvText");
        QVERIFY(receive("d", "x").endsWith("0D 0A \n[Tcp client d] x"));

        click("btnClearRecv");
        click("checkTimeStamp");
        receive("d", "one");
        click("radioRecvHex");
        const QRegularExpression stamped("^\\[\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\] \\[Tcp client d\\] "
                                         "one\n\\[\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\] \\[Tcp client d\\] 02 $");
        QVERIFY2(stamped.match(receive("d", "\x02")).hasMatch(), qPrintable(shown()));
    }

    // Peers are streams of their own: the halves of a character belong together,
    // even with bytes of others between them. Each datagram is a message of its own.
    void keepsCharactersWhole()
    {
        const QByteArray bytes = QStringLiteral("温度").toUtf8();
        m_page->sltRecvSocketMessage("a", bytes.left(4));
        m_page->sltRecvSocketMessage("b", bytes);
        m_page->sltRecvSocketMessage("a", bytes.mid(4));
        QCOMPARE(shown(), QStringLiteral("[Tcp client a] 温\n[Tcp client b] 温度\n[Tcp client a] 度"));
        // A peer that joins again under the same name is a new stream.
        m_page->sltRecvSocketMessage("a", bytes.left(2));
        m_page->sltClientDisconnected("a");
        m_page->sltRecvSocketMessage("a", "new");
        QVERIFY(shown().endsWith(QStringLiteral("\n[Tcp client a] new")));
        choose(Udp);
        click("btnClearRecv");
        m_page->sltRecvSocketMessage("u", bytes.left(4));
        m_page->sltRecvSocketMessage("u", "next");
        QCOMPARE(shown(), QStringLiteral("[Tcp client u] 温\uFFFD\n[Tcp client u] next"));
    }

    void stopsShowing()
    {
        m_page->sltRecvSocketMessage("a", "shown");
        click("checkStopShow");
        m_page->sltRecvSocketMessage("a", "hidden");
        QCOMPARE(shown(), QStringLiteral("[Tcp client a] shown"));
        QCOMPARE(m_page->spool().read(0, 100), QByteArray("shownhidden"));
        WAIT_EQUAL(child<QLabel>("labelRecvCount")->text(), QStringLiteral("接收字节: 11"));
        chooseFile(m_root->filePath("shown.txt"));
        click("btnSaveRecv");
        QVERIFY(lastNotice().contains(QStringLiteral("不含“停止显示”期间的数据")));
        QVERIFY(contentOf(m_root->filePath("shown.txt")).contains("[Tcp client a] shown"));
        m_page->clearCounts();
        QCOMPARE(m_page->counts(), (QStringList{"0", "0"}));
    }

    void asksForWhatIsUnsaved()
    {
        Settings::instance().closeBehaviour = Settings::Ask;
        const Questions questions(2); // not to be saved
        m_page->sltRecvSocketMessage("a", "more");
        QVERIFY(m_page->mayClose());
        QCOMPARE(questions.asked.size(), 1);
        click("btnClearRecv");
        QCOMPARE(shown(), QString());
        QVERIFY(m_page->mayClose());
        QCOMPARE(questions.asked.size(), 1);
        // What reading has left with the socket is asked for, too.
        const quint16 port = open(Udp);
        m_page->findChild<UdpLink *>()->setReading(false);
        QUdpSocket().writeDatagram("unread", QHostAddress::LocalHost, port);
        QVERIFY(m_page->mayClose());
        QCOMPARE(questions.asked.size(), 2);
        const std::function<void()> reads[] = {[this] { m_page->sltReadyFromUdp(); },
                                               [this] { m_page->sltReadyFromHost(); },
                                               [this] { QVERIFY(m_page->saveBeforeExit()); }};
        qint64 expected = received();
        for (const auto &read : reads) {
            QUdpSocket().writeDatagram("more", QHostAddress::LocalHost, port);
            read();
            QCOMPARE(received(), expected += 4);
        }
    }

    void needsAnOpenLink()
    {
        send("dropped");
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("请确认通信设备是否打开?"));
        QCOMPARE(sent(), qint64(0));
        open(Server);
        send("to nobody");
        QCOMPARE(lastNotice(), QStringLiteral("没有已连接的客户端，数据未发送！"));
        m_notices->clear();
        click("btnDisconnect"); // without a client
        // Sending automatically tells it once, and again when a client has come and gone.
        click("checkAutoSend");
        m_page->sltSendData("x");
        QVERIFY(m_notices->isEmpty());
        m_page->sltNewClientConnected("a");
        m_page->sltClientDisconnected("a");
        m_page->sltSendData("x");
        m_page->sltSendData("x");
        QCOMPARE(m_notices->size(), 3);
        m_page->sltNewClientConnected("b");
        child<QComboBox>("comboClients")->setCurrentIndex(1);
        m_page->sltClientDisconnected("a");
        QVERIFY(!lastNotice().contains(QStringLiteral("发送对象")));
        m_page->sltClientDisconnected("b");
        QCOMPARE(lastNotice(), QStringLiteral("发送对象[b]已断开连接，请重新选择客户端！"));
        child<QComboBox>("comboClients")->setCurrentIndex(0);
        m_notices->clear();
        click("btnOpen");
        open(Server);
        click("checkAutoSend");
        m_page->sltSendData("x");
        QCOMPARE(m_notices->size(), 3); // closed, opened, and told again
    }
};

QTEST_MAIN(TestNetworkPage)
#include "test_networkpage.moc"
