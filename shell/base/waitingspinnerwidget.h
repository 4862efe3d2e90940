#pragma once

// A ring of lines that turns while work is in progress.

#include <QTimer>
#include <QWidget>

class WaitingSpinnerWidget : public QWidget
{
    Q_OBJECT

public:
    explicit WaitingSpinnerWidget(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    bool isSpinning() const { return m_timer.isActive(); }
    int position() const { return m_position; } // the brightest line, 0 at the top

public slots:
    void start();
    void stop();
    void rotate(); // one line further

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QTimer m_timer;
    int m_position = 0;
};
