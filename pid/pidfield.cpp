#include "pidfield.h"

#include <QKeyEvent>
#include <QRegularExpressionValidator>

#include <cmath>

namespace {

// With the minimum of digits that parse to the same value.
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

QRegularExpression accepted(PidField::Kind kind)
{
    return QRegularExpression(kind == PidField::Gain ? QStringLiteral("\\d+\\.\\d+")
                                                     : QStringLiteral("-?\\d+"));
}

} // namespace

// Digits, point, digits; or an integer. Blanks around it, as in copied text, are
// dropped. Text that the program has set (a negative or very small gain of the
// board) is accepted unchanged.
class PidField::Validator : public QRegularExpressionValidator
{
public:
    Validator(Kind kind, QObject *parent)
        : QRegularExpressionValidator(accepted(kind), parent)
        , m_kind(kind)
    {
    }

    State validate(QString &input, int &pos) const override
    {
        if (!shown.isNull() && input == shown)
            return Acceptable;
        const QString trimmed = input.trimmed();
        if (trimmed != input) {
            const int leading = static_cast<int>(
                std::find_if(input.cbegin(), input.cend(), [](QChar c) { return !c.isSpace(); }) -
                input.cbegin());
            input = trimmed;
            pos = qBound(0, pos - leading, input.size());
        }
        return QRegularExpressionValidator::validate(input, pos);
    }

    // "2" and "2." become "2.0", ".5" becomes "0.5".
    void fixup(QString &input) const override
    {
        if (m_kind != Gain || input.isEmpty() || input == QLatin1String("."))
            return;
        if (!input.contains(QLatin1Char('.')))
            input += QLatin1Char('.');
        if (input.startsWith(QLatin1Char('.')))
            input.prepend(QLatin1Char('0'));
        if (input.endsWith(QLatin1Char('.')))
            input += QLatin1Char('0');
    }

    QString shown; // by the program; null before

private:
    const Kind m_kind;
};

PidField::PidField(Kind kind, QWidget *parent)
    : QLineEdit(parent)
    , m_kind(kind)
    , m_validator(new Validator(kind, this))
{
    if (kind == Gain)
        setText(QStringLiteral("0.567"));
    m_recordText = text();
    m_recordValue = text().toFloat();
    setValidator(m_validator);
    connect(this, &QLineEdit::inputRejected, this, &PidField::characterRefused);
    connect(this, &QLineEdit::textEdited, this, &PidField::showToolTip);
}

void PidField::setRecord(const QString &text, bool keepText, float value)
{
    m_recordText = text;
    m_recordValue = value;
    if (keepText)
        showToolTip();
    else
        show(text, value);
}

void PidField::revert()
{
    show(m_recordText, m_recordValue);
}

void PidField::setSent()
{
    setRecord(text(), false, gain().value_or(0));
}

// Four significant digits without an exponent, which the field does not take.
void PidField::setTyped(float gain)
{
    const int whole = gain >= 1 ? int(std::log10(double(gain))) + 1 : 0;
    const int leading = gain > 0 && gain < 1 ? int(-std::log10(double(gain))) : 0;
    QString text = QString::number(double(gain), 'f', qBound(1, 4 - whole + leading, 9));
    while (text.endsWith(QLatin1Char('0')) && !text.endsWith(QLatin1String(".0")))
        text.chop(1);
    setText(text);
    setModified(true);
    showToolTip();
}

void PidField::show(const QString &text, float value)
{
    if (this->text() != text)
        setText(text);
    m_validator->shown = text;
    m_shownValue = value;
    setModified(false);
    showToolTip();
}

void PidField::showToolTip()
{
    if (isTyped())
        setToolTip(QStringLiteral("已修改，未发送；按Esc恢复为：%1").arg(m_recordText));
    else
        setToolTip(m_kind == Gain && !m_validator->shown.isNull() ? fullText(m_shownValue) : QString());
}

PidField::Content PidField::content() const
{
    return {text(), m_validator->shown, m_shownValue, isTyped()};
}

void PidField::setContent(const Content &content)
{
    m_validator->shown = content.shownText;
    m_shownValue = content.shownValue;
    setText(content.text);
    setModified(content.typed);
}

std::optional<float> PidField::gain() const
{
    bool ok = true;
    const bool edited = isModified() || m_validator->shown.isNull() || text() != m_validator->shown;
    const float value = edited ? text().toFloat(&ok) : m_shownValue;
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<qint32> PidField::integer() const
{
    bool ok = false;
    const qint32 value = text().toInt(&ok, 10);
    return ok ? std::optional<qint32>(value) : std::nullopt;
}

// Esc drops what was typed before it is a shortcut of the page.
bool PidField::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && isTyped() &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void PidField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && isTyped()) {
        emit escaped();
        return;
    }
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    QLineEdit::keyPressEvent(event);
    if (isReturn && !hasAcceptableInput())
        emit incomplete(); // Qt emits nothing then
}
