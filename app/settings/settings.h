#pragma once

// The process-wide settings: the table of all of them. One line declares a
// setting: its type, its key in conf/config.ini, its value where the file holds
// nothing usable, the value that a first start writes, and the range of a
// number. Loading, first start and restoring walk the table. Readers read a
// value when they need it and keep no copy. Nothing is written at exit.

#include "setting.h"

#include <QColor>
#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>

class Settings
{
    SettingsTable m_table;
    SettingsGroup m_common{&m_table, "Common"};
    SettingsGroup m_updates{&m_table, "LoRaTool"};
    SettingsGroup m_viewWork{&m_table, "View", SettingsGroup::KeepsUnwritten}; // the user's work
    SettingsGroup m_hexEdit{&m_table, "HexEdit", SettingsGroup::KeepsUnwritten};

public:
    // What happens to unsaved received data when the program closes.
    enum CloseBehaviour { Discard = 0, Ask = 1, AutoSave = 2 };

    static QColor defaultBackground() { return {0x4b, 0x4b, 0x4b}; }
    static QColor defaultTextColor() { return {0xf2, 0xf2, 0xf2}; }

    // clang-format off
    Setting<QColor> recvBackground{&m_common, "RecvBackground", defaultBackground(), defaultBackground()};
    Setting<QColor> recvTextColor{&m_common, "RecvTextColor", defaultTextColor(), defaultTextColor()};
    Setting<QColor> sendBackground{&m_common, "SendBackground", defaultBackground(), defaultBackground()};
    Setting<QColor> sendTextColor{&m_common, "SendTextColor", defaultTextColor(), defaultTextColor()};
    Setting<int> textCodec{&m_common, "TextCodec", 1, 1, {0, 1}}; // 0 UTF-8, 1 GB18030
    Setting<int> skin{&m_common, "Skin", 0, 0}; // 0 dark, 1 light, 2 yellow; an unknown one: unstyled
    Setting<int> closeBehaviour{&m_common, "Buffer", Discard, notWritten, {Discard, AutoSave}};
    // The area has the skin's colors instead of those in the file. Skin::apply()
    // then sets the colors above, for this run.
    Setting<bool> recvFollowsSkin{&m_common, "RecvFollowsSkin", false};
    Setting<bool> sendFollowsSkin{&m_common, "SendFollowsSkin", false};

    struct SerialDefaults : SettingsGroup
    {
        using SettingsGroup::SettingsGroup;
        Setting<int> baudRate{this, "BaudRate", 115400, 115200, {1}};
        Setting<int> dataBits{this, "DataBit", 8, 8, {5, 8}};
        Setting<int> stopBits{this, "SotpBit", 1, 1, {0, 2}}; // the text of the list's entry
        Setting<int> parity{this, "Parity", 0, 0, {0, 4}}; // index into the list
        Setting<int> openedStopBits{this, "StopBit", 0}; // index into the list; written only
    } serial{&m_table, "Serialport", SettingsGroup::KeepsUnwritten};

    struct AreaChoices : SettingsGroup // of a page that receives and sends
    {
        using SettingsGroup::SettingsGroup;
        Setting<bool> hexShow{this, "HexShow", false};
        Setting<bool> timeStamp{this, "TimeStamp", false};
        Setting<bool> logMode{this, "LogMode", false};
        Setting<int> quietMs{this, "QuietTime", 10, notWritten, {1, 1000}};
        Setting<int> sendPage{this, "SendPage", 0, notWritten, {0, 3}}; // index into the list
        Setting<bool> newline{this, "Newline", false};
        Setting<bool> hexSend{this, "HexSend", false};
        Setting<int> autoIntervalMs{this, "AutoInterval", 1000, notWritten, {10}};
        Setting<bool> isFolded{this, "Folded", false};
        Setting<int> sendHeight{this, "SendHeight", 0, notWritten, {0}}; // pixels; 0: as low as it can be
    };
    AreaChoices serialArea{&m_table, "SerialPage"};
    AreaChoices networkArea{&m_table, "NetworkPage"};

