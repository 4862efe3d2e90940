#include "qttabbar.h"

#include "skin.h"

#include <QEvent>
#include <QShortcut>
#include <QWheelEvent>

QtTabBar::QtTabBar(QWidget *parent)
    : QTabBar(parent)
{
    setObjectName(QStringLiteral("toolTabs"));
    setDrawBase(false);
    setExpanding(false);
    setIconSize({16, 16});
    setElideMode(Qt::ElideRight);
    connect(this, &QTabBar::currentChanged, this, [this](int index) {
        drawIcons();
        if (index >= 0)
            emit clicked(index, tabText(index));
    });
    auto *next = new QShortcut(QKeySequence(int(Qt::CTRL) + Qt::Key_Tab), this);
    connect(next, &QShortcut::activated, this, &QtTabBar::showNext);
    auto *previous = new QShortcut(QKeySequence(int(Qt::CTRL) + Qt::SHIFT + Qt::Key_Tab), this);
    connect(previous, &QShortcut::activated, this, &QtTabBar::showPrevious);
}

void QtTabBar::addTool(const QString &text, IconFont::Glyph glyph)
{
    m_glyphs.append(glyph);
    const int index = addTab(text);
    drawIcons();
    if (index >= 9)
        return;
    auto *direct = new QShortcut(QKeySequence(int(Qt::CTRL) + Qt::Key_1 + index), this);
    connect(direct, &QShortcut::activated, this, [this, index] { setCurrentIndex(index); });
    setTabToolTip(index, QStringLiteral("%1 (Ctrl+%2)").arg(text).arg(index + 1));
}

void QtTabBar::showNext()
{
    setCurrentIndex((currentIndex() + 1) % count());
}

void QtTabBar::showPrevious()
{
    setCurrentIndex((currentIndex() + count() - 1) % count());
}

void QtTabBar::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

void QtTabBar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::StyleChange)
        drawIcons();
    QTabBar::changeEvent(event);
}

void QtTabBar::drawIcons()
{
    const SkinPalette &palette = Skin::palette();
    for (int i = 0; i < qMin(count(), m_glyphs.size()); ++i) {
        const QColor color(i == currentIndex() ? palette.accent : palette.secondaryText);
        // Its letters are half as high as the other pictures.
        const int size = m_glyphs.at(i) == IconFont::BinaryFile ? 22 : 16;
        setTabIcon(i, IconFont::icon(m_glyphs.at(i), color, size, 16));
    }
}
