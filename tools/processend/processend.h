#pragma once

// Says when the process is to end: on the usual signals where there are any, and
// when the process that started it is gone. In processend_posix.cpp and
// processend_windows.cpp.

#include <QObject>

namespace Boardsim {

class ProcessEnd : public QObject
{
    Q_OBJECT

public:
    // At most one at a time.
    explicit ProcessEnd(QObject *parent = nullptr);

signals:
    void requested();
};

} // namespace Boardsim
