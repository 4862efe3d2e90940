// The camera page against boards in processes of their own, and against bytes.

#include "app/apppaths.h"
#include "app/settings.h"
#include "camera/cameradebugwidget.h"
#include "camera/frameshow.h"
#include "camera/imageformatconfig.h"
#include "camera/imageviewer.h"
#include "resources/korvexresources.h"
#include "serial/serialports.h"
#include "shell/base/dialoganswers.h"
#include "shell/base/qtmessagetip.h"
#include "tests/support/boardprocess.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class TestCameraPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void showsABoardOnASerialPort();
    void showsABoardOnTheNetwork_data();
    void showsABoardOnTheNetwork();

private:
    template <class Widget> Widget *child(const char *name)
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *name) { QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton); }
    QRgb shown(int device, int x, int y)
    {
        return child<ImageViewer>("imageViewer")->image(device).toImage().pixel(x, y);
    }
    bool hasPicture(int device) { return !child<ImageViewer>("imageViewer")->image(device).isNull(); }
    // Opens a port that is free; 0 on failure.
    quint16 openPort(int protocol);

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<CameraDebugWidget> m_page;
    std::unique_ptr<QSignalSpy> m_notices;
};

void TestCameraPage::initTestCase()
{
    initKorvexResources();
}

void TestCameraPage::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    AppPaths::setRoot(m_root->path());
    AppPaths::makeFolders();
    Settings::instance() = Settings();
    m_page = std::make_unique<CameraDebugWidget>();
    m_page->resize(1000, 600);
    m_page->show();
    m_notices = std::make_unique<QSignalSpy>(m_page.get(), &CameraDebugWidget::signalNotify);
}

void TestCameraPage::cleanup()
{
    DialogAnswers::instance() = DialogAnswers();
    if (QtMessageTip::current())
        QtMessageTip::current()->close();
    m_page.reset();
}

quint16 TestCameraPage::openPort(int protocol)
{
    child<QComboBox>("comboCameraProtocol")->setCurrentIndex(protocol);
    for (int attempt = 0; attempt < 20; ++attempt) { // another program may take it first
        QTcpServer probe;
        probe.listen(QHostAddress::Any);
        const quint16 port = probe.serverPort();
        probe.close();
        child<QLineEdit>("editCameraPort")->setText(QString::number(port));
        click("btnCameraOpen");
        if (!child<QLineEdit>("editCameraPort")->isEnabled())
            return port;
    }
    return 0;
}

void TestCameraPage::showsABoardOnASerialPort()
{
    BoardProcess board;
    QVERIFY(board.start({"--mode", "camera", "--test-pattern", "--width", "64", "--height", "48", "--fps", "5"}));
    qputenv("KORVEX_VIRTUAL_PORTS", board.folder().toLocal8Bit());
    m_page->SltSerialportChanged(SerialPorts::entries());
    child<QComboBox>("comboCameraProtocol")->setCurrentIndex(3);
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
    QTRY_VERIFY(child<QComboBox>("comboCameraProtocol")->isEnabled());
    QCOMPARE(m_notices->last().at(0).toString(), QStringLiteral("当前串口已拔出，请重新打开!"));
}

void TestCameraPage::showsABoardOnTheNetwork_data()
{
    QTest::addColumn<int>("protocol");
    QTest::addColumn<QString>("format");
    QTest::newRow("server, RGB565") << 0 << "4";
    QTest::newRow("server, RGB888") << 0 << "5";
    QTest::newRow("server, raw RGB as png") << 0 << "3";
    QTest::newRow("client") << 1 << "4";
    QTest::newRow("UDP") << 2 << "4";
}

void TestCameraPage::showsABoardOnTheNetwork()
{
    QFETCH(int, protocol);
    QFETCH(QString, format);
    BoardProcess board;
    QStringList options{"--act", "camera", "--test-pattern", "--width", "160", "--height", "120", "--fps", "10",
                        "--format", format, "--devices", "2", "--delay", "0"};
    if (protocol == 1) {
        QVERIFY(board.startOnNetwork("tcp-server", options));
        child<QComboBox>("comboCameraProtocol")->setCurrentIndex(1);
        child<QLineEdit>("editCameraPort")->setText(QString::number(board.netPort()));
        click("btnCameraOpen");
    } else {
        const QString port = QString::number(openPort(protocol));
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

QTEST_MAIN(TestCameraPage)
#include "test_camera_page.moc"
