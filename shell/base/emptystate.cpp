#include "emptystate.h"

#include "skin.h"

#include <QEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace {
constexpr int iconSide = 48;
}

EmptyState::EmptyState(IconFont::Glyph glyph, const QString &text, QWidget *parent)
    : QWidget(parent)
    , m_glyph(glyph)
    , m_icon(new QLabel(this))
    , m_text(new QLabel(this))
{
    m_icon->setAlignment(Qt::AlignCenter);
    m_text->setObjectName(QStringLiteral("emptyStateText"));
    m_text->setTextFormat(Qt::PlainText);
    m_text->setAlignment(Qt::AlignCenter);
    m_text->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(8);
    layout->addStretch();
    layout->addWidget(m_icon);
    layout->addWidget(m_text);
    layout->addStretch();
    setText(text);
    drawIcon();
}

void EmptyState::setText(const QString &text)
{
    m_text->setText(text);
}

QString EmptyState::text() const
{
    return m_text->text();
}

void EmptyState::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::StyleChange)
        drawIcon();
    QWidget::changeEvent(event);
}

void EmptyState::drawIcon()
{
    QColor color(Skin::palette().secondaryText);
    color.setAlpha(160);
    m_icon->setPixmap(IconFont::pixmap(m_glyph, color, iconSide, iconSide));
}
