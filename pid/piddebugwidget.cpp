#include "pid/piddebugwidget.h"

#include "shell/base/emptystate.h"

#include <QVBoxLayout>

PidDebugWidget::PidDebugWidget(QWidget *parent)
    : QtWidgetBase(parent)
{
    setObjectName(QStringLiteral("PidDebugWidget"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new EmptyState(IconFont::Tune, QStringLiteral("PID调试助手将在后续版本提供"), this));
}

void PidDebugWidget::SltSerialportChanged(QStringList)
{
}
