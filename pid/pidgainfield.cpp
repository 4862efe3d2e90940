#include "pid/pidgainfield.h"

#include <QRegularExpressionValidator>

#include <cmath>

namespace {

// The fewest digits that give the value again.
QString fullText(float value)
{
    QString text;
    for (int digits = 6; digits <= 9; ++digits) {
        text = QString::number(static_cast<double>(value), 'g', digits);
        if (text.toFloat() == value)
            break;
    }
    return text;
}

} // namespace

// Digits, point, digits. What the program itself has put into the field (a
// negative or very small gain of the board) is accepted as it stands.
class PidGainField::Validator : public QRegularExpressionValidator
{
public:
    explicit Validator(QObject *parent)
        : QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d+\\.\\d+")), parent)
    {
    }

    State validate(QString &input, int &pos) const override
    {
        return !shown.isNull() && input == shown ? Acceptable
                                                 : QRegularExpressionValidator::validate(input, pos);
    }

    // "2" and "2." become "2.0", ".5" becomes "0.5".
    void fixup(QString &input) const override
    {
        if (input.isEmpty() || input == QLatin1String("."))
            return;
        if (!input.contains(QLatin1Char('.')))
            input += QLatin1Char('.');
        if (input.startsWith(QLatin1Char('.')))
            input.prepend(QLatin1Char('0'));
        if (input.endsWith(QLatin1Char('.')))
            input += QLatin1Char('0');
    }

    QString shown; // by showValue(); null before
};

PidGainField::PidGainField(QWidget *parent)
    : QLineEdit(QStringLiteral("0.567"), parent)
    , m_validator(new Validator(this))
{
    setValidator(m_validator);
}

void PidGainField::showValue(float value, const QString &text)
{
    setText(text);
    setSent(value);
}

void PidGainField::setSent(float value)
{
    m_stored = value;
    m_validator->shown = text();
    setModified(false);
    setToolTip(fullText(value));
}

std::optional<float> PidGainField::value() const
{
    bool ok = true;
    const bool edited = isModified() || m_validator->shown.isNull() || text() != m_validator->shown;
    const float value = edited ? text().toFloat(&ok) : m_stored;
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}
