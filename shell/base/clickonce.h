#pragma once

// Makes a double click on a button count as one click: a button that starts
// something and then stops it would otherwise do both.

class QAbstractButton;

namespace ClickOnce {

void install(QAbstractButton *button);

} // namespace ClickOnce
