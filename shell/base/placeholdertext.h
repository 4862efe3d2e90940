#pragma once

// Hints in empty fields, told apart from text that was typed or received. A
// style sheet gives them the colour of the text; Qt 5.15 has no rule for them.

class QWidget;

namespace PlaceholderText {

// Keeps the widget's hint fainter than its text, whatever the skin; still
// readable (4.5 to 1 on the colours that the text is readable on by 7 to 1).
void keepFaint(QWidget *widget);

} // namespace PlaceholderText
