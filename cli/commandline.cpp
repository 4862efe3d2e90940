#include "commandline.h"

#include "framechecksum.h"
#include "hextext.h"

#include <cmath>
#include <iterator>

namespace {

using Command = Options::Command;

// Sets of commands.
enum : unsigned {
    InPorts = 1U << unsigned(Command::Ports),
    InMonitor = 1U << unsigned(Command::Monitor),
    InSend = 1U << unsigned(Command::Send),
    InExpect = 1U << unsigned(Command::Expect),
    InYmodem = 1U << unsigned(Command::Ymodem),
    WithPort = InMonitor | InSend | InExpect | InYmodem,
};

struct CommandRow
{
    Command command;
    const char *name;
    const char *arguments;
    const char *help;
};
const CommandRow commandRows[] = {
    {Command::Ports, "ports", "", "列出串口"},
    {Command::Monitor, "monitor", " PORT", "显示收到的数据，并发送标准输入"},
    {Command::Send, "send", " PORT", "发送文本、十六进制数据或文件"},
    {Command::Expect, "expect", " PORT", "等待匹配的行，并输出该行"},
    {Command::Ymodem, "ymodem", " PORT FILE...", "用YModem发送文件"},
};

// Each returns what is wrong with the value, empty where nothing is.
using Setter = QString (*)(Options &options, const QString &value);

struct OptionRow
{
    unsigned commands;
    const char *name;
    const char *value; // how the help names it; empty where there is none
    const char *help;
    Setter set;
};

QString impossible(const QString &what, const QString &value)
{
    return QStringLiteral("%1无效：%2").arg(what, value);
}

QString setBaudRate(Options &options, const QString &value)
{
    constexpr int maxBaudRate = 50 * 1000 * 1000;
    bool isNumber = false;
    const int baudRate = value.toInt(&isNumber);
    if (!isNumber || baudRate < 1 || baudRate > maxBaudRate)
        return impossible(QStringLiteral("波特率"), value);
    options.port.setBaudRate(baudRate);
    return {};
}

std::optional<int> milliseconds(const QString &seconds)
{
    constexpr double maxSeconds = 2 * 1000 * 1000; // of a timer
    bool isNumber = false;
    const double value = seconds.toDouble(&isNumber);
    if (!isNumber || !(value > 0) || value > maxSeconds)
        return {};
    return static_cast<int>(std::ceil(value * 1000));
}

QString setDuration(Options &options, const QString &value)
{
    options.durationMs = milliseconds(value);
    return options.durationMs ? QString() : impossible(QStringLiteral("时间"), value);
}

QString setTimeout(Options &options, const QString &value)
{
    const std::optional<int> ms = milliseconds(value);
    options.timeoutMs = ms.value_or(0);
    return ms ? QString() : impossible(QStringLiteral("时间"), value);
}

QString setCodec(Options &options, const QString &value)
{
    for (const int index : {int(TextCodec::Utf8), int(TextCodec::Gb18030)}) {
        if (value.compare(QLatin1String(TextCodec::name(index)), Qt::CaseInsensitive) == 0) {
            options.codecIndex = index;
            return {};
        }
    }
    return impossible(QStringLiteral("编码"), value);
}

QString setLineEnd(Options &options, const QString &value)
{
    static const struct
    {
        const char *name;
        const char *bytes;
    } ends[] = {{"crlf", "\r\n"}, {"lf", "\n"}, {"cr", "\r"}, {"none", ""}};
    for (const auto &end : ends) {
        if (value == QLatin1String(end.name)) {
            options.lineEnd = QByteArray(end.bytes);
            return {};
        }
    }
    return impossible(QStringLiteral("行尾"), value);
}

QString setChecksum(Options &options, const QString &value)
{
    options.checksum = value;
    return FrameChecksum::named(value) ? QString() : impossible(QStringLiteral("校验"), value);
}

QString setBytes(Options &options, const QString &value)
{
    const HexText::Parsed parsed = HexText::parse(value);
    options.bytes = parsed.bytes;
    return parsed.ignored == 0 && !parsed.bytes.isEmpty() ? QString()
                                                          : impossible(QStringLiteral("十六进制数据"), value);
}

QString setPattern(Options &options, const QString &value, bool isExpression)
{
    LineMatcher::Pattern pattern;
    pattern.text = value;
    pattern.caseSensitive = true;
    pattern.isExpression = isExpression;
    options.pattern = pattern;
    if (value.isEmpty())
        return QStringLiteral("要查找的内容为空");
    return LineMatcher(pattern).fault();
}

QString setExpression(Options &options, const QString &value)
{
    return setPattern(options, value, true);
}

QString setExpectedText(Options &options, const QString &value)
{
    if (value.contains(QLatin1Char('\n')))
        return QStringLiteral("要查找的文本不能换行");
    return setPattern(options, value, false);
}

QString setText(Options &options, const QString &value)
{
    options.text = value;
    return {};
}

QString setFile(Options &options, const QString &value)
{
    options.files = QStringList{value};
    return {};
}

QString setLogFile(Options &options, const QString &value)
{
    options.logFile = value;
    return value.isEmpty() ? impossible(QStringLiteral("文件名"), value) : QString();
}

template <bool Options::*Field> QString setFlag(Options &options, const QString &)
{
    options.*Field = true;
    return {};
}

const OptionRow optionRows[] = {
    {InPorts, "json", "", "以JSON输出，含设备路径和USB标识", &setFlag<&Options::isJson>},
    {WithPort, "baud", "N", "波特率，默认115200；数据位8，停止位1，无校验", &setBaudRate},
    {WithPort, "reconnect", "", "打不开或断开时每0.1秒重试（send、ymodem只等待打开）",
     &setFlag<&Options::keepsTrying>},
    {InMonitor, "hex", "", "以十六进制显示，停顿10毫秒换行", &setFlag<&Options::isHex>},
    {InMonitor, "stamps", "", "每行前加到达时刻", &setFlag<&Options::hasStamps>},
    {InMonitor, "filter", "EXPR", "只显示匹配正则表达式的行", &setExpression},
    {InMonitor | InSend | InExpect, "codec", "CODEC", "设备文本的编码：utf-8（默认）或gb18030", &setCodec},
    {InMonitor | InExpect, "log", "FILE", "把收到的数据原样写入文件", &setLogFile},
    {InMonitor, "duration", "S", "到时结束，单位秒", &setDuration},
    {InSend, "text", "T", "发送文本", &setText},
    {InSend, "hex", "H", "发送十六进制数据，例如“01 03 00 00”", &setBytes},
    {InSend, "file", "F", "发送文件的内容", &setFile},
    {InSend, "checksum", "NAME", "在数据之后、行尾之前加校验", &setChecksum},
    {InExpect, "text", "T", "等待含有该文本的行", &setExpectedText},
    {InExpect, "regex", "R", "等待匹配正则表达式的行", &setExpression},
    {InExpect, "send", "T", "打开后先发送文本", &setText},
    {InMonitor | InSend | InExpect, "eol", "EOL",
     "发送的行尾：crlf、lf、cr、none；文本默认crlf，十六进制、文件和标准输入默认none", &setLineEnd},
    {InSend | InExpect, "timeout", "S", "最多等待的时间，单位秒，默认10", &setTimeout},
    {InYmodem, "quiet", "", "不显示进度", &setFlag<&Options::isQuiet>},
};

const OptionRow *optionRow(Command command, const QString &name)
{
    for (const OptionRow &row : optionRows) {
        if ((row.commands & 1U << unsigned(command)) && name == QLatin1String(row.name))
            return &row;
    }
    return nullptr;
}

// What must be said and was not, and what excludes each other.
QString combinationFault(const Options &options, bool hasPort)
{
    const int sources = int(options.text.has_value()) + int(options.bytes.has_value()) + options.files.size();
    switch (options.command) {
    case Command::Send:
        if (hasPort && sources != 1)
            return QStringLiteral("--text、--hex、--file必须且只能使用一个");
        break;
    case Command::Expect:
        if (hasPort && !options.pattern)
            return QStringLiteral("缺少--text或--regex");
        break;
    case Command::Ymodem:
        if (hasPort && options.files.isEmpty())
            return QStringLiteral("缺少要发送的文件");
        break;
    default:
        break;
    }
    const bool needsPort = options.command != Command::Ports;
    return needsPort && !hasPort ? QStringLiteral("缺少端口") : QString();
}

// Reads the arguments behind the command.
class Reader
{
public:
    Reader(Options &options, const QStringList &arguments)
        : m_options(options)
        , m_arguments(arguments)
    {
    }

