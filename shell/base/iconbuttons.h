#pragma once

// What buttons without a text have in common.

class QWidget;

namespace IconButtons {

// A button without a text gets its tool tip as its name for screen readers. To
// be called when the widget's children exist.
void nameByToolTips(QWidget *root);

} // namespace IconButtons
