#pragma once

// The file that is open in the editor: its name, what it looked like when its
// bytes were the editor's, and what failed saves left beside it. Opens, reloads
// and saves it as work of a SlicedTask, and notices what other programs do to
// it. Owns neither the document nor the task; knows no widget and asks nothing.

#include "hexfilewatch.h"
#include "hexreader.h"
#include "hexsaver.h"
#include "slicedtask.h"

#include <QObject>
#include <QSet>
#include <functional>
#include <memory>

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

    // Reads the file, or instead the source that a failed save left for it.
    // readingBegan() comes first; where the source can't be read, only the
    // report comes. Where reading does not end well, the file that was open
    // before is open again. The task must be idle; so for all below.
    void open(const QString &fileName, const QString &source, const Report &report);
    void reload(const Report &report) { open(m_name, m_name, report); }
    void close();

    // The document must keep still until the report.
    void save(const HexDocument &document, const Report &report);
    void saveAs(const QString &fileName, const HexDocument &document, const Report &report);
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
    struct Loading
    {
        HexReader reader;
        HexReader::State state = HexReader::State::Running;
        QString source;
        FileStamp sourceStamp;
        QString nameBefore;
        FileStamp stampBefore;
    };

    void follow(const QString &fileName, const FileStamp &stamp);
    SlicedTask::Step readBlock(Loading &loading);
    Result endOpening(const Loading &loading);
    void start(const QString &fileName, const HexDocument &document, const Report &report);
    Result endSaving(const QString &fileName, bool done);

    SlicedTask *m_task;
    HexSaver::Disk m_disk;
    QString m_name;
    HexFileWatch m_watch;
    FileStamp m_consent;
    QSet<QString> m_declined;
    std::unique_ptr<HexSaver> m_saver; // while saving
};
