#pragma once

// Says when the process is to end: on the usual signals, and when the process
// that started it is gone.

#include <QObject>
#include <QTimer>

namespace Boardsim {

class ProcessEnd : public QObject
{
    Q_OBJECT

public:
    // At most one at a time. On systems without POSIX signals it never speaks.
    explicit ProcessEnd(QObject *parent = nullptr);

signals:
    void requested();

private:
    qint64 m_parent = 0;
    QTimer m_parentWatch;
};

} // namespace Boardsim
