#pragma once

// Asks at the start what becomes of received bytes that a crash left behind.

class QWidget;

namespace LeftoverOffer {

// Saves them to files of the user's choice, removes them, or leaves them for the next
// start, as answered. Nothing is asked where there is nothing.
void make(QWidget *window);

} // namespace LeftoverOffer
