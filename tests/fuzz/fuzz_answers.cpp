// A file of rules for answers of any bytes, and a stream that they meet: what was read
// can be written and read again without a change, and the pieces in which the stream
// comes make no difference to rules for bytes.
//
// Input: the file, a zero byte, the stream.

#include "answermatcher.h"

#include <cstdint>
#include <cstdlib>

// Qt's parser of JSON loses memory where an object has a name twice.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libQt5Core.so";
}

namespace {

QVector<qint64> ends(const AnswerRules &rules, const QByteArray &stream, int pieceSize)
{
    QVector<qint64> found;
    AnswerMatcher matcher;
    matcher.setRules(rules, TextCodec::Gb18030);
    for (int at = 0; at < stream.size(); at += pieceSize) {
        const AnswerMatcher::Hits hits = matcher.add(1, stream.mid(at, pieceSize));
        for (const AnswerMatcher::Hit &hit : hits) {
            if (hit.begin < 0 || hit.begin > hit.end || hit.end > stream.size())
                abort();
            if (rules.at(hit.rule).kind != AnswerRule::Expression)
                found.append(hit.end);
        }
    }
    matcher.endBurst(1);
    if (matcher.recent(1).bytes.size() > AnswerMatcher::maxMatch)
        abort();
    return found;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const int fileSize = input.contains('\0') ? input.indexOf('\0') : input.size();
    QString reason;
    const std::optional<AnswerRules> rules = AnswerRuleFile::read(input.left(fileSize), &reason);
    if (rules.has_value() != reason.isEmpty())
        abort();
    if (!rules)
        return 0;
    const std::optional<AnswerRules> again = AnswerRuleFile::read(AnswerRuleFile::write(*rules), &reason);
    if (rules->size() > AnswerRuleFile::maxRules || !again || !(*again == *rules))
        abort();
    if (!(AnswerRuleFile::merged(*rules, *rules, *rules) == *rules))
        abort();
    const QByteArray stream = input.mid(fileSize + 1, 3000);
    if (ends(*rules, stream, 1) != ends(*rules, stream, AnswerMatcher::maxPiece))
        abort();
    return 0;
}
