// The camera page's four links: boards in processes of their own, their faults,
// and links that break in the middle of a frame.

#include "camerapagetest.h"
#include "frameshow.h"
#include "ptypeer.h"
#include "seriallink.h"
#include "serialports.h"

#include <QCheckBox>
#include <QSpinBox>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>

class TestCameraLinks : public CameraPageTest
{
    Q_OBJECT

private slots:
    void showsTwoDevicesOverUdp()
    {
        const QString port = QString::number(openPort(Udp));
        BoardProcess board;
        QVERIFY(board.startOnNetwork("udp", {"--act", "camera", "--test-pattern", "--big-endian", "--width",
                                             "160", "--height", "120", "--fps", "10", "--devices", "2",
                                             "--delay", "0", "--to-port", port}));
        child<QCheckBox>("checkBigEndian")->setChecked(true);
        QTRY_VERIFY_WITH_TIMEOUT(hasPicture(0) && hasPicture(1), 20000);
        for (int device = 0; device < 2; ++device) { // bars: white, yellow, ...
            QTRY_COMPARE(shown(device, 10, 10), qRgb(0xf8, 0xfc, 0xf8));
            QCOMPARE(shown(device, 30, 10), qRgb(0xf8, 0xfc, 0));
        }
    }

    void sendsAndCloses_data()
    {
        QTest::addColumn<int>("protocol");
        QTest::newRow("a server's client") << int(Server);
        QTest::newRow("a client") << int(Client);
        QTest::newRow("a serial port") << int(Serial);
    }

    // A request leaves over each link, and one that was sent last leaves before it closes.
    void sendsAndCloses()
    {
        QFETCH(int, protocol);
        begin(Protocol(protocol));
        m_page->SltReadWriteRegister("3008", "", 7);
        QCOMPARE(lastNotice(), QStringLiteral("没有已连接的摄像头，数据未发送！"));
        QVERIFY(plugIn());
        write("x");
        QTRY_COMPARE(m_page->counts().at(1), QString("1")); // each side knows of the other
        m_page->SltReadWriteRegister("nowhere", "", 7);
        m_page->SltReadWriteRegister("3008", "nothing", 7);
        const QByteArray head = QByteArray("ORVN").append('\0'); // and the device
        m_page->SltReadWriteRegister("3008", "", 7);
        const int size = 4 + 1 + 4 + 1 + 2 + child<QSpinBox>("spinAddressLength")->value() + 2;
        const QByteArray request = read(size);
        QCOMPARE(request.size(), size);
        QVERIFY(request.startsWith(head) && request.at(9) == 0x11);
        QTRY_COMPARE(m_page->counts().at(0), QString::number(size));

        m_page->SltReadWriteRegister("3008", "", 7);
        const QSignalSpy closed(m_page.get(), &CameraDebugWidget::signalClosed);
        m_page->closeLinks();
        QCOMPARE(read(size), request);
        QTRY_VERIFY(m_page->isClosed());
        QCOMPARE(closed.count(), 1);
        QVERIFY(!isOpen());
        if (protocol != Serial) // which closes before the system has reported the last bytes
            QCOMPARE(m_page->counts().at(0), QString::number(2 * size));
    }

    // A sender of datagrams does not report its end.
    void limitsSendersOfDatagrams()
    {
        choose(Udp);
        auto *viewer = child<ImageViewer>("imageViewer");
        viewer->setFixedSize(600, 500);
        const QImage closed = viewer->grab().toImage();
        const quint16 port = openPort(Udp);
        QVERIFY(viewer->grab().toImage() != closed); // other hints
        for (int i = 0; i < 17; ++i)
            (new QUdpSocket(m_page.get()))->writeDatagram("ORVN", QHostAddress::LocalHost, port);
        QTRY_COMPARE_WITH_TIMEOUT(lastNotice(), QStringLiteral("UDP发送方超过16个，图像可能不完整！"), 20000);
        click("btnCameraOpen");
        QTRY_COMPARE(lastNotice(), QStringLiteral("摄像头连接已关闭！"));
        QCOMPARE(viewer->grab().toImage(), closed);
    }

    void forgetsHalfAFrame_data() { sendsAndCloses_data(); }