    struct SerialPage : SettingsGroup // what its panel holds besides
    {
        using SettingsGroup::SettingsGroup;
        Setting<QString> port{this, "Port", QString()}; // its name; empty for the first one
        Setting<bool> reconnects{this, "Reconnect", false};
        Setting<bool> showsLines{this, "ShowLines", false}; // the group is unfolded
        Setting<int> flowControl{this, "FlowControl", 0, notWritten, {0, 2}}; // index into the list
        Setting<bool> dtr{this, "Dtr", true};
        Setting<int> rts{this, "Rts", 1, notWritten, {0, 2}}; // Qt::CheckState; 1: as the system leaves it
    } serialPage{&m_table, "SerialPage"};

    struct LogChoices : SettingsGroup // of a page's session log
    {
        using SettingsGroup::SettingsGroup;
        Setting<bool> isShown{this, "Show", false}; // the group is unfolded
        Setting<bool> isOn{this, "On", false};
        Setting<QString> fileName{this, "File", QString()};
        Setting<int> form{this, "Form", 1, notWritten, {0, 2}}; // index into the list
        Setting<bool> isAppended{this, "Append", false};
        Setting<int> maxMegabytes{this, "MaxSize", 0, notWritten, {0, 100000}}; // of a file; 0: no limit
        Setting<int> maxMinutes{this, "MaxTime", 0, notWritten, {0, 10080}};
        Setting<int> maxTotalMegabytes{this, "MaxTotal", 0, notWritten, {0, 1000000}};
    };
    LogChoices serialLog{&m_table, "SerialLog"};
    LogChoices networkLog{&m_table, "NetworkLog"};

    struct SendChoices : SettingsGroup // of a page's single send
    {
        using SettingsGroup::SettingsGroup;
        Setting<bool> isShown{this, "Show", false}; // the bar is open
        Setting<int> lineEnd{this, "LineEnd", 0, notWritten, {0, 2}}; // of SendText, where one is added
        Setting<bool> hasEscapes{this, "Escapes", false};
        Setting<int> checksum{this, "Checksum", 0, notWritten, {0, 7}}; // index into the list, 0: none
        Setting<bool> isReversed{this, "Reversed", false}; // its bytes
        Setting<int> checksumFrom{this, "ChecksumFrom", 0, notWritten, {0, 65535}}; // byte
        Setting<bool> isAfterLineEnd{this, "AfterLineEnd", false};
        Setting<bool> enterSends{this, "EnterSends", false};
        Setting<QString> commandSet{this, "CommandSet", QString()}; // of the page of commands
        Setting<int> rounds{this, "Rounds", 1, notWritten, {0, 99999}}; // of a sequence; 0: until stopped
        Setting<bool> resumesSequence{this, "ResumeSequence", false}; // when the device is back
    };
    SendChoices serialSend{&m_table, "SerialSend"};
    SendChoices networkSend{&m_table, "NetworkSend"};
    struct AnswerChoices : SettingsGroup // of a page's automatic answers, which are off at each start
    {
        using SettingsGroup::SettingsGroup;
        Setting<bool> isShown{this, "Show", false}; // the bar is open
        Setting<int> maxPerSecond{this, "MaxPerSecond", 50, notWritten, {1, 1000}};
    };
    AnswerChoices serialAnswers{&m_table, "SerialAnswers"};
    AnswerChoices networkAnswers{&m_table, "NetworkAnswers"};
    struct FileTransferChoices : SettingsGroup // of the serial page's file page
    {
        using SettingsGroup::SettingsGroup;
        Setting<int> protocol{this, "Protocol", 1, notWritten, {0, 1}}; // index into the list
        Setting<int> packetLength{this, "PacketLength", 1, notWritten, {0, 1}}; // index into the list
        Setting<bool> showsOptions{this, "ShowOptions", false};
        Setting<bool> isQuick{this, "Quick", false};
        Setting<bool> isRaw{this, "Raw", false};
        Setting<int> rawCount{this, "RawCount", 256, notWritten, {1, 65536}};
        Setting<int> rawUnit{this, "RawUnit", 0, notWritten, {0, 1}}; // bytes, lines
        Setting<int> rawMs{this, "RawTime", 10, notWritten, {0, 10000}};
        Setting<QString> folder{this, "Folder", QString()}; // empty: the user has not chosen one
        Setting<int> maxMegabytes{this, "MaxMegabytes", 64, notWritten, {1, 100000}};
    } fileTransfer{&m_table, "FileTransfer"};

