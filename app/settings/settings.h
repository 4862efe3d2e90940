#pragma once

// The process-wide settings: one struct, loaded at start, changed by the
// menus, the style dialog and the pages, and written one value at a time at
// the moment of each change. Nothing is written at exit.

#include <QColor>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>

class QSettings;

struct Settings
{
    struct SerialDefaults
    {
        int baudRate = 115400;
        int dataBits = 8;
        int stopBits = 1; // the text of the stop-bits list's entry
        int parity = 0;   // index into the parity list
    };
    struct NetworkDefaults
    {
        int type = 0; // index into the protocol list
        QString address = QStringLiteral("127.0.0.1");
        int port = 8000;
    };
    struct CameraDefaults
    {
        int addressLength = 2; // bytes of a register's address, 1 to 4
        int valueLength = 1;   // bytes of its value, 1 to 4
        int type = 0;          // index into the protocol list
        QString localAddress = QStringLiteral("0.0.0.0");
        QString serverAddress = QStringLiteral("127.0.0.1");
        int port = 8000;
        QString destinationAddress = QStringLiteral("127.0.0.1");
        int destinationPort = 8000;
        QString serialPort; // its name; empty for the first one
        int baudRate = 921600;
    };
    struct PidDefaults
    {
        bool fitAll = false; // the value axis takes in all curves
    };
    struct ProbeSettings
    {
        QString chip = QStringLiteral("STM32F103RC");
        QString port = QStringLiteral("SW");
        QString frequency = QStringLiteral("10MHz");
        QString mode = QStringLiteral("default");
        QString openUrl;
    };
    // What happens to unsaved received data when the program closes.
    enum CloseBehaviour { Discard = 0, Ask = 1, AutoSave = 2 };

    QColor recvBackground{0x4b, 0x4b, 0x4b};
    QColor recvTextColor{0xf2, 0xf2, 0xf2};
    QColor sendBackground{0x4b, 0x4b, 0x4b};
    QColor sendTextColor{0xf2, 0xf2, 0xf2};
    // The area has the skin's colors instead of those in the file. Skin::apply()
    // then sets the colors above, in memory only.
    bool recvFollowsSkin = false;
    bool sendFollowsSkin = false;
    int textCodec = 1; // 0 UTF-8, 1 GB18030
    int skin = 0;      // 0 dark, 1 light, 2 yellow
    int closeBehaviour = Discard;
    SerialDefaults serial;
    NetworkDefaults network;
    CameraDefaults camera;
    PidDefaults pid;
    QString updateUrl;
    ProbeSettings probe;
    QStringList recentFiles; // of the binary editor, newest first

    static QColor defaultBackground();
    static QColor defaultTextColor();

    // The one instance. Readers read it when they need a value and keep no copy.
    static Settings &instance();

    // Writes the first-start values when the file holds no group yet.
    static void writeDefaults();

    // Fills the instance from the file. A value that is missing, out of range
    // or not a colour becomes the reading default.
    static void load();

    // Writes one value to the file, whose folder is made again where it is gone.
    // False where the file cannot be written; the value in memory is then good
    // for this run only.
    static bool writeValue(const QString &group, const QString &key, const QVariant &value);

    // Called with the reason, in Chinese, when writing a value fails: once, and
    // again only after a value could be written.
    static void setFailureHandler(std::function<void(const QString &reason)> handler);

    // Writes the first-start values over what the file holds, drops the values
    // of "Common" that are not written then and those of the camera and PID
    // pages, and loads again. The caller applies the skin. False where the file cannot be written; the
    // defaults are then good for this run only.
    static bool restoreDefaults();

private:
    void readFrom(QSettings &file);
};
