#include "camera/cameradebugwidget.h"

#include "shell/base/emptystate.h"

#include <QVBoxLayout>

CameraDebugWidget::CameraDebugWidget(QWidget *parent)
    : QtWidgetBase(parent)
{
    setObjectName(QStringLiteral("CameraDebugWidget"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(
        new EmptyState(IconFont::Camera, QStringLiteral("摄像头调试助手将在后续版本提供"), this));
}

void CameraDebugWidget::SltSerialportChanged(QStringList)
{
}
