#pragma once

#include <QByteArray>
#include <QObject>

namespace Boardsim {

// Something that bytes go into and come out of, without ever blocking.
class SerialEnd : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Queues bytes; queued() are those that have not gone out.
    virtual void write(const QByteArray &bytes) = 0;
    virtual qsizetype queued() const = 0;
    // While not reading, the other side's bytes stay where they are.
    virtual void setReading(bool reading) = 0;

signals:
    void received(const QByteArray &bytes);
};

} // namespace Boardsim
