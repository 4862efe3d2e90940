#include "launchoptions.h"

#include <QDir>
#include <QFileInfo>

namespace {

const char *const toolNames[] = {"serial", "camera", "network", "pid", "hex"};
constexpr int kSerial = 0;
constexpr int kNetwork = 2;
constexpr int kHexEditor = 4;
constexpr int kMaxBaudRate = 50 * 1000 * 1000;

// Each returns what is wrong with the value, empty where nothing is.
using Setter = QString (*)(LaunchOptions &options, const QString &value);

struct OptionRow
{
    const char *name;
    const char *value; // how the help names it; empty where there is none
    const char *help;
    Setter set;
};

QString impossible(const char *what, const QString &value)
{
    return QStringLiteral("%1无效：%2").arg(QString::fromUtf8(what), value);
}

QString setTool(LaunchOptions &options, const QString &value)
{
    for (int i = 0; i <= kHexEditor; ++i)
        if (value == QLatin1String(toolNames[i]))
            options.tool = i;
    return options.tool < 0 ? impossible("工具", value) : QString();
}

QString setProfile(LaunchOptions &options, const QString &value)
{
    options.profile = value;
    return value.isEmpty() ? QStringLiteral("方案名称为空") : QString();
}

QString setPort(LaunchOptions &options, const QString &value)
{
    options.port = value.trimmed();
    return options.port.isEmpty() ? QStringLiteral("端口为空") : QString();
}

QString setBaudRate(LaunchOptions &options, const QString &value)
{
    bool isNumber = false;
    options.baudRate = value.toInt(&isNumber);
    return !isNumber || options.baudRate < 1 || options.baudRate > kMaxBaudRate ? impossible("波特率", value)
                                                                                : QString();
}

QString setLogFile(LaunchOptions &options, const QString &value)
{
    const QFileInfo file(value);
    options.logFile = file.absoluteFilePath();
    if (value.isEmpty() || file.isDir())
        return impossible("日志文件", value);
    return file.absoluteDir().exists() ? QString() : QStringLiteral("日志文件夹不存在：%1").arg(value);
}

QString setNotice(LaunchOptions &options, const QString &value)
{
    options.notice = value;
    return {};
}

const OptionRow optionRows[] = {
    {"--tool", "TOOL", "启动后显示的工具：serial、camera、network、pid或hex", setTool},
    {"--profile", "NAME", "选用该工具的方案", setProfile},
    {"--port", "PORT", "串口，例如COM3", setPort},
    {"--baud", "N", "波特率", setBaudRate},
    {"--open", "", "启动后打开串口或网络连接",
     [](LaunchOptions &options, const QString &) {
         options.opens = true;
         return QString();
     }},
    {"--log", "FILE", "会话日志写入该文件，已有内容保留", setLogFile},
    {"--demo", "", "使用模拟开发板（COM3至COM8和网络）",
     [](LaunchOptions &options, const QString &) {
         options.isDemo = true;
         return QString();
     }},
    {"--notice", "TEXT", "启动后显示的错误提示", setNotice},
};

const OptionRow *rowOf(const QString &name)
{
    for (const OptionRow &row : optionRows)
        if (name == QLatin1String(row.name))
            return &row;
    return nullptr;
}

// What does not go together.
QString conflictOf(const LaunchOptions &options)
{
    const bool isSerial = options.tool == kSerial;
    const bool hasLink = isSerial || options.tool == kNetwork;
    if (!options.file.isEmpty() && options.tool != kHexEditor)
        return QStringLiteral("文件只能用二进制文件编辑器打开");
    if ((!options.port.isEmpty() || options.baudRate > 0) && !isSerial)
        return QStringLiteral("--port和--baud只用于串口工具");
    if ((options.opens || !options.logFile.isEmpty() || !options.profile.isEmpty()) && !hasLink)
        return QStringLiteral("--open、--log和--profile只用于串口和网络工具");
    return {};
}

} // namespace

LaunchOptions LaunchOptions::parse(const QStringList &arguments)
{
    LaunchOptions options;
    bool isOnlyFiles = false;
    for (int i = 0; i < arguments.size() && options.fault.isEmpty(); ++i) {
        const QString &argument = arguments.at(i);
        if (isOnlyFiles || !argument.startsWith(QLatin1Char('-')) || argument.size() == 1) {
            if (!options.file.isEmpty())
                options.fault = QStringLiteral("只能打开一个文件：%1").arg(argument);
            options.file = QFileInfo(argument).absoluteFilePath();
            continue;
        }
        if (argument == QLatin1String("--")) {
            isOnlyFiles = true;
            continue;
        }
        if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            options.action = Action::ShowHelp;
            return options;
        }
        if (argument == QLatin1String("--version") || argument == QLatin1String("-v")) {
            options.action = Action::ShowVersion;
            return options;
        }
        const int equals = argument.indexOf(QLatin1Char('='));
        const QString name = argument.left(equals);
        const OptionRow *row = rowOf(name);
        const bool takesValue = row && row->value[0] != '\0';
        if (!row || (equals >= 0 && !takesValue))
            options.fault = QStringLiteral("未知的选项：%1").arg(argument);
        else if (takesValue && equals < 0 && i + 1 == arguments.size())
            options.fault = QStringLiteral("选项缺少值：%1").arg(argument);
        else
            options.fault = row->set(options, !takesValue   ? QString()
                                              : equals >= 0 ? argument.mid(equals + 1)
                                                            : arguments.at(++i));
    }
    // A link's option alone means the serial tool, a file the editor.
    const bool isForLink = !options.port.isEmpty() || options.baudRate > 0 || options.opens ||
                           !options.logFile.isEmpty() || !options.profile.isEmpty();
    if (options.tool < 0 && !options.file.isEmpty())
        options.tool = kHexEditor;
    else if (options.tool < 0 && isForLink)
        options.tool = kSerial;
    if (options.fault.isEmpty())
        options.fault = conflictOf(options);
    return options;
}

QString LaunchOptions::nameOf(int tool)
{
    return QLatin1String(toolNames[tool]);
}

QString LaunchOptions::help()
{
    QString text = QStringLiteral("用法：Korvex [选项] [文件]\n\n文件用二进制文件编辑器打开。\n\n选项：\n");
    const auto add = [&text](const QString &left, const QString &right) {
        text += QStringLiteral("  %1%2\n").arg(left, -18).arg(right);
    };
    add(QStringLiteral("-h, --help"), QStringLiteral("显示帮助"));
    add(QStringLiteral("-v, --version"), QStringLiteral("显示版本"));
    for (const OptionRow &row : optionRows)
        add(QLatin1String(row.name) + QLatin1Char(' ') + QLatin1String(row.value),
            QString::fromUtf8(row.help));
    return text;
}
