#pragma once

// The camera page and boards in processes of their own: what the tests of the
// page share.

#include "boardprocess.h"
#include "cameradebugwidget.h"
#include "imageviewer.h"
#include "pageparts.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

class CameraPageTest : public QObject, protected PageParts<CameraDebugWidget>
{
    Q_OBJECT

protected slots:
    void init();
    void cleanup();

protected:
    enum Protocol { Server, Client, Udp, Serial };

    void choose(Protocol protocol) { child<QComboBox>("comboCameraProtocol")->setCurrentIndex(protocol); }
    void openAt(quint16 port)
    {
        child<QLineEdit>("editCameraPort")->setText(QString::number(port));
        click("btnCameraOpen");
    }
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

    static QByteArray jpegFile(int side, Qt::GlobalColor color);
};
