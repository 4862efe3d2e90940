#pragma once

// Says when the user or the system wants the process to end: Ctrl+C, a signal, a
// console that is closed. In stopsignal_posix.cpp and stopsignal_windows.cpp.

#include <QObject>

class StopSignal : public QObject
{
    Q_OBJECT

public:
    // At most one at a time.
    explicit StopSignal(QObject *parent = nullptr);
    ~StopSignal() override;

    // From any thread.
    static bool isRequested();

signals:
    void requested(); // each time
};
