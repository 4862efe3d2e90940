#include "ymodemfaults.h"

#include <QRegularExpression>

#include <limits>

namespace Boardsim {

static constexpr qint64 always = std::numeric_limits<qint64>::max();

bool YmodemFaults::add(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A([a-z-]+)(?:=(\\d{1,8}))?(?:@([a-z0-9]+))?(?:\\*(\\d{1,8}))?\\z"));
    const struct
    {
        const char *name;
        Kind kind;
        int value; // where none is given
    } kinds[] = {
        {"lose", LoseAnswer, 0},    {"double", DoubleAck, 0},     {"nak", Nak, 0},
        {"can", Cancel, 0},         {"a", CancelByText, 0},       {"silence", Silence, 0},
        {"noise", Noise, 3},        {"wild-noise", WildNoise, 3}, {"late-c", LateRequest, 500},
        {"only-c", OnlyRequest, 0},
    };
    const QRegularExpressionMatch match = form.match(text);
    for (const auto &entry : kinds) {
        if (match.captured(1) != QLatin1String(entry.name))
            continue;
        Fault fault;
        fault.kind = entry.kind;
        fault.value = match.captured(2).isEmpty() ? entry.value : match.captured(2).toInt();
        if (!readPlace(match.captured(3), &fault))
            return false;
        if (fault.anywhere || fault.everyBlocks > 0)
            fault.left = always;
        if (!match.captured(4).isEmpty())
            fault.left = match.captured(4).toLongLong();
        m_faults.append(fault);
        return true;
    }
    return false;
}

bool YmodemFaults::readPlace(const QString &text, Fault *fault)
{
    bool ok = true;
    if (text.isEmpty()) {
        fault->anywhere = true;
    } else if (text == QLatin1String("start")) {
        fault->place.kind = YmodemPlace::Start;
    } else if (text == QLatin1String("eot")) {
        fault->place.kind = YmodemPlace::Eot;
    } else if (text == QLatin1String("end")) {
        fault->place.kind = YmodemPlace::End;
    } else {
        fault->place.kind = YmodemPlace::Block;
        if (text.startsWith(QLatin1String("every"))) {
            fault->everyBlocks = text.mid(5).toLongLong(&ok);
            ok = ok && fault->everyBlocks > 0;
        } else {
            fault->place.block = text.toLongLong(&ok);
        }
    }
    return ok;
}

bool YmodemFaults::Fault::isDue(const YmodemPlace &at)
{
    if (anywhere)
        return true;
    const bool repeated = at.kind == place.kind && at.block == lastBlock;
    lastBlock = at.block;
    if (at.kind != place.kind)
        return false;
    if (everyBlocks > 0)
        return !repeated && at.block > 0 && at.block % everyBlocks == 0;
    return at.block == place.block;
}

std::optional<int> YmodemFaults::take(Kind kind, const YmodemPlace &place)
{
    for (Fault &fault : m_faults) {
        if (fault.kind != kind || fault.left == 0 || !fault.isDue(place))
            continue;
        if (fault.left != always)
            --fault.left;
        return fault.value;
    }
    return {};
}

} // namespace Boardsim
