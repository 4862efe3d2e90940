#pragma once

// Simulated boards on virtual ports, for trying the program out without any
// hardware: a log on COM3, an echo on COM4, a command line on COM5, five control
// loops on COM6, a boot loader on COM7, a camera on COM8, and one on the network that connects to this
// machine as soon as the network page listens on the port of the settings; and an update service. Each is a
// child process, a "boardsim" or "updateserver" found beside the executable; all end with this object.

#include <QObject>
#include <QProcess>
#include <QTemporaryDir>

class DemoBoards : public QObject
{
    Q_OBJECT

public:
    explicit DemoBoards(QObject *parent = nullptr);
    ~DemoBoards() override;

    // Plugs the boards in; call it when failed() is connected.
    void start();

signals:
    // A board did not start, or ended by itself. Chinese, for the user.
    void failed(QString text);

private:
    QStringList encoding() const;
    void startBoard(const QString &name, const QStringList &options);
    void startUpdateServer();
    QProcess *makeProcess(const QString &name, const QString &program);

    QTemporaryDir m_folder; // of the virtual ports
};