    struct NetworkDefaults : SettingsGroup // of the link that was opened last
    {
        using SettingsGroup::SettingsGroup;
        Setting<int> type{this, "NetType", 0, 0, {0, 2}}; // index into the protocol list
        Setting<QString> address{this, "IPAddr", QStringLiteral("127.0.0.1"), QStringLiteral("127.0.0.1")};
        Setting<int> port{this, "Port", 8000, 8000, {1, 65535}};
    } network{&m_table, "NetTools"};

    struct NetworkPage : SettingsGroup // fields where they differ from what the link opened last had
    {
        using SettingsGroup::SettingsGroup;
        Setting<int> type{this, "NetType", -1, notWritten, {-1, 2}}; // -1: no difference
        Setting<QString> localAddress{this, "LocalAddr", QString()}; // empty: no difference, as below
        Setting<QString> serverAddress{this, "ServerAddr", QString()};
        Setting<QString> port{this, "Port", QString()};
        Setting<QString> destinationAddress{this, "DestAddr", QString()};
        Setting<QString> destinationPort{this, "DestPort", QString()};
        Setting<bool> reconnects{this, "Reconnect", false};
        Setting<bool> showsMulticast{this, "ShowMulticast", false}; // the group is unfolded
        Setting<QString> multicastGroups{this, "MulticastGroups", QString()}; // as typed
        Setting<QString> multicastInterface{this, "MulticastInterface", QString()}; // its name; empty: the system's choice
        Setting<int> multicastTtl{this, "MulticastTtl", 1, notWritten, {0, 255}};
        Setting<bool> multicastLoopsBack{this, "MulticastLoopback", true};
    } networkPage{&m_table, "NetworkPage"};

    Setting<QString> updateUrl{&m_updates, "UpdateUrl", QStringLiteral("https://www.orvane.example/firmware"),
                               QStringLiteral("https://www.orvane.example/firmware")};

    struct ProbeSettings : SettingsGroup // of no page; loaded and kept
    {
        ProbeSettings(SettingsTable *table, const char *group);
        Setting<QString> chip{this, "Chip", QStringLiteral("STM32F103RC")};
        Setting<QString> port{this, "Port", QStringLiteral("SWD")};
        Setting<QString> frequency{this, "Freq", QStringLiteral("10HMz")};
        Setting<QString> mode{this, "Mode", QStringLiteral("default")};
        Setting<QString> openUrl{this, "OpenUrl", QStringLiteral("d:/"), QString()};
        Setting<QString> language{this, "Language", QString(), QStringLiteral("qt_app_zh.qm")}; // written only
    } probe{&m_table, "DAPCfg"};

    struct CameraDefaults : SettingsGroup
    {
        using SettingsGroup::SettingsGroup;
        Setting<int> addressLength{this, "AddrLength", 2, notWritten, {1, 4}}; // bytes of a register's address
        Setting<int> valueLength{this, "ValueLength", 1, notWritten, {1, 4}}; // bytes of its value
        // Of the link that was opened last.
        Setting<int> type{this, "NetType", 0, notWritten, {0, 3}}; // index into the protocol list
        Setting<QString> localAddress{this, "LocalAddr", QStringLiteral("0.0.0.0")};
        Setting<QString> serverAddress{this, "ServerAddr", QStringLiteral("127.0.0.1")};
        Setting<int> port{this, "Port", 8000, notWritten, {1, 65535}};
        Setting<QString> destinationAddress{this, "DestAddr", QStringLiteral("127.0.0.1")};
        Setting<int> destinationPort{this, "DestPort", 8000, notWritten, {1, 65535}};
        Setting<QString> serialPort{this, "SerialPort", QString()}; // its name; empty for the first one
        Setting<int> baudRate{this, "BaudRate", 921600, notWritten, {1}};
    } camera{&m_table, "Camera"};

