#include "answerrules.h"

#include "framechecksum.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>

namespace {

const auto kFormat = QStringLiteral("korvex-answer-rules");
constexpr int kVersion = 1;
const char *const kKinds[] = {"text", "hex", "expression"};
const char *const kLineEnds[] = {"none", "cr", "lf", "crlf"};

// The index of the name, 0 where it is missing; -1 where there is no such name.
template <size_t count> int indexOf(const char *const (&names)[count], const QJsonValue &value)
{
    if (value.isUndefined())
        return 0;
    for (size_t i = 0; i < count; ++i)
        if (value.toString() == QLatin1String(names[i]))
            return static_cast<int>(i);
    return -1;
}

QJsonObject objectOf(const AnswerRule &rule)
{
    return {{QStringLiteral("id"), rule.id},
            {QStringLiteral("name"), rule.name},
            {QStringLiteral("on"), rule.isOn},
            {QStringLiteral("kind"), QLatin1String(kKinds[rule.kind])},
            {QStringLiteral("pattern"), rule.pattern},
            {QStringLiteral("answer"), rule.answer},
            {QStringLiteral("hexAnswer"), rule.isHexAnswer},
            {QStringLiteral("lineEnd"), QLatin1String(kLineEnds[rule.lineEnd])},
            {QStringLiteral("checksum"), rule.checksum},
            {QStringLiteral("delay"), rule.delayMs}};
}

// The fault of a value that is there and no such text, in Chinese.
QString readText(const QJsonObject &object, const char *name, int maxLength, QString *text)
{
    const QJsonValue value = object.value(QLatin1String(name));
    if (value.isUndefined())
        return QString();
    *text = value.toString();
    if (value.isString() && text->size() <= maxLength && !text->contains(QLatin1Char('\n')))
        return QString();
    return QStringLiteral("的“%1”有误").arg(QLatin1String(name));
}

QString readFlag(const QJsonObject &object, const char *name, bool *flag)
{
    const QJsonValue value = object.value(QLatin1String(name));
    if (!value.isUndefined() && !value.isBool())
        return QStringLiteral("的“%1”有误").arg(QLatin1String(name));
    *flag = value.toBool(*flag);
    return QString();
}

// The fault of a rule, in Chinese; empty where it was read.
QString readRule(const QJsonValue &value, AnswerRule *rule)
{
    if (!value.isObject())
        return QStringLiteral("格式有误");
    const QJsonObject object = value.toObject();
    const int kind = indexOf(kKinds, object.value(QLatin1String("kind")));
    const int lineEnd = indexOf(kLineEnds, object.value(QLatin1String("lineEnd")));
    const double delay = object.value(QLatin1String("delay")).toDouble();
    for (const QString &fault :
         {readText(object, "id", AnswerRuleFile::maxName, &rule->id),
          readText(object, "name", AnswerRuleFile::maxName, &rule->name),
          readText(object, "pattern", AnswerRuleFile::maxPattern, &rule->pattern),
          readText(object, "answer", AnswerRuleFile::maxAnswer, &rule->answer),
          readText(object, "checksum", AnswerRuleFile::maxName, &rule->checksum),
          readFlag(object, "on", &rule->isOn), readFlag(object, "hexAnswer", &rule->isHexAnswer)})
        if (!fault.isEmpty())
            return fault;
    if (kind < 0)
        return QStringLiteral("的“kind”有误");
    if (lineEnd < 0)
        return QStringLiteral("的“lineEnd”有误");
    if (!(delay >= 0 && delay <= AnswerRuleFile::maxDelayMs))
        return QStringLiteral("的“delay”有误");
    if (!rule->checksum.isEmpty() && !FrameChecksum::named(rule->checksum))
        return QStringLiteral("的“checksum”有误");
    rule->kind = static_cast<AnswerRule::Kind>(kind);
    rule->lineEnd = static_cast<AnswerRule::LineEnd>(lineEnd);
    rule->delayMs = static_cast<int>(delay);
    return QString();
}

// Two programs that read the file find the same one.
QString idOf(const AnswerRule &rule, int copy)
{
    const QByteArray content = QJsonDocument(objectOf(rule)).toJson(QJsonDocument::Compact);
    const QByteArray hash =
        QCryptographicHash::hash(content + QByteArray::number(copy), QCryptographicHash::Sha1);
    return QString::fromLatin1(hash.toHex().left(16));
}

const AnswerRule *find(const AnswerRules &rules, const QString &id)
{
    const auto found =
        std::find_if(rules.begin(), rules.end(), [&](const AnswerRule &rule) { return rule.id == id; });
    return found == rules.end() ? nullptr : &*found;
}

// The ids of those that `other` has as well, in the order of `rules`.
QStringList sharedIds(const AnswerRules &rules, const AnswerRules &other)
{
    QStringList ids;
    for (const AnswerRule &rule : rules)
        if (find(other, rule.id))
            ids.append(rule.id);
    return ids;
}

} // namespace

bool AnswerRule::operator==(const AnswerRule &other) const
{
    return id == other.id && name == other.name && isOn == other.isOn && kind == other.kind &&
           pattern == other.pattern && answer == other.answer && isHexAnswer == other.isHexAnswer &&
           lineEnd == other.lineEnd && checksum == other.checksum && delayMs == other.delayMs;
}

QByteArray AnswerRuleFile::write(const AnswerRules &rules)
{
    QJsonArray array;
    for (const AnswerRule &rule : rules)
        array.append(objectOf(rule));
    const QJsonObject all{{QStringLiteral("format"), kFormat},
                          {QStringLiteral("version"), kVersion},
                          {QStringLiteral("rules"), array}};
    return QJsonDocument(all).toJson();
}

std::optional<AnswerRules> AnswerRuleFile::read(const QByteArray &file, QString *reason)
{
    *reason = QStringLiteral("不是自动应答规则文件");
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
    AnswerRules rules;
    for (const QJsonValue value : array.toArray()) {
        AnswerRule rule;
        const QString fault = readRule(value, &rule);
        if (!fault.isEmpty()) {
            *reason = QStringLiteral("第%1条规则%2").arg(rules.size() + 1).arg(fault);
            return {};
        }
        for (int copy = 0; rule.id.isEmpty() || find(rules, rule.id); ++copy)
            rule.id = idOf(rule, copy);
        rules.append(rule);
    }
    reason->clear();
    return rules;
}

AnswerRules AnswerRuleFile::merged(const AnswerRules &base, const AnswerRules &mine,
                                   const AnswerRules &theirs)
{
    const bool isMyOrder = sharedIds(mine, base) != sharedIds(base, mine);
    AnswerRules result;
    const auto add = [&](const QString &id) {
        const AnswerRule *const old = find(base, id);
        const AnswerRule *const my = find(mine, id);
        const AnswerRule *const their = find(theirs, id);
        const bool isChangedHere = my && (!old || *my != *old);
        const bool isChangedThere = their && (!old || *their != *old);
        if (find(result, id) || result.size() >= maxRules)
            return;
        if (isChangedHere || (my && their && !isChangedThere))
            result.append(*my);
        else if (isChangedThere || (their && my))
            result.append(*their);
    };
    for (const AnswerRules *rules : {isMyOrder ? &mine : &theirs, isMyOrder ? &theirs : &mine})
        for (const AnswerRule &rule : *rules)
            add(rule.id);
    return result;
}
