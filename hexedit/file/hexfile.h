#pragma once

// The file that is open in the editor: its name, the form that it has, what it
// looked like when its bytes were the editor's, and what failed saves left beside it. Opens, reloads
// and saves it as work of a SlicedTask, and notices what other programs do to
// it. Owns neither the document nor the task; knows no widget and asks nothing.

#include "hexfilewatch.h"
#include "hexreader.h"
#include "hexrecordreader.h"
#include "hexsaver.h"
#include "slicedtask.h"

#include <QObject>
#include <QSet>
#include <functional>
#include <memory>
#include <utility>

class HexFile : public QObject
{
    Q_OBJECT

public:
    // How opening or saving ended; texts for the user.
    struct Result
    {
        bool done = false;
        bool inPlace = false; // the editor's bytes are the file's, even if it is not done
        QString reason;       // why it is not done; empty where it was stopped
        QString consequence;  // where the bytes are now and what to do, or what was lost all the same
    };
    using Report = std::function<void(const Result &)>;

    explicit HexFile(SlicedTask *task, const HexSaver::Disk &disk = HexSaver::realDisk(),
                     QObject *parent = nullptr);

    bool isOpen() const { return !m_name.isEmpty(); }
    QString name() const { return m_name; }
    bool isSame(const QString &fileName) const; // behind all links

    // What the bytes of the file are taken for: records of text where its content
    // shows that, or always itself.
    enum class As { Content, Bytes };
    // Reads the file, or instead the source that a failed save left for it.
    // readingBegan() comes first; where the source can't be read, only the
    // report comes. Where reading does not end well, the file that was open
    // before is open again. Bytes of records come at the end, in the order of their
    // addresses. The task must be idle; so for all below.
    void open(const QString &fileName, const QString &source, const Report &report, As as = As::Content);
    void reload(const Report &report) { open(m_name, m_name, report); }
    // The form that the file is saved in, with what else it says, and what its
    // content showed when it was opened.
    const HexImage &image() const { return m_state.image; }
    HexRuns takeRuns() { return std::exchange(m_state.image.runs, HexRuns()); } // which may be many
    HexForm contentForm() const { return m_state.contentForm; }
    void close();

    // The document must keep still until the report.
    void save(std::unique_ptr<HexOutput> output, const Report &report);
    // The image is the file's from then on.
    void saveAs(const QString &fileName, std::unique_ptr<HexOutput> output, const HexImage &image,
                const Report &report);
    bool isSaving() const { return m_saver != nullptr; }

    // What failed saves left beside a file and was not declined in this run.
    QStringList leftoversOf(const QString &fileName) const;
    void decline(const QString &leftover);

    // As the file was when last looked at.
    bool isGone() const { return m_watch.isGone(); }
    bool isChangedOutside() const { return m_watch.differs(); }
    void checkOutside() { m_watch.check(); }
    // Saving would replace bytes of another program without the user's consent.
    bool needsConsent() const;
    void giveConsent() { m_consent = FileStamp::of(m_name); }

signals:
    void readingBegan();
    void blockRead(const QByteArray &block);
    void changedOutside(); // or back to what it was

private:
    struct State
    {
        HexImage image;
        HexForm contentForm = HexForm::Bytes;
    };
    struct Loading
    {
        HexReader reader;
        As as = As::Content;
        bool hasBegun = false;
        std::unique_ptr<HexRecordReader> records; // where the content is such
        HexReader::State state = HexReader::State::Running;
        QString source;
        FileStamp sourceStamp;
        QString nameBefore;
        FileStamp stampBefore;
        State stateBefore;
    };

    void follow(const QString &fileName, const FileStamp &stamp);
    void readContent(Loading &loading, const QByteArray &block);
    SlicedTask::Step readBlock(Loading &loading);
    Result endOpening(Loading &loading, bool done);
    void start(const QString &fileName, std::unique_ptr<HexOutput> output, const HexImage &image,
               const Report &report);
    Result endSaving(const QString &fileName, const HexImage &image, bool done);

    SlicedTask *m_task;
    HexSaver::Disk m_disk;
    QString m_name;
    HexFileWatch m_watch;
    FileStamp m_consent;
    State m_state;
    QSet<QString> m_declined;
    std::unique_ptr<HexSaver> m_saver; // while saving
};
