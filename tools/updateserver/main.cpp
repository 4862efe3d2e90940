// The update service of demonstrations and benchmarks:
//   updateserver [--port N] [--version NUMBERS] [--notes TEXT] [--name app.zip] [--package FILE]
// Prints its address and serves until it is ended, or its starter is gone.

#include "appversion.h"
#include "processend.h"
#include "updateserver.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addOptions(
        {{QStringLiteral("port"), QString(), QStringLiteral("number"), QStringLiteral("0")},
         {QStringLiteral("version"), QString(), QStringLiteral("text"),
          QString::fromLatin1(AppVersion::nextText)},
         {QStringLiteral("notes"), QString(), QStringLiteral("text")},
         {QStringLiteral("name"), QString(), QStringLiteral("name"), QStringLiteral("korvex.zip")},
         {QStringLiteral("package"), QString(), QStringLiteral("file")}});
    parser.process(application);
    const auto value = [&parser](const char *name) { return parser.value(QLatin1String(name)).toUtf8(); };

    QByteArray package = "PK\x05\x06" + QByteArray(18, '\0'); // an archive of nothing
    if (parser.isSet(QStringLiteral("package"))) {
        QFile file(parser.value(QStringLiteral("package")));
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "updateserver: %s\n", qPrintable(file.errorString()));
            return 1;
        }
        package = file.readAll();
    }
    UpdateServer server(value("port").toUShort());
    server.setReply("cv", UpdateServer::version(value("version"), value("notes")));
    server.setReply("up", UpdateServer::package(value("name"), package));
    std::printf("%s\n", server.address().constData());
    std::fflush(stdout);
    Boardsim::ProcessEnd end;
    QObject::connect(&end, &Boardsim::ProcessEnd::requested, &application, &QCoreApplication::quit);
    return application.exec();
}
