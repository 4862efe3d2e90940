#pragma once

// Hints in empty fields, fainter than text that was typed or received. A
// style sheet gives them the color of the text; Qt 5.15 has no rule for them.

class QWidget;

namespace PlaceholderText {

// Keeps the widget's hint fainter than its text, in every skin; still
// readable (4.5 to 1 on the colors that the text is readable on by 7 to 1).
void keepFaint(QWidget *widget);

} // namespace PlaceholderText
