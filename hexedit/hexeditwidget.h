#pragma once

// The editor for binary files.
// Not built yet: says so and counts nothing.

#include "shell/base/qtwidgetbase.h"

class HexEditWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    explicit HexEditWidget(QWidget *parent = nullptr);

signals:
    void signalRefresCounts(int pageIndex);
};
