#pragma once

#include "shell/base/qtwidgetbase.h"

class SerialportWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    explicit SerialportWidget(QWidget *parent = nullptr);

public slots:
    void SltSerialportChanged(QStringList serialports);

signals:
    void signalNotify(QString text, int kind);
    void signalRefresCounts(int pageIndex);
};
