#pragma once

// The editor for binary files: opens one file into memory, lets it be edited,
// and puts it back without ever losing the bytes that were there.

#include "hexedit/hexdocument.h"
#include "hexedit/hexreader.h"
#include "hexedit/hexsaver.h"
#include "shell/base/qtwidgetbase.h"

#include <QDateTime>
#include <memory>

class FormPanel;
class HexChecksumPanel;
class HexFindPanel;
class HexJumpPanel;
class QButtonGroup;
class QHexEdit;
class QLabel;
class QMenu;
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
    void reloadCodec() override;

    // Asks where edits would be lost, then shows the file, a large one while it
    // is being read. What was open before comes back where that fails.
    void openFile(const QString &fileName);
    QString fileName() const { return m_fileName; }

    HexSaver &saver() { return m_saver; } // for tests that make a step fail

public slots:
    void sltToolBtnsClicked(int id);
    void setSize(qint64 size);
    void setAddress(qint64 address);

signals:
    void signalRefresCounts(int pageIndex);

protected:
    void changeEvent(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    // What the file looked like when its bytes were those of the editor.
    struct Stamp
    {
        bool exists = false;
        qint64 size = 0;
        QDateTime time;
        bool operator==(const Stamp &other) const
        {
            return exists == other.exists && size == other.size && time == other.time;
        }
        static Stamp of(const QString &fileName);
    };

    struct Opened
    {
        QString fileName; // empty while no file is open
        Stamp stamp;
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
    void fillRecent();

    bool refuseWhileBusy() const;
    void chooseFile();
    void showFile(Opened opened);
    void finishOpening(HexReader::State state, const std::shared_ptr<Opened> &before);
    void remember(const QString &fileName);
    bool forgetIfGone(const QString &fileName); // true when it was in the list
    void setRecent(const QStringList &names);
    void save();
    void closeFile();
    bool mayDiscard(const QString &question);
    bool mayOverwrite();
    bool writeTo(QIODevice &device);
    void pause(qint64 bytes);
    void showOutcome(const HexSaver::Outcome &outcome);
    void showState();
    void showWork(const QString &name);
    void endWork();

    QString m_fileName;
    Stamp m_stamp;
    HexSaver m_saver;
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
    QPushButton *m_recent = nullptr;
    QPushButton *m_mode = nullptr;
    QPushButton *m_stop = nullptr;
    QMenu *m_recentMenu = nullptr;
    QLabel *m_addressLabel = nullptr;
    QLabel *m_sizeLabel = nullptr;
    QLabel *m_fileLabel = nullptr;
    QLabel *m_selectionLabel = nullptr;
    QProgressBar *m_progress = nullptr;
};
