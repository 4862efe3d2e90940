#pragma once

// The serial page's port: stands in for the event-driven serial library of that
// class name (docs/adr/0001). All that it can do is SerialLink's.

#include "seriallink.h"

class QextSerialPort : public SerialLink
{
    Q_OBJECT

public:
    enum QueryMode { Polling, EventDriven };

    explicit QextSerialPort(QueryMode mode, QObject *parent = nullptr)
        : SerialLink(parent)
    {
        Q_ASSERT(mode == EventDriven);
        Q_UNUSED(mode)
    }
};
