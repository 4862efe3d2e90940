#pragma once

// Makes a button take a double click as one click: one that starts something
// and becomes the one that ends it would otherwise do both.

class QAbstractButton;

namespace ClickOnce {

void install(QAbstractButton *button);

} // namespace ClickOnce
