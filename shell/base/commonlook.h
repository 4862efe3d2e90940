#pragma once

// What all widgets of a window or dialog have in common and a style sheet
// cannot give them.

class QWidget;

namespace CommonLook {

// To be called when the children exist. A button without a text gets its tool
// tip as its name for screen readers; drop-down lists get rows that the style
// sheets can size.
void complete(QWidget *root);

} // namespace CommonLook
