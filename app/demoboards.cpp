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
    const auto onPort = [this](const QString &port, const QString &mode) {
        startBoard(port, {QStringLiteral("--folder"), m_folder.path(), QStringLiteral("--port"), port,
                          QStringLiteral("--mode"), mode});
    };
    onPort(QStringLiteral("COM3"), QStringLiteral("log"));
    onPort(QStringLiteral("COM4"), QStringLiteral("echo"));
    onPort(QStringLiteral("COM5"), QStringLiteral("shell"));
    startBoard(QStringLiteral("TCP"),
               {QStringLiteral("--mode"), QStringLiteral("tcp-client"), QStringLiteral("--net-port"),
                QString::number(Settings::instance().network.port), QStringLiteral("--act"),
                QStringLiteral("log"), QStringLiteral("--rate"), QStringLiteral("2"),
                QStringLiteral("--period"), QStringLiteral("500")});
}

void DemoBoards::startBoard(const QString &name, const QStringList &options)
{
    auto *board = new QProcess(this);
    board->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    board->setStandardOutputFile(QProcess::nullDevice());
    const auto report = [this, name, board] {
        qWarning().noquote() << "simulated board" << name << "failed:" << board->errorString();
        emit failed(QStringLiteral("模拟开发板[%1]无法运行，请检查程序目录下的boardsim！").arg(name));
    };
    connect(board, &QProcess::errorOccurred, this, report);
    connect(board, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [report](int, QProcess::ExitStatus status) {
                if (status == QProcess::NormalExit) // a crash is an error already
                    report();
            });
    // In the encoding that the program decodes with, so that Chinese is readable.
    const bool utf8 = Settings::instance().textCodec == TextCodec::Utf8;
    const QStringList common{QStringLiteral("--encoding"),
                             utf8 ? QStringLiteral("utf8") : QStringLiteral("gb18030")};
    board->start(QCoreApplication::applicationDirPath() + QStringLiteral("/boardsim"), common + options);
}
