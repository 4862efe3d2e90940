#pragma once

// Glyphs of the icon font, as icons and pixmaps in any color and size.

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPixmap>

namespace IconFont {

// The code points of the glyphs (resources/fonts/icons.txt lists them all).
// Those up to Information are fixed by the message boxes.
enum Glyph : ushort {
    CheckCircle = 0xE614,    // message types 0, 3 and 5
    QuestionCircle = 0xE622, // message type 1
    AlertCircle = 0xE609,    // message type 2
    Information = 0xE6AE,    // message type 4
    // window
    WindowMinimize = 0xE700,
    WindowMaximize = 0xE701,
    WindowRestore = 0xE702,
    WindowClose = 0xE703,
    Help = 0xE704,
    Settings = 0xE705,
    // navigation
    ChevronLeft = 0xE710,
    ChevronRight = 0xE711,
    ChevronUp = 0xE712,
    ChevronDown = 0xE713,
    // tools
    SerialPort = 0xE720,
    Camera = 0xE721,
    Network = 0xE722,
    Tune = 0xE723,
    BinaryFile = 0xE724,
    // actions
    FolderOpen = 0xE730,
    Save = 0xE731,
    Undo = 0xE732,
    Redo = 0xE733,
    Close = 0xE734,
    Delete = 0xE735,
    Plus = 0xE736,
    Minus = 0xE737,
    Send = 0xE738,
    Play = 0xE739,
    Stop = 0xE73A,
    Search = 0xE73B,
    Copy = 0xE73C,
    Image = 0xE73D,
    Download = 0xE73E,
    Refresh = 0xE73F,
    FilePlus = 0xE740,
    FileDocument = 0xE741,
    ArrowUp = 0xE742,
    FolderPlus = 0xE743,
    ViewList = 0xE744,
    ViewDetail = 0xE745,
    Palette = 0xE746,
    Broom = 0xE747,
    Export = 0xE748,
    Import = 0xE749,
    Pause = 0xE74A,
    Check = 0xE74B,
    Eyedropper = 0xE74C,
    Circle = 0xE74D,
};

// The icon font at a pixel size.
QFont font(int pixelSize);

// One glyph centred in a transparent square, sharp at the device pixel ratio.
QPixmap pixmap(Glyph glyph, const QColor &color, int glyphSize, int side);
QIcon icon(Glyph glyph, const QColor &color, int glyphSize = 16, int side = 16);

} // namespace IconFont
