#pragma once

// What the keys do in the editor that are no command's: they move the caret,
// zoom, type and erase. Owns nothing.

class QHexEdit;
class QKeyEvent;

class HexKeys
{
public:
    explicit HexKeys(QHexEdit *edit);

    bool press(const QKeyEvent *event); // false for a key that means nothing here

private:
    bool zoom(const QKeyEvent *event);
    bool move(const QKeyEvent *event);
    bool edit(const QKeyEvent *event);

    QHexEdit *m_edit;
};