    // The link breaks in the middle of a red picture. The next one is blue, and
    // comes in two pieces, so that no header at the start of a chunk mends anything.
    void forgetsHalfAFrame()
    {
        QFETCH(int, protocol);
        const bool isJpeg = protocol == Client;
        const QByteArray announcement =
            "ORVN" + QByteArray::fromHex("000f000000010502000100"); // RGB888, 2 x 1
        const QByteArray header = "ORVN" + QByteArray::fromHex("001200000002");
        const QByteArray red =
            isJpeg ? jpegFile(40, Qt::red).left(400) : announcement + header + QByteArray::fromHex("ff0000");
        const QByteArray blue =
            isJpeg ? jpegFile(40, Qt::blue) : header + QByteArray::fromHex("0000ff0000ff") + "cc";
        child<QCheckBox>("checkJpegData")->setChecked(isJpeg);
        const auto received = [this] { return m_page->counts().at(1).toInt(); };

        begin(Protocol(protocol));
        child<QComboBox>("comboCameraBaudRate")->setEditText("57600");
        QVERIFY(plugIn());
        write(red);
        QTRY_COMPARE(received(), red.size());
        const int notices = m_notices->size();
        pullOut();
        QTRY_VERIFY(m_notices->size() > notices); // the page has noticed
        if (protocol == Serial)
            QCOMPARE(lastNotice(), QStringLiteral("当前串口已拔出，请重新打开!"));
        QCOMPARE(isOpen(), protocol == Server);
        QVERIFY(plugIn());
        write(blue.left(2));
        QTRY_COMPARE(received(), red.size() + 2);
        write(blue.mid(2));
        QTRY_VERIFY(hasPicture(0));
        QCOMPARE(m_page->frames(), qint64(1));
        const QImage picture = child<ImageViewer>("imageViewer")->image(0).toImage();
        for (const QPoint &at : {QPoint(0, 0), QPoint(picture.width() - 1, picture.height() - 1)}) {
            const QColor color = picture.pixelColor(at);
            QVERIFY2(color.blue() > 250 && color.red() < 5, qPrintable(color.name()));
        }
        if (protocol != Serial)
            return;
        CameraDebugWidget again;
        again.SltSerialportChanged({"COM1 first", "COM3 board"});
        auto *ports = again.findChild<QComboBox *>("comboCameraSerialPort");
        QCOMPARE(ports->currentText(), QString("COM3 board"));
        ports->setCurrentIndex(0); // a choice that stays
        again.SltSerialportChanged({"COM1 first", "COM3 board", "COM4"});
        QCOMPARE(ports->currentText(), QString("COM1 first"));
        QCOMPARE(again.findChild<QComboBox *>("comboCameraBaudRate")->currentText(), QString("57600"));
        QCOMPARE(m_page->findChild<SerialLink *>()->settings().baudRate, 57600);
        // Gone from the list while the last bytes are gathered.
        const int before = received();
        emit m_page->findChild<SerialLink *>()->received("x", 0, {});
        m_page->SltSerialportChanged({"COM1 first"});
        QVERIFY(!isOpen() && received() == before + 1);
    }

private:
    // The board's end of a link, made by hand.
    void begin(Protocol protocol)
    {
        m_protocol = protocol;
        m_line.reset();
        QFile::remove(m_ports.filePath("COM3"));
        choose(protocol);
        if (protocol == Server)
            m_port = openPort(Server);
        if (protocol == Serial)
            qputenv("KORVEX_VIRTUAL_PORTS", m_ports.path().toLocal8Bit());
    }
    bool plugIn() // after which the page hears it
    {
        if (m_protocol == Serial) {
            m_line = std::make_unique<PtyPeer>();
            const bool isLinked = QFile::link(m_line->device(), m_ports.filePath("COM3"));
            m_page->SltSerialportChanged(SerialPorts::entries());
            click("btnCameraOpen");
            return isLinked && isOpen();
        }
        if (m_protocol == Server) {
            m_socket = new QTcpSocket(m_page.get());
            m_socket->connectToHost(QHostAddress::LocalHost, m_port);
            return QTest::qWaitFor([this] { return m_socket->state() == QAbstractSocket::ConnectedState; },
                                   20000);
        }
        if (!m_listener.isListening() && !m_listener.listen(QHostAddress::LocalHost))
            return false;
        openAt(m_listener.serverPort());
        const bool came = QTest::qWaitFor([this] { return m_listener.hasPendingConnections(); }, 20000);
        m_socket = m_listener.nextPendingConnection();
        return came;
    }
    void pullOut()
    {
        if (!m_line)
            return m_socket->abort();
        QFile::remove(m_ports.filePath("COM3"));
        m_line->hangUp();
    }
    void write(const QByteArray &bytes)
    {
        if (m_line)
            m_line->write(bytes);
        else
            m_socket->write(bytes);
    }
    QByteArray read(int count)
    {
        if (m_line)
            return m_line->read(count);
        (void)QTest::qWaitFor([this, count] { return m_socket->bytesAvailable() >= count; }, 20000);
        return m_socket->readAll();
    }

    Protocol m_protocol = Server;
    quint16 m_port = 0; // of the listening page
    QTcpServer m_listener;
    QTcpSocket *m_socket = nullptr;
    QTemporaryDir m_ports;
    std::unique_ptr<PtyPeer> m_line;
};

QTEST_MAIN(TestCameraLinks)
#include "test_camera_links.moc"
