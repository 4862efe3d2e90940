// The network page by itself: what its controls say and refuse, how it shows
// messages, and what it remembers.

#include "networkpagetest.h"

#include "apppaths.h"
#include "bytespool.h"
#include "dialoganswers.h"
#include "qtmessagetip.h"
#include "settings.h"
#include "stateindicator.h"
#include "testfiles.h"

#include <QLabel>
#include <QNetworkInterface>
#include <QSettings>
#include <QTcpServer>
#include <QUdpSocket>

class TestNetworkPage : public NetworkPageTest
{
    Q_OBJECT

private slots:
    void controlsFollowTheMode_data();
    void controlsFollowTheMode();
    void opensAndCloses_data();
    void opensAndCloses();
    void refusesBadFields_data();
    void refusesBadFields();
    void offersThisMachinesAddresses();
    void remembersWhatOpened();
    void showsMessages();
    void keepsCharactersWhole();
    void stopsShowing();
    void savesAndClears();
    void needsAnOpenLink();
};

void TestNetworkPage::controlsFollowTheMode_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QStringList>("hidden");
    QTest::newRow("TCP Server") << QStringLiteral("2.本地IP地址") << QStringLiteral("3.服务器端口")
                                << QStringLiteral("开始监听")
                                << QStringList{"editServerAddress", "editDestinationAddress",
                                               "editDestinationPort"};
    QTest::newRow("TCP Client") << QStringLiteral("2.服务器IP地址") << QStringLiteral("3.服务器端口")
                                << QStringLiteral("建立连接")
                                << QStringList{"comboLocalAddress", "editDestinationAddress",
                                               "editDestinationPort", "comboClients", "btnDisconnect"};
    QTest::newRow("UDP") << QStringLiteral("本地IP地址") << QStringLiteral("2.本地端口")
                         << QStringLiteral("打开")
                         << QStringList{"editServerAddress", "comboClients", "btnDisconnect"};
}

void TestNetworkPage::controlsFollowTheMode()
{
    QFETCH(QString, address);
    QFETCH(QString, port);
    QFETCH(QString, caption);
    QFETCH(QStringList, hidden);
    child<QComboBox>("comboNetType")->setCurrentText(QTest::currentDataTag());
    QCOMPARE(this->caption(), caption);
    click("btnFold");
    QVERIFY(!child<QWidget>("configPanel")->isVisible());
    click("btnFold");
    QStringList labels;
    for (const QLabel *label : m_page->findChildren<QLabel *>()) {
        if (label->isVisible())
            labels.append(label->text());
    }
    QVERIFY(labels.contains(address) && labels.contains(port));
    QCOMPARE(labels.contains(QStringLiteral("目的地址:")), !hidden.contains("editDestinationAddress"));
    for (const char *name : {"comboLocalAddress", "editServerAddress", "editPort", "editDestinationAddress",
                             "editDestinationPort", "comboClients", "btnDisconnect"})
        QCOMPARE(child<QWidget>(name)->isVisible(), !hidden.contains(name));
}

void TestNetworkPage::opensAndCloses_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("idle");
    QTest::addColumn<QString>("opened");
    QTest::addColumn<QString>("closed");
    QTest::newRow("server") << int(Server) << QStringLiteral("停止监听") << QStringLiteral("开始监听")
                            << QStringLiteral("TCP服务监听[端口:%1]已启动!!")
                            << QStringLiteral("TCP服务监听[端口:%1]已关闭!!");
    QTest::newRow("udp") << int(Udp) << QStringLiteral("关闭") << QStringLiteral("打开")
                         << QStringLiteral("UDP服务监听[端口:%1]已启动!!") << QString();
}

