#pragma once

// The camera page and boards in processes of their own: what the tests of the
// page share.

#include "camera/cameradebugwidget.h"
#include "camera/imageviewer.h"
#include "tests/support/boardprocess.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

class CameraPageTest : public QObject
{
    Q_OBJECT

protected slots:
    void initTestCase();
    void init();
    void cleanup();

protected:
    enum Protocol { Server, Client, Udp, Serial };

    template <class Widget> Widget *child(const char *name)
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *name) { QTest::mouseClick(child<QPushButton>(name), Qt::LeftButton); }
    void choose(Protocol protocol) { child<QComboBox>("comboCameraProtocol")->setCurrentIndex(protocol); }
    // Chooses the protocol and opens it on a port that is free; 0 on failure.
    quint16 openPort(Protocol protocol);
    bool isOpen() { return !child<QComboBox>("comboCameraProtocol")->isEnabled(); }
    // A board connected to the listening page.
    bool connectBoard(BoardProcess &board, const QStringList &options = {});

    QRgb shown(int device, int x, int y)
    {
        return child<ImageViewer>("imageViewer")->image(device).toImage().pixel(x, y);
    }
    bool hasPicture(int device) { return !child<ImageViewer>("imageViewer")->image(device).isNull(); }
    QString tip() const;
    QString lastNotice() const { return m_notices->last().at(0).toString(); }

    static QByteArray jpegFile(int side, Qt::GlobalColor colour);

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<CameraDebugWidget> m_page;
    std::unique_ptr<QSignalSpy> m_notices;
};