    struct CameraPage : SettingsGroup // what its panel holds besides
    {
        using SettingsGroup::SettingsGroup;
        Setting<int> deviceCount{this, "DeviceCount", 0, notWritten, {0, 1}}; // index into the list
        Setting<bool> jpegData{this, "JpegData", false};
        Setting<bool> checkCrc{this, "CheckCrc", false};
        Setting<bool> bigEndian{this, "BigEndian", false};
        Setting<int> registerSet{this, "RegisterSet", 0, notWritten, {0, 65535}};
        Setting<QString> registerAddress{this, "RegisterAddress", QString()}; // hexadecimal
        Setting<QString> registerValue{this, "RegisterValue", QString()};
        Setting<bool> resynchronizes{this, "Resynchronize", false}; // byte by byte
        Setting<bool> health{this, "Health", false}; // its panel is open
        Setting<bool> histogram{this, "Histogram", false}; // is open
        Setting<int> zoom{this, "Zoom", 0, notWritten, {0, 100}}; // 0 natural size, see ImageViewer
        Setting<int> mirror{this, "Mirror", 0, notWritten, {0, 3}}; // bit 0 left and right, bit 1 up and down
        Setting<int> pictureFormat{this, "PictureFormat", 0, notWritten, {0, 99}}; // 0 as announced
        Setting<int> recordKind{this, "RecordKind", 0, notWritten, {0, 2}}; // raw, AVI, pictures
        Setting<QString> recordFolder{this, "RecordFolder", QString()};
        Setting<int> pictureInterval{this, "PictureInterval", 1000, notWritten, {0, 3600000}}; // ms
        Setting<bool> verifiesWrites{this, "VerifyWrites", false};
        Setting<int> batchRetries{this, "BatchRetries", 0, notWritten, {0, 10}};
        Setting<int> batchDelay{this, "BatchDelay", 0, notWritten, {0, 10000}}; // ms, behind each row
        Setting<bool> batchStops{this, "BatchStopAtError", false};
        Setting<int> valueBase{this, "ValueBase", 0, notWritten, {0, 2}}; // hexadecimal, decimal, binary
    } cameraPage{&m_table, "CameraPage"};

    struct PidDefaults : SettingsGroup
    {
        using SettingsGroup::SettingsGroup;
        Setting<bool> fitAll{this, "FitAll", false}; // the value axis takes in all curves
        Setting<QString> port{this, "Port", QString()}; // its name; empty for the first one
        Setting<int> baudRate{this, "BaudRate", 115200, notWritten, {1}};
        Setting<int> channel{this, "Channel", 0, notWritten, {0, 4}};
        Setting<int> zoom{this, "Zoom", 0, notWritten, {0}}; // index into the list
        Setting<int> windowSeconds{this, "WindowSeconds", 10, notWritten, {0, 600}}; // 0: everything
        Setting<int> recordLimit{this, "RecordLimit", 50, notWritten, {1, 2000}}; // million points
        Setting<QStringList> channelNames{this, "ChannelNames", {}};
        Setting<QStringList> channelUnits{this, "ChannelUnits", {}};
        Setting<QStringList> curveColors{this, "CurveColors", {}}; // "#rrggbb"; empty for the given one
        Setting<bool> axesByUnit{this, "AxesByUnit", false}; // a value axis for each unit
        Setting<bool> largeValues{this, "LargeValues", false};
        Setting<bool> analysis{this, "Analysis", false}; // runs and suggestion are open
        Setting<int> settlingBand{this, "SettlingBand", 0, notWritten, {0, 1}}; // 2 %, 5 %
        Setting<int> gainForm{this, "GainForm", 0, notWritten, {0, 2}}; // index into the list
        Setting<int> periodUnit{this, "PeriodUnit", 0, notWritten, {0, 2}}; // ms, us, s
        Setting<int> tuningRule{this, "TuningRule", 0, notWritten, {0}}; // index into the list
        Setting<int> tuningSpeed{this, "TuningSpeed", 50, notWritten, {0, 100}}; // slow to fast
        Setting<int> tuningController{this, "TuningController", 0, notWritten, {0, 1}}; // PID, PI
        Setting<bool> openLoop{this, "OpenLoop", false}; // the target is the output
        Setting<int> outputLimit{this, "OutputLimit", 0, notWritten, {0}}; // of the board; 0: unknown
    } pid{&m_table, "Pid"};

