#include "qtmessagetip.h"

#include "fonts.h"
#include "framegeometry.h"

#include <QApplication>
#include <QBitmap>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QScreen>
#include <QWindow>

namespace {

QPointer<QtMessageTip> &tip()
{
    static QPointer<QtMessageTip> instance;
    return instance;
}

// Hidden windows of earlier dialogs don't count.
QWidget *frontWindow()
{
    if (QWidget *active = QApplication::activeWindow())
        return active;
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows)
        if (window->isVisible() && window->windowType() != Qt::Tool && window->windowType() != Qt::ToolTip)
            return window;
    return nullptr;
}

} // namespace

QtMessageTip::QtMessageTip()
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus |
                           Qt::WindowTransparentForInput) // a bubble may lie over the next thing to click on
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_DeleteOnClose);
    QFont tipFont(Fonts::uiFamily());
    tipFont.setPixelSize(13);
    setFont(tipFont);
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &QtMessageTip::sltTimeOut);
}

QtMessageTip *QtMessageTip::current()
{
    return tip();
}

QtMessageTip *QtMessageTip::instance()
{
    if (!tip())
        tip() = new QtMessageTip;
    return tip();
}

void QtMessageTip::showTip(const QString &text, int milliseconds)
{
    QtMessageTip *self = instance();
    self->present(text, Notice, milliseconds);
    QRect place(QPoint(0, 0), self->size());
    if (const QWidget *window = frontWindow()) {
        const QRect area = window->geometry();
        place.moveCenter({area.center().x(), area.top() + area.height() * 3 / 4});
    } else {
        place.moveCenter(QGuiApplication::primaryScreen()->availableGeometry().center());
    }
    self->placeAt(place.topLeft());
}

void QtMessageTip::showTipAt(const QString &text, const QPoint &position, int milliseconds, Style style)
{
    QtMessageTip *self = instance();
    self->present(text, style, milliseconds);
    self->placeAt(position);
}

void QtMessageTip::showBelow(const QWidget *widget, const QString &text, int milliseconds)
{
    showTipAt(text, widget->mapToGlobal({0, widget->height()}), milliseconds);
}

void QtMessageTip::sltTimeOut()
{
    qApp->removeEventFilter(this);
    hide();
}

void QtMessageTip::present(const QString &text, Style style, int milliseconds)
{
    m_text = text;
    m_style = style;
    resize(fontMetrics().horizontalAdvance(text) + 20, fontMetrics().height() + 25);
    cutOut();
    m_timer.start(milliseconds);
    qApp->installEventFilter(this);
    update();
}

void QtMessageTip::placeAt(const QPoint &position)
{
    const QScreen *where = QGuiApplication::screenAt(position);
    if (!where)
        where = QGuiApplication::primaryScreen();
    move(FrameGeometry::keptInside(QRect(position, size()), where->availableGeometry()).topLeft());
    // In front of the window it belongs to, without being its child.
    winId();
    if (const QWidget *window = frontWindow(); window && window->windowHandle() && window != this)
        windowHandle()->setTransientParent(window->windowHandle());
    show();
    raise();
}

void QtMessageTip::paintEvent(QPaintEvent *)
{
    paintOn(this);
}

bool QtMessageTip::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress &&
        (m_style == Bubble || geometry().contains(static_cast<QMouseEvent *>(event)->globalPos())))
        sltTimeOut();
    return QWidget::eventFilter(watched, event);
}

void QtMessageTip::paintOn(QPaintDevice *device) const
{
    QPainter painter(device);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(font());
    if (m_style == Bubble)
        paintBubble(painter);
    else
        paintNotice(painter);
}

// Where nothing blends translucent windows, what is not painted would be
// black; the mask leaves it out.
void QtMessageTip::cutOut()
{
    QImage picture(size(), QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    paintOn(&picture);
    setMask(QBitmap::fromImage(picture.createMaskFromColor(0, Qt::MaskInColor)));
}

void QtMessageTip::paintBubble(QPainter &painter) const
{
    const QRectF box(1, 10, width() - 2, height() - 10);
    QPainterPath path;
    path.addRoundedRect(box, 5, 5);
    QPainterPath pointer;
    pointer.moveTo(box.left() + 10, box.top());
    pointer.lineTo(box.left() + 15, box.top() - 8);
    pointer.lineTo(box.left() + 20, box.top());
    pointer.closeSubpath();
    path.addPath(pointer);
    painter.setPen(Qt::NoPen);
    painter.fillPath(path, QColor(0xf0, 0x3e, 0x10));
    painter.setPen(QColor(0xff, 0xff, 0xff));
    painter.drawText(box, Qt::AlignCenter, m_text);
}

void QtMessageTip::paintNotice(QPainter &painter) const
{
    const QRectF box(2, 2, width() - 4, height() - 4);
    painter.setPen(QColor(0x79, 0x79, 0x79));
    painter.setBrush(QColor(0x25, 0x25, 0x26));
    painter.drawRoundedRect(box, 5, 5);
    painter.setPen(QColor(0xf2, 0xf2, 0xf2));
    painter.drawText(box, Qt::AlignCenter, m_text);
}