void TestNetworkPage::opensAndCloses()
{
    QFETCH(int, type);
    QFETCH(QString, caption);
    QFETCH(QString, idle);
    QFETCH(QString, opened);
    QFETCH(QString, closed);
    auto *display = child<QtTerminalWidget>("recvBrowser");
    const QString howToBegin = display->placeholderText();
    for (int round = 0; round < 2; ++round) {
        m_notices->clear();
        const quint16 port = open(Type(type));
        QVERIFY(port > 0);
        QCOMPARE(lastNotice(), opened.arg(port));
        QCOMPARE(m_notices->last().at(1).toInt(), 0);
        QCOMPARE(this->caption(), caption);
        QVERIFY(fieldsAreEnabled(false));
        QVERIFY(child<StateIndicator>("stateIndicator")->isOn());
        QVERIFY(stateText().contains(QString::number(port)));
        QVERIFY(display->placeholderText().contains(QStringLiteral("等待数据")));
        click("btnOpen");
        if (!closed.isEmpty())
            QCOMPARE(lastNotice(), closed.arg(port));
        QCOMPARE(this->caption(), idle);
        QVERIFY(fieldsAreEnabled(true));
        QVERIFY(!child<StateIndicator>("stateIndicator")->isOn());
        QCOMPARE(display->placeholderText(), howToBegin);
    }
}

void TestNetworkPage::refusesBadFields_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("tip");
    const auto portTip = QStringLiteral("端口范围为1到65535！");
    for (const int type : {int(Server), int(Udp)}) {
        QTest::addRow("port 0 of %d", type) << type << QString() << "0" << portTip;
        QTest::addRow("port 65536 of %d", type) << type << QString() << "65536" << portTip;
        QTest::addRow("no address of %d", type) << type << "1.2.3"
                                                << "8000" << QStringLiteral("IP地址无效！");
        // An address that is another machine's.
        QTest::addRow("foreign address of %d", type) << type << "192.0.2.1"
                                                     << "8000" << QString();
        QTest::addRow("port in use by %d", type) << type << QString() << "taken" << QString();
    }
}

void TestNetworkPage::refusesBadFields()
{
    QFETCH(int, type);
    QFETCH(QString, address);
    QFETCH(QString, port);
    QFETCH(QString, tip);
    QTcpServer holder;
    QUdpSocket udpHolder;
    if (port == QLatin1String("taken")) {
        QVERIFY(holder.listen(QHostAddress::AnyIPv4));
        QVERIFY(udpHolder.bind(QHostAddress(QHostAddress::AnyIPv4)));
        port = QString::number(type == Server ? holder.serverPort() : udpHolder.localPort());
    }
    choose(Type(type));
    child<QComboBox>("comboLocalAddress")->setEditText(address);
    write("editPort", port);
    click("btnOpen");
    QCOMPARE(m_notices->at(0).at(0).toString(),
             (type == Server ? QStringLiteral("TCP服务监听[端口:%1]失败，请确认该端口是否可用!!")
                             : QStringLiteral("UDP服务监听[端口:%1]失败，请确认该端口是否可用!!"))
                 .arg(port));
    QCOMPARE(m_notices->last().at(1).toInt(), 255);
    if (tip.isEmpty()) // the second one says why
        QCOMPARE(lastNotice(), stateText());
    QVERIFY(fieldsAreEnabled(true));
    QCOMPARE(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Failed);
    QVERIFY(child<StateIndicator>("stateIndicator")->toolTip().contains(stateText()));
    if (!tip.isEmpty())
        QCOMPARE(QtMessageTip::current()->text(), tip);
    QVERIFY(!QSettings(AppPaths::configFile(), QSettings::IniFormat).contains("NetTools/Port"));

    // And after that a good port opens.
    child<QComboBox>("comboLocalAddress")->setEditText(QString());
    QVERIFY(open(Type(type)) > 0);
    QVERIFY(child<StateIndicator>("stateIndicator")->isOn());
}

void TestNetworkPage::offersThisMachinesAddresses()
{
    auto *box = child<QComboBox>("comboLocalAddress");
    QCOMPARE(box->itemText(0), QStringLiteral("所有网络接口"));
    QCOMPARE(box->currentText(), QStringLiteral("所有网络接口")); // though 127.0.0.1 is stored
    for (const QHostAddress &address : QNetworkInterface::allAddresses())
        QVERIFY(box->findText(address.toString()) > 0);
    // The chosen one alone is listened on.
    box->setEditText("127.0.0.1");
    const quint16 port = open(Server);
    QTcpSocket other;
    other.connectToHost("::1", port);
    QVERIFY(!other.waitForConnected(5000));
    other.connectToHost("127.0.0.1", port);
    QVERIFY(other.waitForConnected(5000));
}

