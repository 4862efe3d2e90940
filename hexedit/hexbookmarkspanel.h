#pragma once

// Lists the bookmarks of the file, and adds, names, colors and removes them. The keeper
// owns them.

#include <QWidget>

class HexCommand;
class HexNotesKeeper;
class QCheckBox;
class QHexEdit;
class QTableWidget;
class QTableWidgetItem;

class HexBookmarksPanel : public QWidget
{
    Q_OBJECT

public:
    HexBookmarksPanel(QHexEdit *edit, HexNotesKeeper *keeper, QWidget *parent = nullptr);

    HexCommand *addCommand() const { return m_add; }

signals:
    void added();

private:
    void buildUi();
    void add(); // of the selection, or the byte at the caret
    void remove();
    void changeColor();
    void store(QTableWidgetItem *item);
    void showNotes();
    void showState();
    int current() const;

    QHexEdit *m_edit;
    HexNotesKeeper *m_keeper;
    HexCommand *m_add;
    HexCommand *m_remove;
    HexCommand *m_color;
    QCheckBox *m_beside;
    QTableWidget *m_table;
    bool m_isShowing = false;
};
