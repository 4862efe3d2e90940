#include "shell/base/qtwidgetbase.h"

QtWidgetBase::QtWidgetBase(QWidget *parent)
    : QWidget(parent)
{
}

QStringList QtWidgetBase::counts() const
{
    return {};
}

void QtWidgetBase::clearCounts()
{
}

bool QtWidgetBase::prepareToClose()
{
    return true;
}

void QtWidgetBase::reloadSettings()
{
}

void QtWidgetBase::reloadCodec()
{
}
