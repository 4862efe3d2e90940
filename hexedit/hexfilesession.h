#pragma once

// What the user does with the file in the editor: open, save, reload, close, and
// end the program. Asks where bytes would be lost, fills the editor, and tells
// how each ended. Owns the file; knows neither how it is read and saved nor how
// bytes are edited.

#include "hexdocument.h"
#include "hexfile.h"
#include "qtmessagebox.h"

#include <QObject>
#include <functional>
#include <optional>

class HexChangeBar;
class HexRecentButton;
class QHexEdit;
struct Notice;

class HexFileSession : public QObject
{
    Q_OBJECT

public:
    // Works on these parts of the page, which is the parent of its questions.
    HexFileSession(QHexEdit *edit, HexRecentButton *recent, HexChangeBar *changeBar, QWidget *page);
    ~HexFileSession() override;

    const HexFile &file() const { return *m_file; }
    void checkOutside() { m_file->checkOutside(); }

    void chooseFile();
    // Asks where edits would be lost, and whether bytes that a failed save left
    // beside the file are meant, then shows the file, a large one while it is
    // being read. Where that fails, the file that was open is open again.
    void open(const QString &fileName);
    void save() { saveAnd({}); }
    void saveAs();
    void reload();
    void close();

    // At the end of the program, in this order.
    bool mayClose();
    void beginClosing(); // begins the save that was agreed to
    bool saveBeforeExit();

signals:
    void notify(const Notice &notice);
    void savingEnded();

private:
    struct Shown
    {
        HexDocument document;
        qint64 address = 0;
    };

    // What becomes of the edits when the program ends.
    enum class Exit { Undecided, Discard, Save, SaveBegan };

    bool refuseWhileBusy() const;
    QString chosenLeftover(const QString &fileName);
    void load(const QString &fileName, const QString &source, qint64 address);
    void makeRoom();
    void showDocument(Shown shown);
    void endOpening(const QString &source, qint64 address, const HexFile::Result &result);
    void keepOurs();
    void showOutsideChange();

    void saveAnd(const std::function<void()> &next);
    void endSaving(const QString &fileName, const HexFile::Result &result);
    bool mayOverwrite();
    void beginExitSave();
    QtMessageBox::SaveAnswer askAboutEdits();
    void withoutEdits(const std::function<void()> &next);

    QHexEdit *m_edit;
    HexRecentButton *m_recent;
    HexChangeBar *m_changeBar;
    QWidget *m_page;
    HexFile *m_file;
    std::optional<Shown> m_before; // while a file is being opened
    Exit m_exit = Exit::Undecided;
};
