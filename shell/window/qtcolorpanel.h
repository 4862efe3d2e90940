#pragma once

// The color picker: swatches, a hue and saturation field, a value slider, a
// hexadecimal field and the colors used before. All show the same color.

#include <QColor>
#include <QVector>
#include <QWidget>

class ColorSwatches;
class HueSaturationField;
class QLabel;
class QLineEdit;
class QSlider;

class QtColorPanel : public QWidget
{
    Q_OBJECT

public:
    explicit QtColorPanel(QWidget *parent = nullptr);

    QColor color() const { return m_color; }
    // Emits nothing.
    void setColor(const QColor &color);
    void setRecentColors(const QVector<QColor> &colors);

    // False while the hexadecimal field holds an incomplete color.
    bool isHexValid() const;

signals:
    void colorChanged(const QColor &color);

private:
    enum class Source { Program, Hex, Other };

    void buildUi();
    void take(const QColor &color, Source source);
    void takeFromField(int hue, int saturation);
    void takeFromSlider(int value);
    void takeFromHex(const QString &text);
    void markHex(bool valid);

    QColor m_color{Qt::white};
    ColorSwatches *m_swatches;
    ColorSwatches *m_recent;
    HueSaturationField *m_field;
    QSlider *m_value;
    QLineEdit *m_hex;
    QLabel *m_sample;
};
