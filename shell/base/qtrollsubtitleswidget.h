#pragma once

// One line of text that scrolls from right to left, over and over, while it is
// wider than the widget; a shorter one stands still.

#include <QTimer>
#include <QWidget>

class QtRollSubtitlesWidget : public QWidget
{
    Q_OBJECT

public:
    explicit QtRollSubtitlesWidget(QWidget *parent = nullptr);

    void setText(const QString &text);
    QString text() const { return m_text; }
    int offset() const { return m_offset; } // pixels that the text has moved left
    bool isRolling() const { return m_timer.isActive(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    void sltRoll(); // one step

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void startOrStop();
    int textWidth() const;

    QString m_text;
    int m_offset = 0;
    QTimer m_timer;
};
