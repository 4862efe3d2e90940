#include "gallery.h"

#include <QDir>
#include <QElapsedTimer>
#include <QPixmap>
#include <QScreen>
#include <QTest>

namespace {

constexpr int kMovingMs = 10000;       // what has not come to rest by then moves
constexpr QSize kFirstSize(1000, 550); // the window's, at the first start

// Whether the screen shows the window, small things in front of it aside.
bool shows(const QImage &screen, const QImage &window)
{
    if (screen.size() != window.size())
        return false;
    int seen = 0;
    int equal = 0;
    for (int y = 0; y < window.height(); y += 7) {
        for (int x = 0; x < window.width(); x += 7, ++seen)
            equal += (screen.pixel(x, y) | 0xFF000000) == (window.pixel(x, y) | 0xFF000000);
    }
    return equal >= seen * 8 / 10;
}

// What the screen shows at a window's place, menus and tips in front of it
// included, as soon as it no longer changes. A new window needs a while to be
// placed and painted. A page on which something moves does not come to rest:
// then the window must be on the screen.
QPixmap onScreen(const QWidget *widget)
{
    QWidget *window = widget->window();
    QPixmap last;
    QElapsedTimer looking;
    looking.start();
    const auto rests = [&] {
        const QPixmap now = window->screen()->grabWindow(window->winId());
        const bool still = !last.isNull() && now.toImage() == last.toImage();
        last = now;
        return (still || looking.hasExpired(kMovingMs)) && shows(now.toImage(), window->grab().toImage());
    };
    return QTest::qWaitFor(rests, kWaitLimitMs) ? last : QPixmap();
}

} // namespace

Gallery::Gallery(const QString &folder, const QString &suffix)
    : m_folder(folder)
    , m_suffix(suffix)
{
    QDir().mkpath(folder);
}

QString Gallery::path(const QString &name, const char *type) const
{
    return QStringLiteral("%1/%2%3.%4").arg(m_folder, name, m_suffix, QLatin1String(type));
}

bool Gallery::begin(const QString &skin)
{
    return m_stage.isReady() && resize(kFirstSize) && m_stage.chooseSetting({QStringLiteral("主题"), skin}) &&
           m_stage.chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")});
}

bool Gallery::resize(const QSize &size)
{
    m_stage.window().resize(size);
    return QTest::qWaitFor([&] { return m_stage.window().size() == size; }, kWaitLimitMs);
}

bool Gallery::save(const QString &name, QWidget *widget) const
{
    const QPixmap picture = onScreen(widget);
    return !picture.isNull() && picture.save(path(name, "png"));
}
