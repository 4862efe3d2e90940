#pragma once

// The color skins: a palette for widgets that paint themselves and an
// application style sheet from the resources, joined with the user's colors
// of the receive and send areas.

#include <QColor>
#include <QString>

// Colors of the skin in force, for widgets that paint themselves.
struct SkinPalette
{
    QString name;          // style sheet file without its suffix
    QString text;          // entry 1: text on the window
    QString accent;        // entry 2: primary buttons, selection, focus
    QString window;        // entry 3: window background
    QString border;        // entry 4: lines and frames
    QString secondaryText; // entry 5: axis labels, captions
    QString panel;         // entry 6: panels and fields
    QString header;        // entry 7: title strips and table headers
    QColor outline;        // the palette color: the window's edge
};

namespace Skin {

const SkinPalette &palette();

// The style sheet for the palette and the user's colors in force. Empty when
// the skin's file is not in the resources.
QString styleSheet();

// Chooses the palette of the skin index, writes Common/Skin and installs the
// style sheet. An unknown index leaves palette and style sheet as they are.
void apply(int index);

} // namespace Skin
