#include "camerapagetest.h"

#include "apppaths.h"
#include "dialoganswers.h"
#include "korvexresources.h"
#include "qtmessagetip.h"
#include "settings.h"

#include <QBuffer>
#include <QTcpServer>

void CameraPageTest::initTestCase()
{
    initKorvexResources();
}

void CameraPageTest::init()
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

void CameraPageTest::cleanup()
{
    DialogAnswers::instance() = DialogAnswers();
    if (QtMessageTip::current())
        QtMessageTip::current()->close();
    m_page.reset();
}

quint16 CameraPageTest::openPort(Protocol protocol)
{
    choose(protocol);
    for (int attempt = 0; attempt < 20; ++attempt) { // another program may take it first
        QTcpServer probe;
        probe.listen(QHostAddress::Any);
        const quint16 port = probe.serverPort();
        probe.close();
        child<QLineEdit>("editCameraPort")->setText(QString::number(port));
        click("btnCameraOpen");
        if (isOpen())
            return port;
    }
    return 0;
}

bool CameraPageTest::connectBoard(BoardProcess &board, const QStringList &options)
{
    const quint16 port = openPort(Server);
    return board.startOnNetwork("tcp-client",
                                QStringList{"--act", "camera", "--fps", "1", "--width", "16", "--height",
                                            "16", "--delay", "0", "--net-port", QString::number(port)} +
                                    options) &&
           QTest::qWaitFor([this] { return hasPicture(0); }, 20000);
}

QString CameraPageTest::tip() const
{
    return QtMessageTip::current() ? QtMessageTip::current()->text() : QString();
}

QByteArray CameraPageTest::jpegFile(int side, Qt::GlobalColor color)
{
    QImage picture(side, side, QImage::Format_RGB32);
    picture.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "jpg");
    return bytes;
}
