// Takes the pictures of the manual: every tool in all skins, menus and dialogs,
// with simulated boards. Run on a display of a fixed size (tools/pictures).
//   gallery FOLDER [SCENE]...
// Ends with 0 where all pictures were taken.

#include "apppaths.h"
#include "gallery.h"
#include "startup.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <cstdio>

namespace {

// The first skin, which is the one of a fresh start, has plain names.
const struct
{
    const char *suffix;
    const char *text;
} kSkins[] = {{"", "深色"}, {"-light", "浅色"}, {"-yellow", "黄色"}};

bool play(const Scene &scene, const QString &folder, const char *suffix, const char *skin)
{
    std::printf("%s%s\n", scene.name, suffix);
    std::fflush(stdout);
    try {
        Gallery gallery(folder, QLatin1String(suffix));
        NEED(gallery.begin(QString::fromUtf8(skin)));
        scene.play(gallery);
        return true;
    } catch (const SceneFailed &failure) {
        std::fprintf(stderr, "gallery: %s%s: this could not be done: %s\n", scene.name, suffix, failure.step);
        return false;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    Startup::setAttributes();
    QApplication application(argc, argv);
    const QTemporaryDir temporary;
    AppPaths::setRoot(temporary.path());
    Startup::prepare(application);
    const QStringList wanted = QCoreApplication::arguments().mid(2);
    if (argc < 2) {
        std::fprintf(stderr, "usage: gallery FOLDER [SCENE]...\n");
        return 2;
    }
    const QString folder = QDir().absoluteFilePath(QCoreApplication::arguments().at(1));
    bool complete = true;
    for (const Scene &scene : scenes) {
        if (!wanted.isEmpty() && !wanted.contains(QLatin1String(scene.name)))
            continue;
        if (!scene.inEverySkin) {
            complete = play(scene, folder, "", kSkins[1].text) && complete;
            continue;
        }
        for (const auto &skin : kSkins)
            complete = play(scene, folder, skin.suffix, skin.text) && complete;
    }
    return complete ? 0 : 1;
}