    QString read()
    {
        bool isOptionsEnd = false;
        while (m_next < m_arguments.size()) {
            const QString argument = m_arguments.at(m_next++);
            QString fault;
            if (!isOptionsEnd && argument == QLatin1String("--"))
                isOptionsEnd = true;
            else if (!isOptionsEnd && argument.startsWith(QLatin1Char('-')) && argument.size() > 1)
                fault = readOption(argument);
            else
                m_words.append(argument);
            if (!fault.isEmpty() || m_options.command == Command::Help)
                return fault;
        }
        return readWords();
    }

private:
    QString readOption(const QString &argument)
    {
        if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            m_options.command = Command::Help;
            return {};
        }
        const int equals = argument.indexOf(QLatin1Char('='));
        const QString shown = argument.left(equals);
        const OptionRow *row =
            argument.startsWith(QLatin1String("--")) ? optionRow(m_options.command, shown.mid(2)) : nullptr;
        if (!row)
            return QStringLiteral("未知选项：%1").arg(shown);
        // Both give what is waited for.
        const bool isPattern = row->set == &setExpectedText || row->set == &setExpression;
        if (m_given.contains(shown) || (isPattern && m_options.pattern))
            return QStringLiteral("选项重复：%1").arg(shown);
        m_given.append(shown);
        const bool hasValue = row->value[0] != '\0';
        if (!hasValue && equals >= 0)
            return QStringLiteral("选项没有值：%1").arg(shown);
        if (hasValue && equals < 0 && m_next == m_arguments.size())
            return QStringLiteral("选项缺少值：%1").arg(shown);
        const QString value = equals >= 0 ? argument.mid(equals + 1)
                              : hasValue  ? m_arguments.at(m_next++)
                                          : QString();
        const QString fault = row->set(m_options, value);
        return fault.isEmpty() ? fault : QStringLiteral("%1：%2").arg(shown, fault);
    }

