#include "serial/serialportwidget.h"

#include "shell/base/emptystate.h"

#include <QVBoxLayout>

SerialportWidget::SerialportWidget(QWidget *parent)
    : QtWidgetBase(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new EmptyState(IconFont::SerialPort, QStringLiteral("串口调试助手将在后续版本提供"), this));
}

void SerialportWidget::SltSerialportChanged(QStringList) {}
