#pragma once

// The colour picker: swatches, a hue and saturation field, a value slider, a
// hexadecimal field and the colours used before. All show the same colour.

#include <QColor>
#include <QVector>
#include <QWidget>

class ColourSwatches;
class HueSaturationField;
class QLabel;
class QLineEdit;
class QSlider;

class QtColorPanel : public QWidget
{
    Q_OBJECT

public:
    explicit QtColorPanel(QWidget *parent = nullptr);

    QColor colour() const { return m_colour; }
    // Emits nothing.
    void setColour(const QColor &colour);
    void setRecentColours(const QVector<QColor> &colours);

    // The hexadecimal field holds no whole colour at the moment.
    bool isHexValid() const;

signals:
    void colourChanged(const QColor &colour);

private:
    enum class Source { Program, Field, Slider, Hex, Swatch };

    void buildUi();
    void take(const QColor &colour, Source source);
    void takeFromField(int hue, int saturation);
    void takeFromSlider(int value);
    void takeFromHex(const QString &text);
    void markHex(bool valid);

    QColor m_colour{Qt::white};
    ColourSwatches *m_swatches;
    ColourSwatches *m_recent;
    HueSaturationField *m_field;
    QSlider *m_value;
    QLineEdit *m_hex;
    QLabel *m_sample;
};
