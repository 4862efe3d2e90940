#pragma once

// The network assistant: TCP server, TCP client and UDP.
// Not built yet: says so and counts nothing.

#include "shell/base/qtwidgetbase.h"

class NetworkToolWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    explicit NetworkToolWidget(QWidget *parent = nullptr);

signals:
    void signalNotify(QString text, int kind);
    void signalRefresCounts(int pageIndex);
};
