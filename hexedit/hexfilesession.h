#pragma once

// What the user does with the file in the editor: make, open, save, reload, close, and
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
class HexImageBar;
class HexRecentButton;
class QHexEdit;
struct Notice;

class HexFileSession : public QObject
{
    Q_OBJECT

public:
    struct Bars
    {
        HexChangeBar *change;
        HexImageBar *image;
    };
    // Works on these parts of the page, which is the parent of its questions.
    HexFileSession(QHexEdit *edit, HexRecentButton *recent, const Bars &bars, QWidget *page);
    ~HexFileSession() override;

    const HexFile &file() const { return *m_file; }
    // Bytes can be edited: of a file, or of a new one that has no name until it is saved.
    bool isOpen() const { return m_file->isOpen() || m_isNew; }
    QString title() const; // the file's name without its folder; empty where none is open
    // What has to be done to the bytes before they are saved; calls what it is given at the
    // end, with false where nothing may be saved.
    using Preparation = std::function<void(const std::function<void(bool)> &)>;
    void setPreparation(const Preparation &preparation) { m_prepare = preparation; }
    bool isSaving() const { return m_isPreparing || m_file->isSaving(); }
    void checkOutside() { m_file->checkOutside(); }

    void makeNew();
    void chooseFile();
    // Asks where edits would be lost, and whether bytes that a failed save left
    // beside the file are meant, then shows the file, a large one while it is
    // being read. Where that fails, the file that was open is open again.
    void open(const QString &fileName);
    void save() { saveAnd({}); }
    void saveAs() { saveAsAnd({}); }
    void reload();
    void close();

    // At the end of the program, in this order.
    bool mayClose();
    void beginClosing(); // begins the save that was agreed to
    bool saveBeforeExit();

signals:
    void notify(const Notice &notice);
    void savingEnded();
    void opened();  // another file, or none; its bytes are there
    void renamed(); // by saving it under another name

private:
    struct Shown
    {
        HexDocument document;
        HexAddressMap addresses = HexAddressMap();
        qint64 offset = 0;
    };
    // What a file is opened for.
    struct Opening
    {
        QString source; // the file, or what a failed save left for it
        HexFile::As as = HexFile::As::Content;
        qint64 firstAddress = 0; // of a plain file
        qint64 address = 0;      // to go to
    };

    // Where and in which form the bytes are saved.
    struct Target
    {
        QString fileName;
        HexImage image;
    };

    // What becomes of the edits when the program ends.
    enum class Exit { Undecided, Discard, Save, SaveBegan };

    bool refuseWhileBusy() const;
    QString chosenLeftover(const QString &fileName);
    void load(const QString &fileName, const Opening &opening);
    void makeRoom();
    void showDocument(Shown shown);
    void endOpening(const Opening &opening, const HexFile::Result &result);
    void openAs(HexFile::As as);
    void showImage();
    void keepOurs();
    void showOutsideChange();

    void saveAnd(const std::function<void()> &next);
    void saveAsAnd(const std::function<void()> &next);
    std::optional<Target> chosenTarget();
    void saveTo(const Target &target, const std::function<void()> &next);
    void restoreMode();
    bool maySaveAtExit();
    void prepareAnd(const std::function<void()> &save);
    void endSaving(const QString &fileName, const HexFile::Result &result);
    void showSavedForm();
    bool mayOverwrite();
    std::optional<HexImage> chosenImage(const QString &fileName, const QString &filter);
    HexRuns runs() const;
    bool refuseForm(const HexImage &image) const;
    void beginExitSave();
    QtMessageBox::SaveAnswer askAboutEdits();
    void withoutEdits(const std::function<void()> &next);

    QHexEdit *m_edit;
    HexRecentButton *m_recent;
    HexChangeBar *m_changeBar;
    HexImageBar *m_imageBar;
    QWidget *m_page;
    HexFile *m_file;
    std::optional<Shown> m_before;           // while a file is being opened
    HexFile::As m_as = HexFile::As::Content; // how the file was opened
    bool m_isNew = false;                    // until it is saved; while a file is being opened as well
    std::optional<bool> m_overwriteBefore;   // the mode to return to when another file replaces it
    std::optional<Target> m_exitTarget;      // of a new file
    bool m_acceptsLoss = false;              // of what is wrong with the file's text
    Exit m_exit = Exit::Undecided;
    Preparation m_prepare;
    bool m_isPreparing = false;
};
