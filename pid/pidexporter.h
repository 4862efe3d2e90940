#pragma once

// Writes an export to a file. A short one is done at once, a longer one in slices
// between the events.

#include "pidexport.h"

#include <QObject>
#include <QTimer>

#include <memory>

class PidExporter : public QObject
{
    Q_OBJECT

public:
    explicit PidExporter(QObject *parent = nullptr);

    // Not while one is running.
    void start(const QString &fileName, const PidRecorder::Channels &channels);
    bool isRunning() const { return m_export != nullptr; }
    void complete(); // does the remaining work now

signals:
    // Why the file could not be written; empty where it was.
    void finished(const QString &fileName, const QString &error);

private:
    void runSlice(int milliseconds);
    void write();

    std::unique_ptr<PidExport> m_export;
    QString m_fileName;
    QTimer m_next;
};
