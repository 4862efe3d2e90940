#pragma once

// The curves of a log beside their chart: for each a check box that shows or hides
// it, its color, which can be chosen, and its newest value. Owns color and
// visibility; knows no point.

#include <QColor>
#include <QScrollArea>

class NumberLabel;
class QCheckBox;
class QGridLayout;
class QToolButton;

class LogCurveList : public QScrollArea
{
    Q_OBJECT

public:
    explicit LogCurveList(QWidget *parent = nullptr);

    // Adds rows for names that are new.
    void setNames(const QStringList &names);
    void clear();
    void setValue(int curve, double value);

    QColor color(int curve) const { return m_curves.at(curve).color; }
    bool isShown(int curve) const;
    QString name(int curve) const;
    int count() const { return m_curves.size(); }

signals:
    void curveChanged(int curve); // or is new

protected:
    bool event(QEvent *event) override;

private:
    struct Curve
    {
        QColor color;
        QToolButton *swatch;
        QCheckBox *shown;
        NumberLabel *value;
    };

    void add(const QString &name);
    void setColor(int curve, const QColor &color);
    void paintSwatch(const Curve &curve);

    QGridLayout *m_grid = nullptr;
    QVector<Curve> m_curves;
};
