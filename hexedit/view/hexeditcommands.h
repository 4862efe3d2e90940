#pragma once

// The commands of QHexEdit: undo, redo and those of the clipboard and the
// selection. Owns the actions and keeps their enabled state.

#include "hexcommand.h"

#include <QObject>
#include <QVector>

class QHexEdit;
class QMenu;

class HexEditCommands : public QObject
{
    Q_OBJECT

public:
    explicit HexEditCommands(QHexEdit *edit);

    HexCommand *undo() const { return m_undo; }
    HexCommand *redo() const { return m_redo; }

    void fill(QMenu *menu) const; // all but undo and redo
    // Runs the command that has this key. False where none has.
    bool runKey(const QKeyEvent *event);

private:
    HexCommand *add(const QString &text, const QList<QKeySequence> &keys, void (QHexEdit::*slot)());
    void addCopies();
    void update();

    QHexEdit *m_edit;
    QVector<HexCommand *> m_all;
    HexCommand *m_undo;
    HexCommand *m_redo;
    HexCommand *m_cut;
    HexCommand *m_copy; // by the key only: as the column shows it
    HexCommand *m_copyHex;
    HexCommand *m_copyText;
    QVector<HexCommand *> m_copiesAs; // in a menu of their own
    HexCommand *m_paste;
    HexCommand *m_delete;
    HexCommand *m_selectAll;
    QAction *m_asciiOnly;
};
