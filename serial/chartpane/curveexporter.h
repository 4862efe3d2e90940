#pragma once

// Writes a table of curves to a file in slices between the events. The file is
// replaced when all of it is written.

#include "curvetable.h"

#include <QObject>
#include <QTimer>

#include <memory>

class QSaveFile;

class CurveExporter : public QObject
{
    Q_OBJECT

public:
    explicit CurveExporter(QObject *parent = nullptr);
    ~CurveExporter() override;

    // Not while one is running.
    void start(const QString &fileName, const QStringList &names, const QVector<CurvePoints> &curves);
    bool isRunning() const { return m_table != nullptr; }
    void complete(); // does the remaining work now

signals:
    // Why the file could not be written; empty where it was.
    void finished(const QString &fileName, const QString &error);

private:
    void runSlice();
    void advance();
    void end(const QString &error);

    std::unique_ptr<CurveTable> m_table;
    std::unique_ptr<QSaveFile> m_file;
    QTimer m_next;
};
