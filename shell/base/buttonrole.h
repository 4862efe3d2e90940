#pragma once

// Which button of a page is the one to press next. Only one at a time has the
// accent color: opening while a link is closed, sending while it is open.

class QWidget;

namespace ButtonRole {

void setPrimary(QWidget *button, bool primary);

} // namespace ButtonRole
