#include "numberlines.h"

#include "logprefix.h"
#include "numbertext.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kMaxShapes = 500;

LineValues::Form formOf(NumberLines::Form form)
{
    switch (form) {
    case NumberLines::Form::Pairs:
        return LineValues::Form::Pairs;
    case NumberLines::Form::Words:
        return LineValues::Form::Words;
    case NumberLines::Form::Columns:
        return LineValues::Form::Columns;
    default:
        return LineValues::Form::Automatic;
    }
}

} // namespace

void NumberLines::start(Form form, const QString &expression)
{
    *this = NumberLines();
    m_form = form;
    if (form != Form::Expression)
        return;
    m_matcher = LineMatcher({expression, true, false, true});
    if (m_matcher.isEmpty() || !fault().isEmpty())
        return;
    const QStringList groups = m_matcher.expression().namedCaptureGroups();
    for (int group = groups.size() > 1 ? 1 : 0; group < groups.size() && m_names.size() < maxCurves;
         ++group) {
        m_groups.append(group);
        const QString fallback =
            groups.size() > 2 ? QStringLiteral("数值%1").arg(group) : QStringLiteral("数值");
        m_names.append(groups.at(group).isEmpty() ? fallback : groups.at(group));
    }
}

void NumberLines::restart()
{
    start(m_form, QString(m_matcher.pattern().text));
}

QString NumberLines::fault() const
{
    return m_form == Form::Expression ? m_matcher.fault() : QString();
}

const QVector<NumberLines::Value> &NumberLines::read(const QString &text, qint64 line, qint64 ms)
{
    m_values.clear();
    QString plain = LogPrefix::withoutEscapes(text.left(maxCharacters));
    if (plain.trimmed().isEmpty() || LogPrefix::isPacketHeader(plain))
        return m_values;
    bool isUsed = false;
    if (m_form == Form::Expression) {
        isUsed = readExpression(plain, line, ms);
    } else {
        plain.remove(0, LogPrefix::length(plain));
        isUsed = !LogPrefix::isHexadecimal(plain) && readForm(plain, line, ms);
        m_before = plain;
    }
    ++(isUsed ? m_used : m_skipped);
    return m_values;
}

bool NumberLines::readForm(const QString &text, qint64 line, qint64 ms)
{
    if (!m_line.read(text, formOf(m_form)))
        return false;
    const quint64 key = m_line.shape();
    auto known = m_shapes.find(key);
    if (known != m_shapes.end()) {
        if (!known->firstText.isEmpty())
            readFirst(&*known);
        return addValues(&*known, line, ms);
    }
    Shape *const shape = addShape(key);
    if (m_form != Form::Automatic)
        return addValues(shape, line, ms);
    shape->firstText = text;
    shape->firstLine = line;
    shape->firstMs = ms;
    return false;
}

// Of too many shapes, those that came once are forgotten.
NumberLines::Shape *NumberLines::addShape(quint64 key)
{
    for (auto shape = m_shapes.begin(); m_shapes.size() >= kMaxShapes && shape != m_shapes.end();) {
        if (shape->firstText.isEmpty())
            ++shape;
        else
            shape = m_shapes.erase(shape);
    }
    if (m_shapes.size() >= kMaxShapes)
        m_shapes.clear();
    Shape *const shape = &m_shapes[key];
    const bool isTable = m_line.form() == LineValues::Form::Columns;
    shape->curves.fill(kUnknown, isTable ? m_line.columns() : m_line.items().size());
    if (isTable)
        shape->heading = LineValues::heading(m_before, m_line.separator(), m_line.columns());
    return shape;
}

// The values of a shape's first line. A curve that has points has newer ones.
void NumberLines::readFirst(Shape *shape)
{
    const LineValues current = m_line;
    m_line.read(std::exchange(shape->firstText, QString()), formOf(m_form));
    const int known = m_names.size();
    const bool isUsed = addValues(shape, shape->firstLine, shape->firstMs);
    const auto isOld = [known](const Value &value) { return value.curve < known; };
    m_values.erase(std::remove_if(m_values.begin(), m_values.end(), isOld), m_values.end());
    if (isUsed) {
        ++m_used;
        --m_skipped;
    }
    m_line = current;
}

bool NumberLines::addValues(Shape *shape, qint64 line, qint64 ms)
{
    const bool isTable = m_line.form() == LineValues::Form::Columns;
    bool isUsed = false;
    for (int i = 0; i < m_line.items().size(); ++i) {
        const LineValues::Item &item = m_line.items().at(i);
        int &curve = shape->curves[isTable ? item.element : i];
        if (curve == kUnknown)
            curve = curveOf(nameOf(*shape, item));
        isUsed = isUsed || curve >= 0;
        if (curve >= 0 && item.isFinite)
            m_values.append({curve, item.value, line, ms});
        m_surplus += curve < 0 ? 1 : 0;
    }
    return isUsed;
}

QString NumberLines::nameOf(const Shape &shape, const LineValues::Item &item) const
{
    return shape.heading.isEmpty() ? m_line.name(item) : shape.heading.at(item.element);
}

int NumberLines::curveOf(const QString &name)
{
    const int known = m_names.indexOf(name);
    if (known >= 0)
        return known;
    if (m_names.size() == maxCurves)
        return kNone;
    m_names.append(name);
    return m_names.size() - 1;
}

bool NumberLines::readExpression(const QString &text, qint64 line, qint64 ms)
{
    if (m_groups.isEmpty() || hasGivenUp())
        return false;
    const QRegularExpressionMatch match = m_matcher.expression().match(text);
    m_hardLines += match.isValid() ? 0 : 1;
    bool isUsed = false;
    for (int curve = 0; match.hasMatch() && curve < m_groups.size(); ++curve) {
        const QStringRef found = match.capturedRef(m_groups.at(curve)).trimmed();
        const NumberText::Number number = NumberText::readAll(found.begin(), found.end());
        isUsed = isUsed || number.length > 0;
        if (number.length > 0 && number.isFinite)
            m_values.append({curve, number.value, line, ms});
    }
    return isUsed;
}
