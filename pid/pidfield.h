#pragma once

// A field for one value of the board: a gain or an integer. It remembers which
// value its text stands for, so that a gain that was not edited is sent in full,
// however it was rounded for showing; the full value is in the tool tip. Text
// that is typed and not sent yet can be kept while the board reports other
// values. Knows no channel and no other field.

#include <QLineEdit>

#include <optional>

class PidField : public QLineEdit
{
    Q_OBJECT

public:
    enum Kind { Gain, Integer };

    // All that a field shows, to be put aside while another channel is selected.
    struct Content
    {
        QString text;
        QString shownText; // the text by which the program showed a value
        float shownValue = 0;
        bool typed = false;
    };

    explicit PidField(Kind kind, QWidget *parent = nullptr);

    // The value of the record. `keepText` leaves what the field shows as it is:
    // the value is then shown by revert() only.
    void setRecord(const QString &text, bool keepText = false, float value = 0);
    // Drops what was typed and shows the record.
    void revert();
    // Shows a gain of 0 or more as if it had been typed.
    void setTyped(float gain);
    // The text was sent: it no longer counts as typed.
    void setSent();

    bool isTyped() const { return isModified(); }
    Content content() const;
    // The record is not part of it: setRecord() has to follow.
    void setContent(const Content &content);

    // What is to be sent; nothing where the text is no such number, or where it
    // is not finite.
    std::optional<float> gain() const;
    std::optional<qint32> integer() const;

signals:
    void escaped();          // Esc, with typed text in the field
    void incomplete();       // Return, and the text is no number
    void characterRefused(); // typed or pasted text that can't be part of a number

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    class Validator;

    void show(const QString &text, float value);
    void showToolTip();

    const Kind m_kind;
    Validator *m_validator;
    QString m_recordText;
    float m_shownValue = 0;
    float m_recordValue = 0;
};