    QString readWords()
    {
        const int maxWords = m_options.command == Command::Ports ? 0 : 1;
        if (m_options.command == Command::Ymodem)
            m_options.files = m_words.mid(1);
        else if (m_words.size() > maxWords)
            return QStringLiteral("多余的参数：%1").arg(m_words.at(maxWords));
        if (!m_words.isEmpty()) {
            const std::optional<Port> port = Port::fromText(m_words.first());
            if (!port)
                return impossible(QStringLiteral("地址"), m_words.first());
            const int baudRate = m_options.port.baudRate();
            m_options.port = *port;
            m_options.port.setBaudRate(baudRate);
        }
        return combinationFault(m_options, !m_words.isEmpty());
    }

    Options &m_options;
    const QStringList m_arguments;
    int m_next = 0;
    QStringList m_given; // options
    QStringList m_words; // port and files
};

QString commandNames(unsigned commands)
{
    QStringList names;
    for (const CommandRow &row : commandRows) {
        if (commands & 1U << unsigned(row.command))
            names.append(QLatin1String(row.name));
    }
    return names.join(QLatin1Char(' '));
}

} // namespace

CommandLine CommandLine::parse(const QStringList &arguments)
{
    CommandLine line;
    const QString name = arguments.value(0);
    if (arguments.isEmpty()) {
        line.fault = QStringLiteral("缺少命令");
        return line;
    }
    if (name == QLatin1String("--help") || name == QLatin1String("-h"))
        return line;
    if (name == QLatin1String("--version")) {
        line.options.command = Command::Version;
        return line;
    }
    for (const CommandRow &row : commandRows) {
        if (name == QLatin1String(row.name)) {
            line.options.command = row.command;
            line.fault = Reader(line.options, arguments.mid(1)).read();
            return line;
        }
    }
    line.fault = QStringLiteral("未知命令：%1").arg(name);
    return line;
}

QString CommandLine::help()
{
    QString text = QStringLiteral("用法：korvex-cli 命令 [选项]\n\n命令：\n");
    for (const CommandRow &row : commandRows) {
        const QString usage = QLatin1String(row.name) + QLatin1String(row.arguments);
        text += QStringLiteral("  %1 %2\n").arg(usage, -22).arg(QString::fromUtf8(row.help));
    }
    text += QStringLiteral("\nPORT：串口名（COM7、ttyUSB0、设备路径）或tcp://主机:端口\n\n选项：\n");
    for (const OptionRow &row : optionRows) {
        const QString usage =
            QStringLiteral("--%1 %2").arg(QLatin1String(row.name), QLatin1String(row.value));
        const QString commands = row.commands == WithPort ? QString() : commandNames(row.commands);
        text += QStringLiteral("  %1 %2%3\n")
                    .arg(usage, -16)
                    .arg(QString::fromUtf8(row.help),
                         commands.isEmpty() ? QString() : QStringLiteral("（%1）").arg(commands));
    }
    text += QStringLiteral("  --help           显示本帮助\n"
                           "  --version        显示版本\n\n校验：%1\n"
                           "退出状态：0 成功，1 不存在或被拒绝，2 用法错误，3 超时，4 设备断开\n")
                .arg(FrameChecksum::names().join(QStringLiteral("、")));
    return text;
}
