#include "hexedit/hexeditwidget.h"

#include "shell/base/emptystate.h"

#include <QVBoxLayout>

HexEditWidget::HexEditWidget(QWidget *parent)
    : QtWidgetBase(parent)
{
    setObjectName(QStringLiteral("HexEditWidget"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(
        new EmptyState(IconFont::BinaryFile, QStringLiteral("二进制文件编辑器将在后续版本提供"), this));
}
