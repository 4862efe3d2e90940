#include "app/demoboards.h"

#include "app/settings.h"
#include "app/textcodec.h"

#include <QCoreApplication>
#include <QDebug>

DemoBoards::DemoBoards(QObject *parent)
    : QObject(parent)
{
    qputenv("KORVEX_VIRTUAL_PORTS", m_folder.path().toLocal8Bit());
}

DemoBoards::~DemoBoards()
{
    const QList<QProcess *> boards = findChildren<QProcess *>();
    for (QProcess *board : boards) {
        board->disconnect(this);
        board->terminate();
    }
    for (QProcess *board : boards) {
        if (!board->waitForFinished(2000))
            board->kill();
    }
}

void DemoBoards::start()
{
    startBoard(QStringLiteral("COM3"), {QStringLiteral("--mode"), QStringLiteral("log")});
    startBoard(QStringLiteral("COM4"), {QStringLiteral("--mode"), QStringLiteral("echo")});
    startBoard(QStringLiteral("COM5"), {QStringLiteral("--mode"), QStringLiteral("shell")});
    startBoard(QStringLiteral("COM6"), {QStringLiteral("--mode"), QStringLiteral("pid")});
}

void DemoBoards::startBoard(const QString &port, const QStringList &options)
{
    auto *board = new QProcess(this);
    board->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    board->setStandardOutputFile(QProcess::nullDevice());
    const auto report = [this, port, board] {
        qWarning().noquote() << "simulated board" << port << "failed:" << board->errorString();
        emit failed(QStringLiteral("模拟开发板[%1]无法运行，请检查程序目录下的boardsim！").arg(port));
    };
    connect(board, &QProcess::errorOccurred, this, report);
    connect(board, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [report](int, QProcess::ExitStatus status) {
                if (status == QProcess::NormalExit) // a crash is an error already
                    report();
            });
    // In the encoding that the program decodes with, so that Chinese is readable.
    const bool utf8 = Settings::instance().textCodec == TextCodec::Utf8;
    const QStringList common{
        QStringLiteral("--folder"),   m_folder.path(),
        QStringLiteral("--port"),     port,
        QStringLiteral("--encoding"), utf8 ? QStringLiteral("utf8") : QStringLiteral("gb18030")};
    board->start(QCoreApplication::applicationDirPath() + QStringLiteral("/boardsim"), common + options);
}
