// The camera page's four links: boards in processes of their own, their faults,
// and links that break in the middle of a frame.

#include "camerapagetest.h"
#include "frameshow.h"
#include "ptypeer.h"
#include "serialports.h"
#include "tcpserverlink.h"

#include <QCheckBox>
#include <QLabel>
#include <QSpinBox>
#include <QTcpServer>
#include <QTcpSocket>
#include <functional>

class TestCameraLinks : public CameraPageTest
{
    Q_OBJECT

private slots:
    void showsABoardOnASerialPort();
    void showsABoardOnTheNetwork_data();
    void showsABoardOnTheNetwork();
    void sendsAndCloses_data();
    void sendsAndCloses();
    void saysWhichToolHasThePort();
    void outlivesFaults_data();
    void outlivesFaults();
    void showsThePictureBeforeTheEnd();
    void takesTwentySenders();
    void forgetsHalfAFrame_data();
    void forgetsHalfAFrame();

private:
    std::unique_ptr<class LinkEnd> makeEnd(Protocol protocol);
};

void TestCameraLinks::showsABoardOnASerialPort()
{
    BoardProcess board;
    QVERIFY(
        board.start({"--mode", "camera", "--test-pattern", "--width", "64", "--height", "48", "--fps", "5"}));
    qputenv("KORVEX_VIRTUAL_PORTS", board.folder().toLocal8Bit());
    m_page->SltSerialportChanged(SerialPorts::entries());
    choose(Serial);
    click("btnCameraOpen");
    QTRY_VERIFY_WITH_TIMEOUT(hasPicture(0), 20000);
    QCOMPARE(child<QSpinBox>("spinImageWidth")->value(), 64);
    // Bars of eight pixels: white first, black last; the last row is past the data.
    QTRY_COMPARE(shown(0, 4, 10), qRgb(0xf8, 0xfc, 0xf8));
    QCOMPARE(shown(0, 12, 10), qRgb(0xf8, 0xfc, 0));
    QCOMPARE(shown(0, 44, 10), qRgb(0xf8, 0, 0));
    QCOMPARE(shown(0, 4, 47), qRgb(0, 0, 0));

    // The plug is pulled: closed, said, and half a frame is forgotten.
    QVERIFY(board.stop());
    QTRY_VERIFY(!isOpen());
    QCOMPARE(lastNotice(), QStringLiteral("当前串口已拔出，请重新打开!"));
}

void TestCameraLinks::showsABoardOnTheNetwork_data()
{
    QTest::addColumn<int>("protocol");
    QTest::addColumn<QString>("format");
    QTest::newRow("server, RGB565") << 0 << "4";
    QTest::newRow("server, RGB888") << 0 << "5";
    QTest::newRow("server, raw RGB as png") << 0 << "3";
    QTest::newRow("client") << 1 << "4";
    QTest::newRow("UDP") << 2 << "4";
}

void TestCameraLinks::showsABoardOnTheNetwork()
{
    QFETCH(int, protocol);
    QFETCH(QString, format);
    BoardProcess board;
    QStringList options{"--act", "camera",   "--test-pattern", "--width",   "160", "--height", "120", "--fps",
                        "10",    "--format", format,           "--devices", "2",   "--delay",  "0"};
    if (protocol == 1) {
        QVERIFY(board.startOnNetwork("tcp-server", options));
        choose(Client);
        child<QLineEdit>("editCameraPort")->setText(QString::number(board.netPort()));
        click("btnCameraOpen");
    } else {
        const QString port = QString::number(openPort(Protocol(protocol)));
        if (protocol == 0)
            QVERIFY(board.startOnNetwork("tcp-client", options << "--net-port" << port));
        else
            QVERIFY(board.startOnNetwork("udp", options << "--to-port" << port));
    }
    QTRY_VERIFY_WITH_TIMEOUT(hasPicture(0) && hasPicture(1), 20000);
    const QRgb white = format == "4" ? qRgb(0xf8, 0xfc, 0xf8) : qRgb(0xff, 0xff, 0xff);
    const QRgb yellow = format == "4" ? qRgb(0xf8, 0xfc, 0) : qRgb(0xff, 0xff, 0);
    for (int device = 0; device < 2; ++device) {
        QTRY_COMPARE(shown(device, 10, 10), white);
        QCOMPARE(shown(device, 30, 10), yellow);
    }
}

