#include "startup.h"

#include "apppaths.h"
#include "appversion.h"
#include "fonts.h"
#include "korvexresources.h"
#include "runmark.h"
#include "settings.h"
#include "skin.h"

#include <QApplication>
#include <QFileInfo>
#include <QFont>
#include <QIcon>
#include <QLocale>
#include <QProcess>
#include <QTextCodec>
#include <QTranslator>

namespace Startup {

void setAttributes()
{
    // Otherwise the X11 plug-in loads the OpenGL driver with the first window,
    // though nothing here is drawn by it: where that is a software renderer,
    // half of the program's memory.
    QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets, true);
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, true);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
#ifdef Q_OS_WIN
    // 125 % and 150 % are set by the user there; rounding them clips or blows
    // up. X servers report odd resolutions, which would only blur.
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
#endif
}

void prepare(QApplication &application)
{
    initKorvexResources();
    QCoreApplication::setApplicationName(QStringLiteral("Korvex"));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(AppVersion::text));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/resources/images/app_logo.png")));
    QApplication::setFont(QFont(Fonts::uiFamily(), 9));

    QLocale::setDefault(QLocale(QLocale::Chinese, QLocale::China));
    auto *translator = new QTranslator(&application);
    translator->load(QStringLiteral(":/resources/qm/qt_zh_CN.qm"));
    QCoreApplication::installTranslator(translator);

#ifdef Q_OS_WIN
    // Elsewhere file names are bytes in the system's own encoding, and this
    // would make Chinese ones unreadable; see docs/adr/0002.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("gb18030"));
#endif
    AppPaths::makeFolders();
    RunMark::hold(AppPaths::tmpFolder());
    Settings::writeDefaults();
    Settings::load();
    Skin::apply(Settings::instance().skin);
}

void removeUpdateRemains()
{
    const QString unpacker = AppPaths::root() + QStringLiteral("/unzip.exe");
    if (QFileInfo::exists(AppPaths::root() + QStringLiteral("/_update")) && QFileInfo(unpacker).isFile())
        QProcess::startDetached(unpacker, {QStringLiteral("--clean"), QCoreApplication::applicationName()});
}

} // namespace Startup
