#pragma once

// The page of the binary editor: places the parts on display, wires them, and
// shows the address and the size. What becomes of the file is HexFileSession's.

#include "qtwidgetbase.h"

class FormPanel;
class HexBookmarksPanel;
class HexChangeBar;
class HexCommand;
class HexComparePanel;
class HexFileSession;
class HexFindPanel;
class HexHitList;
class HexInspectorPanel;
class HexImageBar;
class HexJumpPanel;
class HexNotesKeeper;
class HexPanes;
class HexRecentButton;
class HexRulesPanel;
class HexStateRow;
class HexStringsPanel;
class HexToolRow;
class QAction;
class QHexEdit;
class QMenu;
class QPushButton;

class HexEditWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    static constexpr int pageIndex = 4;
    // Ids of the tool buttons.
    enum btnAction { OpenFile = 0, SaveFile = 1, Undo = 2, Redo = 3, CloseFile = 4 };

    explicit HexEditWidget(QWidget *parent = nullptr);
    ~HexEditWidget() override;

    QStringList counts() const override;
    bool mayClose() override;
    void closeLinks() override;
    bool isClosed() const override;
    bool saveBeforeExit() override;
    void reloadCodec() override;

    // See HexFileSession::open().
    void openFile(const QString &fileName);
    QString fileName() const;

public slots:
    void sltToolBtnsClicked(int id);
    void setSize(qint64 size);
    void setAddress(qint64 address);

protected:
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void buildUi();
    QWidget *buildPanel();
    QWidget *buildWorkArea();
    void buildCommands();
    void buildPanes();
    void showInspector();
    void addColumnsMenu(QMenu *menu);
    void addSaveMenu(QMenu *menu);
    void connectNotes();
    void connectParts();

    void showState();
    void showMarks();

    QHexEdit *m_edit = nullptr;
    HexFileSession *m_file = nullptr;
    qint64 m_size = 0;
    qint64 m_address = 0;

    FormPanel *m_panel = nullptr;
    HexJumpPanel *m_jump = nullptr;
    HexFindPanel *m_find = nullptr;
    HexRecentButton *m_recent = nullptr;
    QPushButton *m_saveAsButton = nullptr;
    HexToolRow *m_tools = nullptr;
    HexStateRow *m_state = nullptr;
    HexChangeBar *m_changeBar = nullptr;
    HexInspectorPanel *m_inspector = nullptr;
    QAction *m_showsInspector = nullptr;
    HexPanes *m_panes = nullptr;
    HexHitList *m_results = nullptr;
    HexStringsPanel *m_strings = nullptr;
    HexComparePanel *m_compare = nullptr;
    HexNotesKeeper *m_keeper = nullptr;
    HexBookmarksPanel *m_bookmarks = nullptr;
    HexRulesPanel *m_rules = nullptr;
    HexImageBar *m_imageBar = nullptr;

    HexCommand *m_commands[5] = {}; // of the tool buttons, by their ids
    HexCommand *m_newCommand = nullptr;
    HexCommand *m_openCommand = nullptr;
    HexCommand *m_reloadCommand = nullptr;
    HexCommand *m_saveAsCommand = nullptr;
};
