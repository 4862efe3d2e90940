#pragma once

// A camera board: its pictures and its registers. Built on the firmware's link
// code, as a real board would be. Knows neither line nor clock.

#include "orvn_camera.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

namespace Boardsim {

struct CameraSettings
{
    enum class Picture { Pattern, Bars };
    enum class Fault { None, Crc, Truncate, Garbage };

    int format = ORVN_CAMERA_RGB565;
    int width = 320;
    int height = 240;
    int firstDevice = 0;
    int devices = 1;
    Picture picture = Picture::Bars;
    QString folder;            // of JPEG files, sent as they are
    bool bigEndian = false;    // RGB565
    bool rawJpeg = false;      // no packets: the files one after the other
    int framesPerSecond = 10;  // of each device; 0 as fast as the line accepts them
    int chunkBytes = 0;        // cut what is sent; 0 not at all
    Fault fault = Fault::None; // of every fifth frame
    int addressLength = 2;
    int valueLength = 1;
    qint64 frames = -1; // then it is over; -1 never
};

class CameraBoard
{
public:
    explicit CameraBoard(const CameraSettings &settings);

    // What precedes the first frame: an announcement for each device.
    QByteArray greeting() const;
    // Frame number k of all devices; faults included.
    QByteArray frame(int device, qint64 number) const;
    // Requests in, replies out.
    QByteArray receive(const QByteArray &bytes);

    // Color bars as 0xRRGGBB, as they are meant to be seen. Moved by so much.
    static quint32 colorAt(int x, int y, int width, int height, int moved);

private:
    QByteArray pixels(qint64 number) const;
    QByteArray reply(const orvn_camera_request &request);
    void readFolder();

    CameraSettings m_settings;
    QList<QByteArray> m_files;
    orvn_camera_receiver m_receiver{};
    QHash<quint32, quint32> m_registers;
};

} // namespace Boardsim
