#pragma once

// The histogram of a shown picture, or of the region that the user has marked in it,
// with the mean of each channel. Counts while it is visible only. Of two pictures it
// is the one with the region, else the first.

#include "picturehistogram.h"

#include <QRect>
#include <QWidget>

class ImageViewer;

class HistogramPane : public QWidget
{
    Q_OBJECT

public:
    // The viewer outlives the pane.
    explicit HistogramPane(const ImageViewer *viewer, QWidget *parent = nullptr);

    // What stands beside the curves: the region, the pixels, a mean for each channel.
    QStringList texts() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void count();
    void paintCurves(QPainter *painter, const QRect &place) const;
    static QColor colorOf(int channel);

    const ImageViewer *m_viewer;
    PictureHistogram m_histogram;
    QRect m_region; // null: no picture
    bool m_isPart = false;
};
