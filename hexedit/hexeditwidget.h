#pragma once

// The editor for binary files: opens one file into memory, lets it be edited,
// and puts it back without ever losing the bytes that were there.

#include "hexdocument.h"
#include "hexfilewatch.h"
#include "hexreader.h"
#include "hexsaver.h"
#include "qtmessagebox.h"
#include "qtwidgetbase.h"

#include <QSet>
#include <memory>
#include <optional>

class FormPanel;
class HexChangeBar;
class HexChecksumPanel;
class HexFindPanel;
class HexJumpPanel;
class HexRecentButton;
class QButtonGroup;
class QHexEdit;
class QLabel;
class QProgressBar;
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
    bool saveBeforeExit() override;
    void reloadCodec() override;

    // Asks where edits would be lost, and whether bytes that a failed save left
    // beside the file are meant, then shows the file, a large one while it is
    // being read. What was open before comes back where that fails.
    void openFile(const QString &fileName);
    QString fileName() const { return m_fileName; }

    HexSaver &saver() { return m_saver; } // for tests that make a step fail

public slots:
    void sltToolBtnsClicked(int id);
    void setSize(qint64 size);
    void setAddress(qint64 address);
    void saveAs();

signals:
    void signalRefresCounts(int pageIndex);

protected:
    void changeEvent(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    struct Opened
    {
        QString fileName; // empty while no file is open
        FileStamp stamp;
        HexDocument document;
        qint64 address = 0;
    };

    // hexeditpage.cpp: what it is made of
    void buildUi();
    QWidget *buildPanel();
    QWidget *buildWorkArea();
    QLayout *buildToolRow(QWidget *area);
    QLayout *buildStateRow(QWidget *area);
    void connectParts();
    void drawIcons();

    bool refuseWhileBusy() const;
    bool refuseWithoutFile() const;
    void chooseFile();
    // Reads the source, another file than the named one where a failed save
    // left the bytes there.
    void load(const QString &fileName, const QString &source, qint64 address);
    QString chosenLeftover(const QString &fileName);
    void showFile(Opened opened);
    struct Loading
    {
        HexReader reader;
        HexReader::State state = HexReader::State::Running;
        QString source;
        FileStamp sourceStamp;
        qint64 address = 0;
        Opened before;
    };
    void finishOpening(Loading &loading);
    void reload();
    void keepOurs();
    void showOutsideChange();
    bool save();
    bool saveTo(const QString &fileName);
    void closeFile();
    QtMessageBox::SaveAnswer askAboutEdits();
    bool mayDiscard();
    bool mayOverwrite();
    bool writeTo(QIODevice &device);
    void pause(qint64 bytes);
    void showOutcome(const HexSaver::Outcome &outcome, const QString &fileName);
    void showState();
    void showWork(const QString &name);
    void endWork();

    QString m_fileName;
    HexFileWatch m_watch;
    QSet<QString> m_declined; // leftovers that the user did not want
    HexSaver m_saver;
    std::optional<QtMessageBox::SaveAnswer> m_exitAnswer; // to the question of mayClose()
    bool m_saving = false;
    qint64 m_savedBytes = 0;
    qint64 m_size = 0;
    qint64 m_address = 0;

    QHexEdit *m_edit = nullptr;
    FormPanel *m_panel = nullptr;
    HexJumpPanel *m_jump = nullptr;
    HexFindPanel *m_find = nullptr;
    HexChecksumPanel *m_checksums = nullptr;
    QButtonGroup *m_buttons = nullptr;
    QPushButton *m_fold = nullptr;
    HexRecentButton *m_recent = nullptr;
    QPushButton *m_saveAs = nullptr;
    QPushButton *m_mode = nullptr;
    QPushButton *m_stop = nullptr;
    QLabel *m_addressLabel = nullptr;
    QLabel *m_sizeLabel = nullptr;
    QLabel *m_fileLabel = nullptr;
    QLabel *m_selectionLabel = nullptr;
    QProgressBar *m_progress = nullptr;
    HexChangeBar *m_changeBar = nullptr;
};
