#include "qtrollsubtitleswidget.h"

#include <QPainter>

namespace {
constexpr int stepMs = 33; // 30 pixels a second
constexpr int gap = 48;    // between the end of the text and its next start
} // namespace

QtRollSubtitlesWidget::QtRollSubtitlesWidget(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_timer.setInterval(stepMs);
    connect(&m_timer, &QTimer::timeout, this, &QtRollSubtitlesWidget::sltRoll);
}

void QtRollSubtitlesWidget::setText(const QString &text)
{
    m_text = text.simplified();
    m_offset = 0;
    setToolTip(m_text.toHtmlEscaped());
    startOrStop();
    update();
}

QSize QtRollSubtitlesWidget::sizeHint() const
{
    return {200, fontMetrics().height() + 4};
}

QSize QtRollSubtitlesWidget::minimumSizeHint() const
{
    return {40, fontMetrics().height() + 4};
}

void QtRollSubtitlesWidget::sltRoll()
{
    m_offset = (m_offset + 1) % (textWidth() + gap);
    update();
}

void QtRollSubtitlesWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const int period = textWidth() + gap;
    const bool rolls = textWidth() > width();
    for (int x = -m_offset; x < width(); x += period) {
        painter.drawText(QRect(x, 0, textWidth(), height()), Qt::AlignVCenter | Qt::TextSingleLine, m_text);
        if (!rolls)
            break;
    }
}

void QtRollSubtitlesWidget::resizeEvent(QResizeEvent *)
{
    startOrStop();
}

void QtRollSubtitlesWidget::showEvent(QShowEvent *)
{
    startOrStop();
}

void QtRollSubtitlesWidget::hideEvent(QHideEvent *)
{
    m_timer.stop();
}

void QtRollSubtitlesWidget::startOrStop()
{
    if (!isVisible() || textWidth() <= width()) {
        m_timer.stop();
        m_offset = 0;
    } else if (!m_timer.isActive()) {
        m_timer.start();
    }
}

int QtRollSubtitlesWidget::textWidth() const
{
    return fontMetrics().horizontalAdvance(m_text);
}
