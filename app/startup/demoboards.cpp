#include "demoboards.h"

#include "settings.h"
#include "textcodec.h"

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
#ifdef Q_OS_WIN
        board->kill(); // a program without a window can't be asked there
#else
        board->terminate();
#endif
    }
    for (QProcess *board : boards)
        board->waitForFinished(2000); // one that goes on is killed with its object
}

void DemoBoards::start()
{
#ifndef Q_OS_WIN // where there are no virtual ports without a driver
    const auto onPort = [this](const QString &port, const QString &mode, const QStringList &options = {}) {
        startBoard(port, QStringList{QStringLiteral("--folder"), m_folder.path(), QStringLiteral("--port"),
                                     port, QStringLiteral("--mode"), mode} +
                             options);
    };
    onPort(QStringLiteral("COM3"), QStringLiteral("log"), encoding());
    onPort(QStringLiteral("COM4"), QStringLiteral("echo"));
    onPort(QStringLiteral("COM5"), QStringLiteral("shell"), encoding());
    onPort(QStringLiteral("COM6"), QStringLiteral("pid"));
    onPort(QStringLiteral("COM7"), QStringLiteral("ymodem"),
           {QStringLiteral("--receive-folder"), m_folder.filePath(QStringLiteral("received"))});
    onPort(QStringLiteral("COM8"), QStringLiteral("camera"),
           {QStringLiteral("--devices"), QStringLiteral("2")});
#endif
    startUpdateServer();
    startBoard(QStringLiteral("TCP"),
               encoding() + QStringList{QStringLiteral("--mode"), QStringLiteral("tcp-client"),
                                        QStringLiteral("--net-port"),
                                        QString::number(Settings::instance().network.port),
                                        QStringLiteral("--act"), QStringLiteral("log"),
                                        QStringLiteral("--rate"), QStringLiteral("2"),
                                        QStringLiteral("--period"), QStringLiteral("500")});
}

// That in which the program decodes, so that Chinese is readable.
QStringList DemoBoards::encoding() const
{
    const bool utf8 = Settings::instance().textCodec == TextCodec::Utf8;
    return {QStringLiteral("--encoding"), utf8 ? QStringLiteral("utf8") : QStringLiteral("gb18030")};
}

void DemoBoards::startBoard(const QString &name, const QStringList &options)
{
    QProcess *board = makeProcess(QStringLiteral("模拟开发板[%1]").arg(name), QStringLiteral("boardsim"));
    board->setStandardOutputFile(QProcess::nullDevice());
    board->setArguments(options);
    board->start();
}

// The dialog that asks for updates finds it when its address is known.
void DemoBoards::startUpdateServer()
{
    const auto notes =
        QStringLiteral("1. 这是演示用的更新服务，不会修改程序\n2. 下载的升级包是一个空的压缩文件");
    QProcess *server = makeProcess(QStringLiteral("演示更新服务"), QStringLiteral("updateserver"));
    server->setArguments({QStringLiteral("--notes"), notes});
    connect(server, &QProcess::readyReadStandardOutput, this, [server] {
        if (server->canReadLine())
            qputenv("KORVEX_UPDATE_SERVER", server->readLine().trimmed());
    });
    server->start();
}

// A program beside the executable whose failures are reported; not started yet.
QProcess *DemoBoards::makeProcess(const QString &name, const QString &program)
{
    auto *board = new QProcess(this);
    board->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const auto report = [this, name, program, board] {
        qWarning().noquote() << name << "failed:" << board->errorString();
        emit failed(QStringLiteral("%1无法运行，请检查程序目录下的%2！").arg(name, program));
    };
    connect(board, &QProcess::errorOccurred, this, report);
    connect(board, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [report](int, QProcess::ExitStatus status) {
                if (status == QProcess::NormalExit) // a crash is an error already
                    report();
            });
    board->setProgram(QCoreApplication::applicationDirPath() + QLatin1Char('/') + program);
    return board;
}
