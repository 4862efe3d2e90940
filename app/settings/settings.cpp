#include "settings.h"

#include "apppaths.h"
#include "settingskeys.h"

#include <QDebug>
#include <QFileInfo>
#include <QSettings>
#include <QStorageInfo>
#include <QTemporaryDir>

namespace {

const auto kColourDark = QStringLiteral("#4b4b4b");
const auto kColourLight = QStringLiteral("#f2f2f2");
const auto kUpdateUrl = QStringLiteral("https://www.orvane.example/firmware");

struct Default
{
    QLatin1String group;
    QLatin1String key;
    QVariant value;
};

// Written on first start, in this order. The reading defaults in load()
// differ on purpose in places (the baud rate, for one).
const QList<Default> &firstStartValues()
{
    using namespace SettingsKeys;
    static const QList<Default> values{
        {Common::group, Common::recvBackground, kColourDark},
        {Common::group, Common::recvTextColor, kColourLight},
        {Common::group, Common::sendBackground, kColourDark},
        {Common::group, Common::sendTextColor, kColourLight},
        {Common::group, Common::textCodec, 1},
        {Common::group, Common::skin, 0},
        {Serialport::group, Serialport::baudRate, 115200},
        {Serialport::group, Serialport::dataBit, 8},
        {Serialport::group, Serialport::stopBitsRead, 1},
        {Serialport::group, Serialport::parity, 0},
        {NetTools::group, NetTools::netType, 0},
        {NetTools::group, NetTools::ipAddr, QStringLiteral("127.0.0.1")},
        {NetTools::group, NetTools::port, 8000},
        {LoRaTool::group, LoRaTool::updateUrl, kUpdateUrl},
        {DAPCfg::group, DAPCfg::openUrl, QString()},
        {DAPCfg::group, DAPCfg::language, QStringLiteral("qt_app_zh.qm")},
    };
    return values;
}

void setFirstStartValues(QSettings &file)
{
    for (const Default &value : firstStartValues()) {
        file.beginGroup(value.group);
        file.setValue(value.key, value.value);
        file.endGroup();
    }
}

// QSettings puts an empty or cut file in the old one's place, and says nothing,
// when the disk becomes full while it writes. The file is some kilobytes long.
bool diskHasRoom()
{
    constexpr qint64 enough = 64 * 1024;
    const QStorageInfo disk(AppPaths::confFolder());
    return !disk.isValid() || disk.bytesAvailable() >= enough;
}

// Why the file could not be written. QSettings knows no reason.
QString failureReason()
{
    if (!diskHasRoom())
        return QStringLiteral("磁盘空间不足");
    if (!QFileInfo(AppPaths::confFolder()).isDir())
        return QStringLiteral("程序目录下无法建立文件夹conf");
    return QStringLiteral("程序目录下的文件夹conf没有写入权限");
}

// Tells the first failure of a row of them.
class FailureTeller
{
public:
    void setHandler(std::function<void(const QString &)> handler)
    {
        m_handler = std::move(handler);
        m_told = false;
    }
    void written() { m_told = false; }
    void failed()
    {
        if (!m_handler || m_told)
            return;
        m_told = true;
        m_handler(failureReason());
    }

private:
    std::function<void(const QString &)> m_handler;
    bool m_told = false;
};

FailureTeller &failureTeller()
{
    static FailureTeller teller;
    return teller;
}

// Reads the keys of one group with a default for what is missing or senseless.
class GroupReader
{
public:
    GroupReader(QSettings &file, QLatin1String group)
        : m_file(file)
    {
        m_file.beginGroup(group);
    }
    ~GroupReader() { m_file.endGroup(); }
    Q_DISABLE_COPY_MOVE(GroupReader)

    int number(QLatin1String key, int fallback, int least, int most) const
    {
        bool isNumber = false;
        const int value = m_file.value(key, fallback).toInt(&isNumber);
        return isNumber && value >= least && value <= most ? value : fallback;
    }
    QString text(QLatin1String key, const QString &fallback) const
    {
        return m_file.value(key, fallback).toString();
    }
    QColor colour(QLatin1String key, const QString &fallback) const
    {
        const QColor value(text(key, fallback));
        return value.isValid() ? value : QColor(fallback);
    }

private:
    QSettings &m_file;
};

} // namespace

Settings &Settings::instance()
{
    static Settings settings;
    return settings;
}

QColor Settings::defaultBackground()
{
    return QColor(kColourDark);
}

QColor Settings::defaultTextColor()
{
    return QColor(kColourLight);
}

void Settings::writeDefaults()
{
    QSettings file(AppPaths::configFile(), QSettings::IniFormat);
    if (!file.childGroups().join(QString()).isEmpty())
        return;
    setFirstStartValues(file);
}

void Settings::load()
{
    QSettings file(AppPaths::configFile(), QSettings::IniFormat);
    instance().readFrom(file);
}

