#include "shell/base/qtwidgetbase.h"

#include "shell/base/fieldbehavior.h"

QtWidgetBase::QtWidgetBase(QWidget *parent)
    : QWidget(parent)
{
    FieldBehavior::install();
}

QStringList QtWidgetBase::counts() const
{
    return {};
}

void QtWidgetBase::clearCounts()
{
}

bool QtWidgetBase::mayClose()
{
    return true;
}

void QtWidgetBase::closeLinks()
{
}

bool QtWidgetBase::isClosed() const
{
    return true;
}

bool QtWidgetBase::saveBeforeExit()
{
    return true;
}

void QtWidgetBase::reloadSettings()
{
}

void QtWidgetBase::reloadCodec()
{
}
