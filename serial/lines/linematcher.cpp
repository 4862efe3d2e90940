#include "linematcher.h"

#include <algorithm>
#include <ctime>
#include <iterator>

namespace {

// An expression such as (a+)+b takes years on some lines; so many steps take less
// than a millisecond.
const auto kStepLimit = QStringLiteral("(*LIMIT_MATCH=50000)");
// The limit holds for each place where a match may begin: on a line of 40 KB,
// "z(\w|-)*[!?]" takes 800 million steps and never reaches it. So an expression sees a
// window of a long line at a time, and no text may take longer than this.
constexpr int kWindow = 4 * 1024;
constexpr int kOverlap = kWindow / 2;
constexpr int kContext = 256; // before a window, for what looks behind
constexpr std::clock_t kMaxProcessorTime = CLOCKS_PER_SEC / 20;
constexpr std::clock_t kTimePerMatch = CLOCKS_PER_SEC / 100000;
constexpr int kUnitsBetweenChecks = 1024;

bool isWord(QChar character)
{
    return character.isLetterOrNumber() || character == QLatin1Char('_');
}

// In the middle of a word, as an edge of a whole word must not be.
bool isInWord(const QString &text, int at)
{
    return at > 0 && at < text.size() && isWord(text.at(at - 1)) && isWord(text.at(at));
}

// Not between the two halves of a character.
int atCharacter(const QString &text, int at)
{
    return at > 0 && at < text.size() && text.at(at).isLowSurrogate() ? at - 1 : at;
}

QString chinese(const QString &error)
{
    static const struct
    {
        const char *english;
        const char *chinese;
    } known[] = {
        {"missing closing parenthesis", "缺少右括号“)”"},
        {"unmatched closing parenthesis", "多余的右括号“)”"},
        {"missing terminating ]", "缺少“]”"},
        {"quantifier does not follow", "“*”“+”“?”或“{}”前没有可重复的内容"},
        {"\\ at end of pattern", "末尾的“\\”后没有字符"},
        {"range out of order", "“[]”中的范围顺序颠倒"},
        {"numbers out of order", "“{}”中的次数顺序颠倒"},
        {"lookbehind assertion is not fixed length", "向后断言的长度不固定"},
    };
    for (const auto &entry : known)
        if (error.contains(QLatin1String(entry.english)))
            return QString::fromUtf8(entry.chinese);
    const bool isTranslated = std::any_of(error.begin(), error.end(),
                                          [](QChar unit) { return unit.script() == QChar::Script_Han; });
    return isTranslated ? error : QStringLiteral("无法识别"); // with Qt's own Chinese texts
}

} // namespace

// Of processor time, so that other programs don't use it up.
class LineMatcher::Budget
{
public:
    explicit Budget(int matches)
        : m_deadline(std::clock() + kMaxProcessorTime - matches * kTimePerMatch)
    {
    }

    bool isSpent(int newUnits, int matches)
    {
        m_units += newUnits;
        if (m_units < kUnitsBetweenChecks)
            return false;
        m_units = 0;
        return std::clock() > m_deadline + matches * kTimePerMatch;
    }

private:
    std::clock_t m_deadline;
    int m_units = 0;
};

bool LineMatcher::Pattern::operator==(const Pattern &other) const
{
    return text == other.text && caseSensitive == other.caseSensitive && wholeWord == other.wholeWord &&
           isExpression == other.isExpression;
}

LineMatcher::LineMatcher(const Pattern &pattern)
    : m_pattern(pattern)
    , m_text(pattern.text, pattern.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive)
{
    if (!pattern.isExpression)
        return;
    // The user's text is compiled alone first, so that the place of a fault is its own.
    m_expression.setPattern(pattern.text);
    if (!m_expression.isValid())
        return;
    m_expression.setPattern(kStepLimit + pattern.text);
    m_expression.setPatternOptions(QRegularExpression::UseUnicodePropertiesOption |
                                   (pattern.caseSensitive ? QRegularExpression::NoPatternOption
                                                          : QRegularExpression::CaseInsensitiveOption));
    m_expression.optimize();
}

QString LineMatcher::fault() const
{
    if (!m_pattern.isExpression || m_expression.isValid())
        return QString();
    return QStringLiteral("表达式有误，第%1个字符处：%2")
        .arg(m_expression.patternErrorOffset())
        .arg(chinese(m_expression.errorString()));
}

// No line end is in the text that is looked for.
void LineMatcher::findText(const QString &text, QVector<Range> *matches) const
{
    const int length = m_pattern.text.size();
    for (int at = m_text.indexIn(text); at >= 0;) {
        const bool isMatch = !m_pattern.wholeWord || (!isInWord(text, at) && !isInWord(text, at + length));
        if (isMatch)
            matches->append({at, length});
        at = m_text.indexIn(text, at + (isMatch ? length : 1));
    }
}

bool LineMatcher::findInLine(const QString &text, int begin, int end, Budget *budget,
                             QVector<Range> *matches) const
{
    for (int at = begin; at <= end;) {
        const int from = atCharacter(text, qMax(begin, at - kContext));
        const int windowEnd = end - at <= kWindow ? end : atCharacter(text, at + kWindow);
        const QRegularExpressionMatch match = m_expression.match(
            text.midRef(from, windowEnd - from), at - from, QRegularExpression::NormalMatch,
            QRegularExpression::DontCheckSubjectStringMatchOption);
        const int found = match.hasMatch() ? from + match.capturedStart() : windowEnd;
        const int length = match.capturedLength();
        if (!match.isValid() || budget->isSpent(found + length - at, matches->size()))
            return false;
        if (found + length >= windowEnd && windowEnd < end && found > at) {
            // What lies behind the window may belong to it.
            at = qMin(found, atCharacter(text, windowEnd - kOverlap));
            continue;
        }
        if (!match.hasMatch())
            return true;
        const bool isMatch = length > 0 && (!m_pattern.wholeWord ||
                                            (!isInWord(text, found) && !isInWord(text, found + length)));
        if (isMatch)
            matches->append({found, length});
        at = found + (isMatch ? length : 1);
    }
    return true;
}

bool LineMatcher::find(const QString &text, QVector<Range> *matches) const
{
    if (isEmpty() || !fault().isEmpty())
        return true;
    if (!m_pattern.isExpression) {
        findText(text, matches);
        return true;
    }
    if (!text.isValidUtf16()) // as checked for each match otherwise
        return find(QString::fromUtf8(text.toUtf8()), matches);
    Budget budget(matches->size());
    for (int begin = 0; begin < text.size();) {
        const int newLine = text.indexOf(QLatin1Char('\n'), begin);
        const int end = newLine < 0 ? text.size() : newLine;
        if (end > begin && !findInLine(text, begin, end, &budget, matches))
            return false;
        begin = end + 1;
    }
    return true;
}