void Settings::readFrom(QSettings &file)
{
    using namespace SettingsKeys;
    constexpr int anyInt = std::numeric_limits<int>::max();
    Settings &s = *this;
    {
        const GroupReader group(file, Common::group);
        s.recvBackground = group.colour(Common::recvBackground, kColourDark);
        s.recvTextColor = group.colour(Common::recvTextColor, kColourLight);
        s.sendBackground = group.colour(Common::sendBackground, kColourDark);
        s.sendTextColor = group.colour(Common::sendTextColor, kColourLight);
        s.recvFollowsSkin = group.number(Common::recvFollowsSkin, 0, 0, 1) == 1;
        s.sendFollowsSkin = group.number(Common::sendFollowsSkin, 0, 0, 1) == 1;
        s.textCodec = group.number(Common::textCodec, 1, 0, 1);
        // Any number passes: an unknown skin leaves the program unstyled.
        s.skin = group.number(Common::skin, 0, -anyInt, anyInt);
        s.closeBehaviour = group.number(Common::buffer, Discard, Discard, AutoSave);
    }
    {
        const GroupReader group(file, Serialport::group);
        s.serial.baudRate = group.number(Serialport::baudRate, 115400, 1, anyInt);
        s.serial.dataBits = group.number(Serialport::dataBit, 8, 5, 8);
        s.serial.stopBits = group.number(Serialport::stopBitsRead, 1, 0, 2);
        s.serial.parity = group.number(Serialport::parity, 0, 0, 4);
    }
    {
        const GroupReader group(file, NetTools::group);
        s.network.type = group.number(NetTools::netType, 0, 0, 2);
        s.network.address = group.text(NetTools::ipAddr, QStringLiteral("127.0.0.1"));
        s.network.port = group.number(NetTools::port, 8000, 1, 65535);
    }
    {
        const GroupReader group(file, Camera::group);
        s.camera.addressLength = group.number(Camera::addressLength, 2, 1, 4);
        s.camera.valueLength = group.number(Camera::valueLength, 1, 1, 4);
        s.camera.type = group.number(Camera::netType, 0, 0, 3);
        s.camera.localAddress = group.text(Camera::localAddress, QStringLiteral("0.0.0.0"));
        s.camera.serverAddress = group.text(Camera::serverAddress, QStringLiteral("127.0.0.1"));
        s.camera.port = group.number(Camera::port, 8000, 1, 65535);
        s.camera.destinationAddress = group.text(Camera::destinationAddress, QStringLiteral("127.0.0.1"));
        s.camera.destinationPort = group.number(Camera::destinationPort, 8000, 1, 65535);
        s.camera.serialPort = group.text(Camera::serialPort, QString());
        s.camera.baudRate = group.number(Camera::baudRate, 921600, 1, anyInt);
    }
    {
        const GroupReader group(file, Pid::group);
        s.pid.fitAll = group.number(Pid::fitAll, 0, 0, 1) == 1;
    }
    {
        const GroupReader group(file, LoRaTool::group);
        s.updateUrl = group.text(LoRaTool::updateUrl, kUpdateUrl);
    }
    {
        const GroupReader group(file, DAPCfg::group);
        s.probe.chip = group.text(DAPCfg::chip, QStringLiteral("STM32F103RC"));
        s.probe.port = group.text(DAPCfg::port, QStringLiteral("SWD"));
        s.probe.frequency = group.text(DAPCfg::freq, QStringLiteral("10HMz"));
        s.probe.mode = group.text(DAPCfg::mode, QStringLiteral("default"));
        s.probe.openUrl = group.text(DAPCfg::openUrl, QStringLiteral("d:/"));
    }
    s.recentFiles = file.value(HexEdit::group + QLatin1Char('/') + HexEdit::recentFiles).toStringList();
}

bool Settings::writeValue(const QString &group, const QString &key, const QVariant &value)
{
    if (diskHasRoom()) {
        QSettings file(AppPaths::configFile(), QSettings::IniFormat);
        file.beginGroup(group);
        file.setValue(key, value);
        file.endGroup();
        file.sync();
        if (file.status() == QSettings::NoError) {
            failureTeller().written();
            return true;
        }
    }
    qWarning() << "cannot write" << key << "to" << AppPaths::configFile();
    failureTeller().failed();
    return false;
}

void Settings::setFailureHandler(std::function<void(const QString &reason)> handler)
{
    failureTeller().setHandler(std::move(handler));
}

bool Settings::restoreDefaults()
{
    bool written = false;
    if (diskHasRoom()) {
        QSettings file(AppPaths::configFile(), QSettings::IniFormat);
        setFirstStartValues(file);
        file.beginGroup(SettingsKeys::Common::group);
        for (const QLatin1String &key : {SettingsKeys::Common::buffer, SettingsKeys::Common::recvFollowsSkin,
                                         SettingsKeys::Common::sendFollowsSkin})
            file.remove(key);
        file.endGroup();
        file.remove(SettingsKeys::Camera::group);
        file.remove(SettingsKeys::Pid::group);
        file.sync();
        written = file.status() == QSettings::NoError;
    }
    if (written) {
        load();
        return true;
    }
    // The file still holds the other values. What this one keeps in memory will do.
    const QTemporaryDir folder;
    QSettings defaults(folder.filePath(QStringLiteral("config.ini")), QSettings::IniFormat);
    setFirstStartValues(defaults);
    const QStringList recent = instance().recentFiles;
    instance().readFrom(defaults);
    instance().recentFiles = recent;
    return false;
}
