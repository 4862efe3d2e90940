#include "waitingspinnerwidget.h"

#include "skin.h"

#include <QPainter>

namespace {
constexpr int lineCount = 12;
constexpr int lineLength = 9;
constexpr int lineWidth = 3;
constexpr int innerRadius = 10;
constexpr int turnMs = 960;
} // namespace

WaitingSpinnerWidget::WaitingSpinnerWidget(QWidget *parent)
    : QWidget(parent)
{
    m_timer.setInterval(turnMs / lineCount);
    connect(&m_timer, &QTimer::timeout, this, &WaitingSpinnerWidget::rotate);
    setFixedSize(sizeHint());
}

QSize WaitingSpinnerWidget::sizeHint() const
{
    constexpr int side = 2 * (innerRadius + lineLength) + 2;
    return {side, side};
}

void WaitingSpinnerWidget::start()
{
    m_timer.start();
}

void WaitingSpinnerWidget::stop()
{
    m_timer.stop();
}

void WaitingSpinnerWidget::rotate()
{
    m_position = (m_position + 1) % lineCount;
    update();
}

void WaitingSpinnerWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.translate(width() / 2.0, height() / 2.0);
    QColor color(Skin::palette().accent);
    for (int line = 0; line < lineCount; ++line) {
        // The further behind the brightest line, the fainter.
        const int behind = (m_position - line + lineCount) % lineCount;
        color.setAlphaF(qMax(0.15, 1.0 - behind / double(lineCount)));
        painter.setBrush(color);
        painter.save();
        painter.rotate(360.0 * line / lineCount);
        painter.drawRoundedRect(QRectF(-lineWidth / 2.0, -innerRadius - lineLength, lineWidth, lineLength),
                                lineWidth / 2.0, lineWidth / 2.0);
        painter.restore();
    }
}
