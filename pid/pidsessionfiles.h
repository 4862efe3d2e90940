#pragma once

// Saves the record of a page as a session file, exports it as a table with times, and
// opens a session file into it; in slices between the events, one at a time. A file is
// replaced when all of it is written. Opening reads beside the record and replaces it at
// the end: failing or cancelling loses nothing, and what was recorded meanwhile goes with
// the old record.

#include "pidsessioninfo.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <memory>

class PidRecorder;

class PidSessionFiles : public QObject
{
    Q_OBJECT

public:
    enum class Kind { Save, Export, Open };
    struct Outcome
    {
        Kind kind;
        QString fileName;
        bool isCancelled = false;
        QString error;       // why it failed; empty where it succeeded or was cancelled
        QStringList notes;   // what is missing all the same, a sentence each
        PidSessionInfo info; // of a file that was opened
    };

    explicit PidSessionFiles(PidRecorder *recorder, QObject *parent = nullptr);
    ~PidSessionFiles() override;

    // Not while one is running. Of the information, the origin is the record's.
    void save(const QString &fileName, const PidSessionInfo &info);
    void exportTable(const QString &fileName, const PidSessionInfo &info);
    void open(const QString &fileName);

    bool isRunning() const { return m_job != nullptr; }
    bool isOpening() const;
    // The file and the record stay as they were.
    void cancel();
    // For quitting: writes the remaining part now; cancels opening.
    void complete();

signals:
    void progress(int percent); // when it changes
    void finished(const PidSessionFiles::Outcome &outcome);

private:
    class Job;
    class WriteJob;
    class OpenJob;

    void start(std::unique_ptr<Job> job);
    void runSlice();
    void end(bool isCancelled);

    PidRecorder *m_recorder;
    std::unique_ptr<Job> m_job;
    int m_percent = -1;
    QTimer m_next;
};
Q_DECLARE_METATYPE(PidSessionFiles::Outcome)
