#pragma once

// The PID assistant: parameters and live waveforms of a controller.
// Not built yet: says so and counts nothing.

#include "shell/base/qtwidgetbase.h"

class PidDebugWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    explicit PidDebugWidget(QWidget *parent = nullptr);

public slots:
    void SltSerialportChanged(QStringList serialports);

signals:
    void signalNotify(QString text, int kind);
};