void TestCameraLinks::outlivesFaults_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("chunk");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<qint64>("frames"); // of 21, of which every fifth has the fault
    QTest::addColumn<bool>("hasErrors");
    QTest::newRow("whole") << "none"
                           << "0" << true << 21LL << false;
    QTest::newRow("checksums") << "crc"
                               << "0" << true << 17LL << true;
    QTest::newRow("checksums, tolerated") << "crc"
                                          << "64" << false << 21LL << true;
    QTest::newRow("garbage, cut") << "garbage"
                                  << "7" << true << 21LL << true;
}

// By datagrams, whose bounds stay what the board made them.
void TestCameraLinks::outlivesFaults()
{
    QFETCH(QString, fault);
    QFETCH(QString, chunk);
    QFETCH(bool, checked);
    QFETCH(qint64, frames);
    QFETCH(bool, hasErrors);
    child<QCheckBox>("checkCrc16")->setChecked(checked);
    for (const char *side : {"spinImageWidth", "spinImageHeight"})
        child<QSpinBox>(side)->setValue(16); // an announcement that is cut is not waited for
    QList<QImage> pictures;
    connect(m_page->findChild<FrameShow *>(), &FrameShow::pictureReady, this,
            [&pictures](int, const QImage &picture) { pictures.append(picture); });
    BoardProcess board;
    const QString port = QString::number(openPort(Udp));
    QVERIFY(board.startOnNetwork("udp", {"--act", "camera", "--test-pattern", "--width", "16", "--height",
                                         "16", "--fps", "100", "--frames", "21", "--camera-fault", fault,
                                         "--chunk", chunk, "--to-port", port}));
    QTRY_COMPARE_WITH_TIMEOUT(m_page->frames(), frames, 20000);
    QCOMPARE(child<QLabel>("labelImageError")->isVisible(), hasErrors);
    QTRY_COMPARE(m_page->frameShow().shown() + m_page->frameShow().skipped(), frames);
    for (const QImage &picture : qAsConst(pictures)) // bars of two pixels: white, yellow, .. black
        QVERIFY(picture == pictures.first() && picture.pixel(1, 5) == qRgb(0xf8, 0xfc, 0xf8) &&
                picture.pixel(2, 5) == qRgb(0xf8, 0xfc, 0) && picture.pixel(15, 5) == qRgb(0, 0, 0));
}

// The board's end of a link, made by hand.
class LinkEnd
{
public:
    virtual ~LinkEnd() = default;
    virtual bool plugIn() = 0; // after which the page hears it
    virtual void pullOut() = 0;
    virtual void write(const QByteArray &bytes) = 0;
    virtual QByteArray read(int count) = 0; // waits for them
};

class SocketEnd : public LinkEnd
{
public:
    // port: of the listening page; 0 where the page connects to this end, by press().
    SocketEnd(quint16 port, std::function<void(quint16)> press)
        : m_port(port)
        , m_press(std::move(press))
    {
        m_listener.listen(QHostAddress::LocalHost);
    }
    bool plugIn() override
    {
        if (m_port == 0) {
            m_press(m_listener.serverPort());
            const bool came = QTest::qWaitFor([this] { return m_listener.hasPendingConnections(); }, 20000);
            m_socket = m_listener.nextPendingConnection();
            return came;
        }
        m_socket = new QTcpSocket(&m_listener);
        m_socket->connectToHost(QHostAddress::LocalHost, m_port);
        return QTest::qWaitFor([this] { return m_socket->state() == QAbstractSocket::ConnectedState; },
                               20000);
    }
    void pullOut() override { m_socket->abort(); }
    void write(const QByteArray &bytes) override { m_socket->write(bytes); }
    QByteArray read(int count) override
    {
        (void)QTest::qWaitFor([this, count] { return m_socket->bytesAvailable() >= count; }, 20000);
        return m_socket->readAll();
    }

private:
    quint16 m_port;
    std::function<void(quint16)> m_press;
    QTcpServer m_listener;
    QTcpSocket *m_socket = nullptr;
};