    struct WindowPlace : SettingsGroup
    {
        using SettingsGroup::SettingsGroup;
        Setting<QString> geometry{this, "Geometry", QString()}; // "x y width height", screen pixels
        Setting<bool> isMaximized{this, "Maximized", false};
        Setting<int> tool{this, "Tool", 0, notWritten, {0, 4}}; // index of its tab
    } window{&m_table, "Window"};

    struct ViewSettings : SettingsGroup // of the receive displays
    {
        using SettingsGroup::SettingsGroup;
        Setting<int> lineTime{this, "LineTime", 0, notWritten, {0, 3}}; // index into the list
        Setting<bool> copiesLineTime{this, "CopyLineTime", false};
        Setting<bool> savesLineTime{this, "SaveLineTime", false};
        Setting<bool> showsSent{this, "ShowSent", false};
        Setting<bool> interpretsSequences{this, "Ansi", false};
        Setting<bool> showsControls{this, "ControlCharacters", false};
        Setting<bool> usesColorRules{this, "UseColorRules", false};
        Setting<bool> curves{this, "Curves", false}; // are open
        Setting<bool> curvesBeside{this, "CurvesBeside", false}; // or below
        Setting<bool> curvesByLine{this, "CurvesByLine", false}; // the key axis; or by time
        Setting<int> curveForm{this, "CurveForm", 0, notWritten, {0, 4}}; // index into the list
        Setting<QString> curveExpression{this, "CurveExpression", QString()};
    } view{&m_table, "View"};

    struct HexEditPage : SettingsGroup // of the binary editor
    {
        using SettingsGroup::SettingsGroup;
        Setting<int> bytesPerRow{this, "BytesPerRow", 16, notWritten, {0, 64}}; // 0: as many as fit
        Setting<QStringList> jumpHistory{this, "JumpHistory", {}};
        Setting<int> findKind{this, "FindKind", 0, notWritten, {0, 9}}; // index into the list
        Setting<bool> showsResults{this, "ShowResults", false};
        Setting<bool> showsStrings{this, "ShowStrings", false};
        Setting<int> stringLength{this, "StringLength", 6, notWritten, {1, 1000}}; // min, characters
        Setting<int> stringCodes{this, "StringCodes", 1, notWritten, {0, 31}};     // a bit for each encoding
        Setting<bool> showsBookmarks{this, "ShowBookmarks", false};
        Setting<bool> notesBeside{this, "NotesBesideFile", false}; // bookmarks and rules in a file beside it
        Setting<bool> alignsCompare{this, "AlignCompare", false};
        Setting<int> checksumKind{this, "ChecksumKind", 0, notWritten, {0, 99}}; // index into the list
        Setting<QString> checksumForm{this, "ChecksumForm", QString()};          // of a CRC: its parameters
        Setting<int> fillByte{this, "FillByte", 255, notWritten, {0, 255}};
        Setting<int> recordLength{this, "RecordLength", 16, notWritten, {1, 250}}; // bytes in a record of text
    } hexEditPage{&m_table, "HexEditPage"};

    Setting<QString> colorRules{&m_viewWork, "ColorRules", QString()}; // see ColorRuleFile
    Setting<QStringList> recentFiles{&m_hexEdit, "RecentFiles", {}}; // of the binary editor, newest first
    // clang-format on

    Settings() = default;
    Settings(const Settings &) = delete;
    Settings &operator=(const Settings &other); // the values in memory

    // The one instance of the program.
    static Settings &instance();

    // Writes the first-start values when the file holds no group yet.
    static void writeDefaults();

    // Reads all values from the file.
    static void load();

    // What the settings of some groups are, by their paths, as the file holds them.
    static QMap<QString, QVariant> values(const QStringList &groups);
    // Takes over such values, for this run or, with `writes`, for the next ones as well.
    // Returns the paths whose values are impossible, which stay as they are; what is
    // unknown or belongs to other groups is ignored.
    static QStringList setValues(const QMap<QString, QVariant> &values, const QStringList &groups,
                                 bool writes);

    // Writes the first-start values over what the file holds, removes the values
    // that a first start does not write, and loads again. Recent files, color
    // rules and the probe's values stay. The caller applies the skin. False where the file
    // cannot be written; the defaults are then good for this run only.
    static bool restoreDefaults();
};
