// Lines of any text: values are finite and belong to one of few curves, each line is
// counted once, and the exported table has a row for each line with values.

#include "curvetable.h"
#include "numberlines.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size));
    QStringList lines = text.split('\n');
    const int form = lines.first().size() % 5; // the first line is the expression
    NumberLines numbers;
    numbers.start(static_cast<NumberLines::Form>(form), lines.takeFirst().left(20));
    QVector<CurvePoints> curves;
    qint64 number = 0;
    for (const QString &line : qAsConst(lines)) {
        ++number;
        const qint64 counted = numbers.used() + numbers.skipped();
        for (const NumberLines::Value &value : numbers.read(line, number, number)) {
            if (!std::isfinite(value.value) || value.curve < 0 || value.curve >= numbers.names().size() ||
                numbers.names().size() > NumberLines::maxCurves || value.line > number)
                abort();
            if (value.curve >= curves.size())
                curves.resize(value.curve + 1);
            curves[value.curve].append({value.value, value.line, value.ms});
        }
        if (numbers.used() + numbers.skipped() > counted + 1)
            abort();
    }
    CurveTable table(numbers.names().mid(0, curves.size()), curves);
    while (!table.advance(7)) {
    }
    for (const CurvePoints &curve : curves)
        for (const QPointF &point : curve.thinned(0, double(number) / 1000, 3, CurvePoints::Axis::Time))
            if (!std::isfinite(point.y()))
                abort();
    return 0;
}