class SerialEnd : public LinkEnd
{
public:
    explicit SerialEnd(std::function<bool()> open)
        : m_open(std::move(open))
    {
        qputenv("KORVEX_VIRTUAL_PORTS", m_folder.path().toLocal8Bit());
    }
    bool plugIn() override
    {
        m_line = std::make_unique<PtyPeer>();
        return QFile::link(m_line->device(), m_folder.filePath("COM3")) && m_open();
    }
    void pullOut() override
    {
        QFile::remove(m_folder.filePath("COM3"));
        m_line->hangUp();
    }
    void write(const QByteArray &bytes) override { m_line->write(bytes); }
    QByteArray read(int count) override { return m_line->read(count); }

private:
    std::function<bool()> m_open;
    QTemporaryDir m_folder;
    std::unique_ptr<PtyPeer> m_line;
};

std::unique_ptr<LinkEnd> TestCameraLinks::makeEnd(Protocol protocol)
{
    choose(protocol);
    if (protocol == Serial)
        return std::make_unique<SerialEnd>([this] {
            m_page->SltSerialportChanged(SerialPorts::entries());
            click("btnCameraOpen");
            return isOpen();
        });
    const auto press = [this](quint16 port) {
        child<QLineEdit>("editCameraPort")->setText(QString::number(port));
        click("btnCameraOpen");
    };
    return std::make_unique<SocketEnd>(protocol == Server ? openPort(Server) : quint16(0), press);
}

void TestCameraLinks::sendsAndCloses_data()
{
    QTest::addColumn<int>("protocol");
    QTest::newRow("a server's client") << int(Server);
    QTest::newRow("a client") << int(Client);
    QTest::newRow("a serial port") << int(Serial);
}

// A request leaves over each link, and one that was sent last leaves before it closes.
void TestCameraLinks::sendsAndCloses()
{
    QFETCH(int, protocol);
    const std::unique_ptr<LinkEnd> end = makeEnd(Protocol(protocol));
    m_page->SltReadWriteRegister("3008", "", 7);
    QCOMPARE(lastNotice(), QStringLiteral("没有已连接的摄像头，数据未发送！"));
    QVERIFY(end->plugIn());
    end->write("x");
    QTRY_COMPARE(m_page->counts().at(1), QString("1"));      // each side knows of the other
    const QByteArray head = QByteArray("ORVN").append('\0'); // and the device
    m_page->SltReadWriteRegister("3008", "", 7);
    const int size = 4 + 1 + 4 + 1 + 2 + child<QSpinBox>("spinAddressLength")->value() + 2;
    const QByteArray request = end->read(size);
    QCOMPARE(request.size(), size);
    QVERIFY(request.startsWith(head) && request.at(9) == 0x11);
    QTRY_COMPARE(m_page->counts().at(0), QString::number(size));

    m_page->SltReadWriteRegister("3008", "", 7);
    const QSignalSpy closed(m_page.get(), &CameraDebugWidget::signalClosed);
    m_page->closeLinks();
    QCOMPARE(end->read(size), request);
    QTRY_VERIFY(m_page->isClosed());
    QCOMPARE(closed.count(), 1);
    QVERIFY(!isOpen());
    if (protocol != Serial) // which closes before the system has reported the last bytes
        QCOMPARE(m_page->counts().at(0), QString::number(2 * size));
}

void TestCameraLinks::saysWhichToolHasThePort()
{
    TcpServerLink other;
    other.setTool("OTHER");
    QVERIFY(other.open({QHostAddress::Any, 0}));
    choose(Server);
    child<QLineEdit>("editCameraPort")->setText(QString::number(other.port()));
    click("btnCameraOpen");
    QCOMPARE(m_notices->at(0).at(0).toString(),
             QStringLiteral("TCP服务监听[端口:%1]失败，请确认该端口是否可用!!").arg(other.port()));
    QCOMPARE(lastNotice(), QStringLiteral("端口已被占用：OTHER正在使用该端口"));
    QVERIFY(!isOpen());
}

