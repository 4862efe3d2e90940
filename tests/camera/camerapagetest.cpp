#include "camerapagetest.h"

#include "dialoganswers.h"
#include "freeport.h"
#include "korvexresources.h"
#include "qtmessagetip.h"

#include <QBuffer>

void CameraPageTest::init()
{
    initKorvexResources();
    makePage(1000, 600);
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
        const quint16 port = freePort();
        openAt(port);
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
