#pragma once

// Pictures of the real window for README and manual. Owns the stage on which
// one scene is set; pictures go to a folder as NAME + SUFFIX ".png".

#include "stage.h"

#include <QString>

// What a scene could not do.
struct SceneFailed
{
    const char *step;
};

#define NEED(step)                                                                                           \
    do {                                                                                                     \
        if (!(step))                                                                                         \
            throw SceneFailed{#step};                                                                        \
    } while (false)
#define NEED_SOON(condition) NEED(QTest::qWaitFor([&] { return bool(condition); }, kWaitLimitMs))

class Gallery
{
public:
    Gallery(const QString &folder, const QString &suffix);

    Stage &stage() { return m_stage; }
    QString path(const QString &name, const char *type) const;
    bool isInFirstSkin() const { return m_suffix.isEmpty(); }

    // The window in its first size and in the skin.
    bool begin(const QString &skin);
    bool resize(const QSize &size);
    // Takes the window of the widget as the screen shows it.
    bool save(const QString &name, QWidget *widget) const;

private:
    QString m_folder;
    QString m_suffix;
    Stage m_stage;
};

struct Scene
{
    const char *name;
    bool inEverySkin; // else in the light one
    void (*play)(Gallery &gallery);
};
extern const QVector<Scene> scenes;
