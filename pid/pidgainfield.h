#pragma once

// A field for one gain. It remembers the value that its text stands for: a
// text that was not edited means that value, however it was rounded for
// showing. The full value is in the tool tip.

#include <QLineEdit>

#include <optional>

class PidGainField : public QLineEdit
{
    Q_OBJECT

public:
    explicit PidGainField(QWidget *parent = nullptr);

    void showValue(float value, const QString &text);
    // What is to be sent; nothing where that is no finite number.
    std::optional<float> value() const;
    // It was sent: the text now stands for it.
    void setSent(float value);

private:
    class Validator;

    Validator *m_validator;
    float m_stored = 0;
};
