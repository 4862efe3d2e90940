#pragma once

// A range of the document that the editor shows on a colored ground.

#include <QColor>

struct HexMark
{
    qint64 begin; // offset
    qint64 end;
    int color; // index, see ground()

    // In the colors of the skin.
    static QColor ground(int color);
};
