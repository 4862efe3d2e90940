#pragma once

// The camera assistant: images and registers of a camera board.
// Not built yet: says so and counts nothing.

#include "shell/base/qtwidgetbase.h"

class CameraDebugWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    explicit CameraDebugWidget(QWidget *parent = nullptr);

public slots:
    void SltSerialportChanged(QStringList serialports);

signals:
    void signalNotify(QString text, int kind);
    void signalRefresCounts(int pageIndex);
};
