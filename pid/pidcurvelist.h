#pragma once

// The curve configuration, which is also the legend: for each curve a check box
// that shows or hides it, its color and its current value. A column for each
// channel, target above actual value. A click on the color offers others. Owns
// the visibility of the curves; their colors are settings. Knows no sample.

#include <QColor>
#include <QWidget>

#include <array>

class NumberLabel;
class QCheckBox;
class QGridLayout;
class QToolButton;

class PidCurveList : public QWidget
{
    Q_OBJECT

public:
    static constexpr int channels = 5;
    static constexpr int curves = 2 * channels; // targets, then actual values

    explicit PidCurveList(QWidget *parent = nullptr);

    // The key of a graph's curve: 0x101 to 0x105 the targets, 0x201 to 0x205
    // the actual values of the channels.
    static int keyOf(int graph);

    // By key. "#ff0000" and shown where the configuration has no such curve.
    QColor color(int key) const;
    bool isShown(int key) const;
    QString name(int graph) const; // "CH1 目标值"; with the user's name and unit of the channel

    void load();               // colors and names in the settings
    void setLarge(bool large); // the current values

    void setValue(int graph, int value);
    void clearValues();

signals:
    void signalGraphClicked(int index, bool bShow);
    void colorChanged(int index);

private:
    struct Curve
    {
        int key = 0;
        QString label;
        QColor color;
        QCheckBox *shown = nullptr;
        QToolButton *swatch = nullptr;
        NumberLabel *value = nullptr;
    };

    void addCell(QGridLayout *grid, int graph, Curve &curve);
    void setColor(int graph, const QColor &color);
    void offerColors(int graph);
    const Curve *find(int key) const;

    std::array<Curve, curves> m_curves;
};
