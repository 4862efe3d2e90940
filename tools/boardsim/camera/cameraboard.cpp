#include "cameraboard.h"

#include <QDir>
#include <QFile>

namespace Boardsim {

namespace {

constexpr int faultEvery = 5;
constexpr int barsMovePixels = 4;

// Registers that are there, and three that behave badly.
constexpr quint32 firstRegisters[] = {0x0000, 0x3000};
constexpr quint32 registersEach = 0x100;
constexpr quint32 silentRegister = 0x00DD; // never answers
constexpr quint32 brokenRegister = 0x00EE; // answers with an error code
constexpr quint8 brokenStatus = 5;

void appendWord(QByteArray &bytes, quint32 color, bool bigEndian)
{
    const quint32 word = (color >> 8 & 0xF800) | (color >> 5 & 0x07E0) | (color >> 3 & 0x001F);
    const char high = char(word >> 8);
    const char low = char(word & 0xFF);
    bytes.append(bigEndian ? high : low).append(bigEndian ? low : high);
}

} // namespace

CameraBoard::CameraBoard(const CameraSettings &settings)
    : m_settings(settings)
{
    orvn_camera_receiver_init(&m_receiver, quint8(settings.addressLength), quint8(settings.valueLength));
    for (const quint32 first : firstRegisters)
        for (quint32 k = 0; k < registersEach; ++k)
            m_registers.insert(first + k, (first + k) * 7);
    readFolder();
}

void CameraBoard::readFolder()
{
    if (m_settings.folder.isEmpty())
        return;
    const QDir folder(m_settings.folder);
    const QStringList names =
        folder.entryList({QStringLiteral("*.jpg"), QStringLiteral("*.jpeg")}, QDir::Files, QDir::Name);
    for (const QString &name : names) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            m_files.append(file.readAll());
    }
}

quint32 CameraBoard::colorAt(int x, int y, int width, int height, int moved)
{
    static constexpr quint32 bars[8] = {0xFFFFFF, 0xFFFF00, 0x00FFFF, 0x00FF00,
                                        0xFF00FF, 0xFF0000, 0x0000FF, 0x000000};
    if (y >= height * 3 / 4) { // a ramp, dark on the left
        const quint32 grey = quint32(x) * 255U / quint32(qMax(1, width - 1));
        return grey << 16 | grey << 8 | grey;
    }
    return bars[qint64((x + moved) % width) * 8 / width];
}

// RGB565 goes out as the host reads it: mirrored, and one row further down.
QByteArray CameraBoard::pixels(qint64 number) const
{
    const int width = m_settings.width;
    const int height = m_settings.height;
    const bool is565 = m_settings.format == ORVN_CAMERA_RGB565 || m_settings.format == ORVN_CAMERA_BMP;
    const int moved = m_settings.picture == CameraSettings::Picture::Bars
                          ? int(number * barsMovePixels % qMax(1, width))
                          : 0;
    QByteArray bytes;
    bytes.reserve(width * height * (is565 ? 2 : 3));
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            if (is565) {
                // Pixel W*y + x is shown in row y - 1, column W - x.
                const int x = column == 0 ? width : column;
                const int y = column == 0 ? row - 1 : row;
                const bool isSeen = y >= 1;
                appendWord(bytes, isSeen ? colorAt(width - x, y - 1, width, height, moved) : 0,
                           m_settings.bigEndian);
            } else {
                const quint32 color = colorAt(column, row, width, height, moved);
                bytes.append(char(color >> 16)).append(char(color >> 8)).append(char(color));
            }
        }
    }
    return bytes;
}

QByteArray CameraBoard::greeting() const
{
    QByteArray bytes;
    if (m_settings.rawJpeg)
        return bytes;
    for (int k = 0; k < m_settings.devices; ++k) {
        uint8_t packet[ORVN_CAMERA_ANNOUNCEMENT];
        const size_t length =
            orvn_camera_announce(packet, quint8(m_settings.firstDevice + k), quint8(m_settings.format),
                                 quint16(m_settings.width), quint16(m_settings.height));
        bytes.append(reinterpret_cast<const char *>(packet), int(length));
    }
    return bytes;
}

QByteArray CameraBoard::frame(int device, qint64 number) const
{
    const QByteArray data = m_files.isEmpty() ? pixels(number) : m_files.at(int(number % m_files.size()));
    if (m_settings.rawJpeg)
        return data;
    uint8_t header[ORVN_CAMERA_HEADER];
    uint8_t trailer[ORVN_CAMERA_TRAILER];
    uint16_t crc = orvn_camera_image_begin(header, quint8(device), uint32_t(data.size()));
    crc = orvn_camera_crc(crc, reinterpret_cast<const uint8_t *>(data.constData()), size_t(data.size()));
    orvn_camera_image_end(trailer, crc);
    QByteArray packet(reinterpret_cast<const char *>(header), int(sizeof header));
    packet.append(data).append(reinterpret_cast<const char *>(trailer), int(sizeof trailer));

    if (m_settings.fault == CameraSettings::Fault::None || number % faultEvery != faultEvery - 1)
        return packet;
    switch (m_settings.fault) {
    case CameraSettings::Fault::Crc:
        packet[packet.size() - 1] = char(packet.at(packet.size() - 1) ^ 0x55);
        break;
    case CameraSettings::Fault::Truncate:
        packet.chop(packet.size() / 3);
        break;
    default:
        packet.append("noise behind a frame");
        break;
    }
    return packet;
}

QByteArray CameraBoard::receive(const QByteArray &bytes)
{
    QByteArray replies;
    orvn_camera_request request;
    for (const char byte : bytes)
        if (orvn_camera_receive(&m_receiver, uint8_t(byte), &request))
            replies += reply(request);
    return replies;
}

QByteArray CameraBoard::reply(const orvn_camera_request &request)
{
    if (request.address == silentRegister)
        return {};
    const bool isThere = m_registers.contains(request.address);
    if (request.write) {
        if (isThere && request.status == ORVN_CAMERA_OK)
            m_registers[request.address] = request.value;
        return {}; // writing is not answered
    }
    quint8 status = request.status;
    if (status == ORVN_CAMERA_OK && !isThere)
        status = ORVN_CAMERA_NO_REGISTER;
    if (request.address == brokenRegister)
        status = brokenStatus;
    uint8_t packet[ORVN_CAMERA_REPLY_MAX];
    const size_t length =
        orvn_camera_reply(packet, request.device, status, request.address, m_registers.value(request.address),
                          quint8(m_settings.valueLength));
    return QByteArray(reinterpret_cast<const char *>(packet), int(length));
}

} // namespace Boardsim
