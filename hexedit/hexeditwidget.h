#pragma once

// The page of the binary editor. Owns the parts on display and the file; wires
// them, asks where bytes would be lost, and shows how opening and saving ended.
// Knows neither how a file is read and saved nor how bytes are edited.

#include "hexfile.h"
#include "qtmessagebox.h"
#include "qtwidgetbase.h"

#include <functional>
#include <optional>

class FormPanel;
class HexChangeBar;
class HexCommand;
class HexFindPanel;
class HexJumpPanel;
class HexRecentButton;
class HexStateRow;
class HexToolRow;
class QHexEdit;
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
    void closeLinks() override; // begins the save that was agreed to
    bool isClosed() const override;
    bool saveBeforeExit() override;
    void reloadCodec() override;

    // Asks where edits would be lost, and whether bytes that a failed save left
    // beside the file are meant, then shows the file, a large one while it is
    // being read. Where that fails, the file that was open is open again.
    void openFile(const QString &fileName);
    QString fileName() const { return m_file->name(); }

public slots:
    void sltToolBtnsClicked(int id);
    void setSize(qint64 size);
    void setAddress(qint64 address);

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    struct Shown
    {
        HexDocument document;
        qint64 address = 0;
    };

    // What becomes of the edits when the program ends.
    enum class Exit { Undecided, Discard, Save, SaveBegan };

    void buildUi();
    QWidget *buildPanel();
    QWidget *buildWorkArea();
    void buildCommands();
    void connectParts();

    bool refuseWhileBusy() const;
    void chooseFile();
    QString chosenLeftover(const QString &fileName);
    void load(const QString &fileName, const QString &source, qint64 address);
    void makeRoom();
    void showDocument(Shown shown);
    void endOpening(const QString &source, qint64 address, const HexFile::Result &result);
    void reload();
    void keepOurs();
    void showOutsideChange();

    void saveAs();
    void saveAnd(const std::function<void()> &next);
    void endSaving(const QString &fileName, const HexFile::Result &result);
    bool mayOverwrite();
    void closeFile();
    void beginExitSave();
    QtMessageBox::SaveAnswer askAboutEdits();
    void withoutEdits(const std::function<void()> &next);
    void showState();

    QHexEdit *m_edit = nullptr;
    HexFile *m_file = nullptr;
    std::optional<Shown> m_before; // while a file is being opened
    Exit m_exit = Exit::Undecided;
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

    HexCommand *m_commands[5] = {}; // of the tool buttons, by their ids
    HexCommand *m_openCommand = nullptr;
    HexCommand *m_reloadCommand = nullptr;
    HexCommand *m_saveAsCommand = nullptr;
};
