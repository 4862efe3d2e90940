#include "network/networktoolwidget.h"

#include "shell/base/emptystate.h"

#include <QVBoxLayout>

NetworkToolWidget::NetworkToolWidget(QWidget *parent)
    : QtWidgetBase(parent)
{
    setObjectName(QStringLiteral("NetworkToolWidget"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(
        new EmptyState(IconFont::Network, QStringLiteral("网络调试助手将在后续版本提供"), this));
}
