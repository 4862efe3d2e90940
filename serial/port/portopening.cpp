#include "portopening.h"

#include <QPointer>
#include <QSerialPort>
#include <QStringList>
#include <QThread>

namespace {

QStringList &openingPorts()
{
    static QStringList names;
    return names;
}

} // namespace

void PortOpening::start(std::unique_ptr<QSerialPort> port, const Open &open)
{
    struct Call
    {
        std::unique_ptr<QSerialPort> port;
        bool isOpen = false;
    };
    const auto call = std::make_shared<Call>();
    call->port = std::move(port);
    const QString name = call->port->portName();
    openingPorts().append(name);

    QThread *const home = thread();
    QThread *const worker = QThread::create([call, open, home] {
        call->isOpen = open(*call->port);
        call->port->moveToThread(home); // with its notifiers
    });
    call->port->moveToThread(worker);
    // The thread object lives here, and outlives this opening if need be.
    connect(worker, &QThread::finished, worker, [call, name, worker, self = QPointer<PortOpening>(this)] {
        worker->deleteLater();
        openingPorts().removeOne(name);
        if (!self)
            return call->port.reset();
        self->m_port = std::move(call->port);
        emit self->finished(call->isOpen);
    });
    worker->start();
}

std::unique_ptr<QSerialPort> PortOpening::takePort()
{
    return std::move(m_port);
}

bool PortOpening::isOpening(const QString &portName)
{
    return openingPorts().contains(portName);
}