void TestNetworkPage::remembersWhatOpened()
{
    const auto stored = [] {
        const QSettings file(AppPaths::configFile(), QSettings::IniFormat);
        return QStringList{file.value("NetTools/NetType").toString(),
                           file.value("NetTools/IPAddr").toString(), file.value("NetTools/Port").toString()};
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
             (QStringList{"TCP Client", all, "127.0.0.2", QString::number(host.serverPort())}));

    // Restored settings wait for an open link to close.
    Settings::instance().network.type = 0;
    Settings::instance().network.address = QStringLiteral("127.0.0.1");
    Settings::instance().network.port = 8000;
    m_page->reloadSettings();
    QCOMPARE(fields(*m_page).at(0), QString("TCP Client"));
    click("btnOpen");
    QCOMPARE(fields(*m_page), (QStringList{"TCP Server", all, "127.0.0.1", "8000"}));
    QCOMPARE(caption(), QStringLiteral("开始监听"));
}

void TestNetworkPage::showsMessages()
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
// even with bytes of others between them. A datagram is a message by itself.
void TestNetworkPage::keepsCharactersWhole()
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
    m_page->sltRecvSocketMessage(" UDP from ::1:9 ", bytes.left(4));
    m_page->sltRecvSocketMessage(" UDP from ::1:9 ", "next");
    QVERIFY2(shown().startsWith(QStringLiteral("[Tcp client  UDP from ::1:9 ] 温\uFFFD")),
             qPrintable(shown()));
    QVERIFY(shown().endsWith(QStringLiteral("\n[Tcp client  UDP from ::1:9 ] next")));
}

void TestNetworkPage::stopsShowing()
{
    m_page->sltRecvSocketMessage("a", "shown");
    click("checkStopShow");
    m_page->sltRecvSocketMessage("a", "hidden");
    QCOMPARE(shown(), QStringLiteral("[Tcp client a] shown"));
    QCOMPARE(m_page->spool().read(0, 100), QByteArray("shownhidden"));
    WAIT_EQUAL(child<QLabel>("labelRecvCount")->text(), QStringLiteral("接收字节: 11"));
    const QString name = m_root->filePath("shown.txt");
    DialogAnswers::instance().fileNames = [&](auto...) { return QStringList(name); };
    click("btnSaveRecv");
    QVERIFY(lastNotice().contains(QStringLiteral("不含“停止显示”期间的数据")));
    m_page->clearCounts();
    QCOMPARE(m_page->counts(), (QStringList{"0", "0"}));
}

void TestNetworkPage::savesAndClears()
{
    click("btnSaveRecv");
    QCOMPARE(lastNotice(), QStringLiteral("当前无数据需要保存！"));
    const QString name = m_root->filePath("saved.txt");
    DialogAnswers::instance().fileNames = [&](auto...) { return QStringList(name); };
    m_page->sltRecvSocketMessage("a", "text\r\n");
    click("btnSaveRecv");
    QCOMPARE(lastNotice(), QStringLiteral("文件保存完成!"));
    QVERIFY(contentOf(name).contains("[Tcp client a] text"));
    // Something new came: closing asks.
    Settings::instance().closeBehaviour = Settings::Ask;
    int asked = 0;
    DialogAnswers::instance().message = [&asked](auto, auto, auto) {
        ++asked;
        return 2; // not to be saved
    };
    m_page->sltRecvSocketMessage("a", "more");
    QVERIFY(m_page->mayClose());
    QCOMPARE(asked, 1);
    click("btnClearRecv");
    QCOMPARE(shown(), QString());
    QVERIFY(m_page->mayClose());
    QCOMPARE(asked, 1);
}

void TestNetworkPage::needsAnOpenLink()
{
    send("dropped");
    QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("请确认通信设备是否打开?"));
    QCOMPARE(sent(), qint64(0));
    open(Server);
    send("to nobody");
    QCOMPARE(lastNotice(), QStringLiteral("没有已连接的客户端，数据未发送！"));
    m_notices->clear();
    click("btnDisconnect"); // with nobody there
    QVERIFY(m_notices->isEmpty());
}

QTEST_MAIN(TestNetworkPage)
#include "test_networkpage.moc"