// A server that sends a picture and closes.
void TestCameraLinks::showsThePictureBeforeTheEnd()
{
    QTcpServer board;
    QVERIFY(board.listen(QHostAddress::LocalHost));
    connect(&board, &QTcpServer::newConnection, this, [&board] {
        QTcpSocket *const socket = board.nextPendingConnection();
        socket->write("ORVN" + QByteArray::fromHex("000f000000010502000100") + "ORVN" +
                      QByteArray::fromHex("0012000000020000ff0000ff") + "cc"); // RGB888, 2 x 1
        socket->disconnectFromHost();
    });
    choose(Client);
    child<QLineEdit>("editCameraPort")->setText(QString::number(board.serverPort()));
    click("btnCameraOpen");
    QTRY_VERIFY_WITH_TIMEOUT(hasPicture(0), 20000);
    QCOMPARE(shown(0, 0, 0), qRgb(0, 0, 255));
    QTRY_VERIFY_WITH_TIMEOUT(!isOpen(), 20000);
}

// Each in two halves, all first halves before the second ones.
void TestCameraLinks::takesTwentySenders()
{
    const quint16 port = openPort(Server);
    const QByteArray frame = "ORVN" + QByteArray::fromHex("001200000002") + "123456cc";
    QList<QTcpSocket *> boards;
    for (int i = 0; i < 20; ++i) {
        boards.append(new QTcpSocket(m_page.get()));
        boards.last()->connectToHost(QHostAddress::LocalHost, port);
        boards.last()->write(frame.left(13));
    }
    QTRY_COMPARE_WITH_TIMEOUT(m_page->counts().at(1).toInt(), 20 * 13, 20000);
    for (QTcpSocket *board : qAsConst(boards))
        board->write(frame.mid(13));
    QTRY_COMPARE_WITH_TIMEOUT(m_page->frames(), qint64(20), 20000);
}

void TestCameraLinks::forgetsHalfAFrame_data()
{
    QTest::addColumn<int>("protocol");
    QTest::addColumn<bool>("isJpeg");
    for (const bool isJpeg : {false, true}) {
        const char *const kind = isJpeg ? "raw JPEG" : "packets";
        QTest::addRow("a server's client, %s", kind) << int(Server) << isJpeg;
        QTest::addRow("a client, %s", kind) << int(Client) << isJpeg;
        QTest::addRow("a serial port, %s", kind) << int(Serial) << isJpeg;
    }
}

// The link breaks in the middle of a red picture. The next one is blue, and
// comes in two pieces, so that no header at the start of a chunk mends anything.
void TestCameraLinks::forgetsHalfAFrame()
{
    QFETCH(int, protocol);
    QFETCH(bool, isJpeg);
    const QByteArray announcement = "ORVN" + QByteArray::fromHex("000f000000010502000100"); // RGB888, 2 x 1
    const QByteArray header = "ORVN" + QByteArray::fromHex("001200000002");
    const QByteArray red =
        isJpeg ? jpegFile(40, Qt::red).left(400) : announcement + header + QByteArray::fromHex("ff0000");
    const QByteArray blue =
        isJpeg ? jpegFile(40, Qt::blue) : header + QByteArray::fromHex("0000ff0000ff") + "cc";
    child<QCheckBox>("checkJpegData")->setChecked(isJpeg);
    const auto received = [this] { return m_page->counts().at(1).toInt(); };

    const std::unique_ptr<LinkEnd> end = makeEnd(Protocol(protocol));
    QVERIFY(end->plugIn());
    end->write(red);
    QTRY_COMPARE(received(), red.size());
    const int notices = m_notices->size();
    end->pullOut();
    QTRY_VERIFY(m_notices->size() > notices); // the page has noticed
    QCOMPARE(isOpen(), protocol == Server);
    QVERIFY(end->plugIn());
    end->write(blue.left(2));
    QTRY_COMPARE(received(), red.size() + 2);
    end->write(blue.mid(2));
    QTRY_VERIFY(hasPicture(0));
    QCOMPARE(m_page->frames(), qint64(1));
    QVERIFY(m_page->frameShow().unusable() == 0);
    const QImage picture = child<ImageViewer>("imageViewer")->image(0).toImage();
    for (const QPoint &at : {QPoint(0, 0), QPoint(picture.width() - 1, picture.height() - 1)}) {
        const QColor color = picture.pixelColor(at);
        QVERIFY2(color.blue() > 250 && color.red() < 5, qPrintable(color.name()));
    }
}

QTEST_MAIN(TestCameraLinks)
#include "test_camera_links.moc"
