#include "windowmemory.h"

#include "settings.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace {

constexpr int kDelayMs = 300;
// So much of the window's upper edge is on a screen, so that it can be dragged.
constexpr QSize kReachable(100, 30);

QRect placeOf(const QString &text)
{
    QVector<int> numbers;
    const QVector<QStringRef> words = text.splitRef(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QStringRef &word : words)
        numbers.append(word.toInt());
    return numbers.size() == 4 ? QRect(numbers.at(0), numbers.at(1), numbers.at(2), numbers.at(3)) : QRect();
}

bool isReachable(const QRect &place)
{
    const QRect edge(place.topLeft(), QSize(place.width(), kReachable.height()));
    const QList<QScreen *> screens = QGuiApplication::screens();
    return std::any_of(screens.begin(), screens.end(), [&edge](const QScreen *screen) {
        const QRect seen = screen->availableGeometry() & edge;
        return seen.width() >= kReachable.width() && seen.height() == kReachable.height();
    });
}

} // namespace

WindowMemory::WindowMemory(QWidget *window)
    : QObject(window)
    , m_window(window)
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(kDelayMs);
    connect(&m_timer, &QTimer::timeout, this, &WindowMemory::write);
    window->installEventFilter(this);
}

void WindowMemory::restore()
{
    const Settings::WindowPlace &place = Settings::instance().window;
    const QRect geometry = placeOf(place.geometry);
    if (geometry.isValid() && isReachable(geometry))
        m_window->setGeometry(geometry);
    if (place.isMaximized)
        m_window->setWindowState(m_window->windowState() | Qt::WindowMaximized);
}

bool WindowMemory::eventFilter(QObject *watched, QEvent *event)
{
    const bool isPlaced = event->type() == QEvent::Move || event->type() == QEvent::Resize ||
                          event->type() == QEvent::WindowStateChange;
    if (isPlaced && m_window->isVisible())
        m_timer.start();
    if (event->type() == QEvent::Close && m_timer.isActive()) {
        m_timer.stop();
        write();
    }
    return QObject::eventFilter(watched, event);
}

void WindowMemory::write()
{
    if (m_window->isMinimized())
        return;
    Settings::WindowPlace &place = Settings::instance().window;
    place.isMaximized.change(m_window->isMaximized());
    if (m_window->isMaximized())
        return;
    const QRect now = m_window->geometry();
    place.geometry.change(
        QStringLiteral("%1 %2 %3 %4").arg(now.x()).arg(now.y()).arg(now.width()).arg(now.height()));
}
