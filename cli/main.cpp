#include "appversion.h"
#include "commandline.h"
#include "console.h"
#include "exitstatus.h"
#include "expectcommand.h"
#include "monitorcommand.h"
#include "portlist.h"
#include "sendcommand.h"
#include "stopsignal.h"
#include "ymodemcommand.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <clocale>
#include <cstring>

namespace {

// The engines' log lines are for the window's log; what matters comes as a message.
void dropLogLine(QtMsgType, const QMessageLogContext &, const QString &)
{
}

// Scripts often run in the "C" locale, whose encoding cannot say Chinese names.
void adoptUtf8()
{
#ifndef Q_OS_WIN
    const char *locale = std::setlocale(LC_CTYPE, nullptr);
    if (!locale || std::strcmp(locale, "C") == 0 || std::strcmp(locale, "POSIX") == 0)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
}

int print(const QByteArray &text)
{
    QString reason;
    if (Console::write(text, &reason) != Console::Outcome::Failed)
        return int(ExitStatus::Done);
    Console::tell(QStringLiteral("无法写标准输出：%1").arg(reason));
    return int(ExitStatus::Refused);
}

std::unique_ptr<PortCommand> makeCommand(const Options &options)
{
    switch (options.command) {
    case Options::Command::Send:
        return std::make_unique<SendCommand>(options);
    case Options::Command::Expect:
        return std::make_unique<ExpectCommand>(options);
    case Options::Command::Ymodem:
        return std::make_unique<YmodemCommand>(options);
    default:
        return std::make_unique<MonitorCommand>(options);
    }
}

int run(const Options &options)
{
    StopSignal stop;
    const std::unique_ptr<PortCommand> command = makeCommand(options);
    QObject::connect(&stop, &StopSignal::requested, command.get(), &PortCommand::interrupt);
    QObject::connect(command.get(), &PortCommand::ended, command.get(),
                     [](ExitStatus status) { QCoreApplication::exit(int(status)); });
    QMetaObject::invokeMethod(command.get(), &PortCommand::start, Qt::QueuedConnection);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    Console::prepare();
    qInstallMessageHandler(&dropLogLine);
    // The plain event loop: GLib's costs twice the system calls for each arrival.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    adoptUtf8();
    const CommandLine line = CommandLine::parse(QCoreApplication::arguments().mid(1));
    if (!line.fault.isEmpty()) {
        Console::tell(line.fault + QStringLiteral("\n用法见korvex-cli --help"));
        return int(ExitStatus::Usage);
    }
    switch (line.options.command) {
    case Options::Command::Help:
        return print(CommandLine::help().toUtf8());
    case Options::Command::Version:
        return print(QByteArray("korvex-cli ") + AppVersion::text + '\n');
    case Options::Command::Ports:
        return print(line.options.isJson ? PortList::json() : PortList::text());
    default:
        return run(line.options);
    }
}
