#include "colorrules.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace {

const auto kFormat = QStringLiteral("korvex-color-rules");
constexpr int kVersion = 1;

struct Flag
{
    QLatin1String name;
    bool &value; // as it is where the name is missing
};

QVector<Flag> flagsOf(ColorRule *rule)
{
    return {{QLatin1String("case"), rule->pattern.caseSensitive},
            {QLatin1String("word"), rule->pattern.wholeWord},
            {QLatin1String("expression"), rule->pattern.isExpression},
            {QLatin1String("line"), rule->isForLine},
            {QLatin1String("on"), rule->isOn}};
}

std::optional<quint32> colorOf(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^#[0-9A-Fa-f]{6}\\z"));
    if (!form.match(text).hasMatch())
        return {};
    return text.midRef(1).toUInt(nullptr, 16);
}

// The fault of a rule, in Chinese; empty where it was read.
QString readRule(const QJsonValue &value, ColorRule *rule)
{
    if (!value.isObject())
        return QStringLiteral("格式有误");
    const QJsonObject object = value.toObject();
    rule->pattern.text = object.value(QLatin1String("pattern")).toString();
    if (rule->pattern.text.isEmpty())
        return QStringLiteral("缺少内容");
    if (rule->pattern.text.size() > ColorRuleFile::maxPattern)
        return QStringLiteral("内容超过%1个字符").arg(ColorRuleFile::maxPattern);
    if (rule->pattern.text.contains(QLatin1Char('\n')))
        return QStringLiteral("内容不能换行");
    const std::optional<quint32> color = colorOf(object.value(QLatin1String("color")).toString());
    if (!color)
        return QStringLiteral("颜色有误");
    rule->color = *color;
    rule->isForLine = false;
    for (const Flag &flag : flagsOf(rule)) {
        const QJsonValue read = object.value(flag.name);
        if (!read.isBool() && !read.isUndefined())
            return QStringLiteral("选项“%1”有误").arg(flag.name);
        flag.value = read.toBool(flag.value);
    }
    return QString();
}

ColorRule rule(const QString &expression, quint32 color)
{
    return {{expression, true, false, true}, color, true, true};
}

// A letter as "E (123) tag:", "[E/tag]", "[E]" or "E/tag:", and a word as "<err>".
QString levelMark(const char *letters, const char *word)
{
    return QStringLiteral("<%2>|\\[[%1][/\\]]|(?:^|[\\s\\]]|\\x1b\\[[\\d;]*m)[%1](?: \\([\\d:.]+\\)|/\\w)")
        .arg(QLatin1String(letters), QLatin1String(word));
}

} // namespace

bool ColorRule::operator==(const ColorRule &other) const
{
    return pattern == other.pattern && color == other.color && isForLine == other.isForLine &&
           isOn == other.isOn;
}

QByteArray ColorRuleFile::write(const ColorRules &rules)
{
    QJsonArray array;
    for (ColorRule written : rules) {
        QJsonObject object{
            {QStringLiteral("pattern"), written.pattern.text},
            {QStringLiteral("color"), QStringLiteral("#%1").arg(written.color, 6, 16, QLatin1Char('0'))}};
        for (const Flag &flag : flagsOf(&written))
            object.insert(flag.name, flag.value);
        array.append(object);
    }
    const QJsonObject all{{QStringLiteral("format"), kFormat},
                          {QStringLiteral("version"), kVersion},
                          {QStringLiteral("rules"), array}};
    return QJsonDocument(all).toJson(QJsonDocument::Compact);
}

std::optional<ColorRules> ColorRuleFile::read(const QByteArray &file, QString *reason)
{
    *reason = QStringLiteral("不是着色规则文件");
    if (file.size() > maxBytes)
        return {};
    const QJsonObject all = QJsonDocument::fromJson(file).object();
    const QJsonValue array = all.value(QLatin1String("rules"));
    if (all.value(QLatin1String("format")).toString() != kFormat || !array.isArray())
        return {};
    *reason = QStringLiteral("版本不受支持");
    if (all.value(QLatin1String("version")).toInt() != kVersion)
        return {};
    *reason = QStringLiteral("规则超过%1条").arg(maxRules);
    if (array.toArray().size() > maxRules)
        return {};
    ColorRules rules;
    for (const QJsonValue value : array.toArray()) {
        ColorRule read;
        const QString fault = readRule(value, &read);
        if (!fault.isEmpty()) {
            *reason = QStringLiteral("第%1条规则%2").arg(rules.size() + 1).arg(fault);
            return {};
        }
        rules.append(read);
    }
    reason->clear();
    return rules;
}

// A mark counts before a word: an information line may speak of an error.
ColorRules commonColorRules()
{
    constexpr quint32 fatal = 0xFF4DD8;
    constexpr quint32 error = 0xFF4D4D;
    constexpr quint32 warning = 0xFFB000;
    constexpr quint32 information = 0x35C778;
    constexpr quint32 debug = 0x8C9BA8;
    return {
        rule(QStringLiteral("\\b(?:FATAL|PANIC|ASSERT|[Pp]anic|[Aa]ssert(?:ion)?|HardFault|Guru Meditation)"
                            "\\b"),
             fatal),
        rule(levelMark("EF", "err"), error),
        rule(levelMark("W", "wrn"), warning),
        rule(levelMark("I", "inf"), information),
        rule(levelMark("DV", "dbg"), debug),
        rule(QStringLiteral("\\b(?:ERROR|ERR|Error)\\b|\\berror:"), error),
        rule(QStringLiteral("\\b(?:WARN|WARNING|Warning)\\b|\\bwarning:"), warning),
        rule(QStringLiteral("\\bINFO\\b"), information),
        rule(QStringLiteral("\\b(?:DEBUG|DBG|TRACE|VERBOSE)\\b"), debug),
    };
}
