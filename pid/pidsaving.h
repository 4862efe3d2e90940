#pragma once

// Asks for a file and saves into it what the recorder shows as tables, or the
// chart as a picture. Reports the outcome: failures in boxes, reasons as notices.

#include "notice.h"

#include <QObject>

class PidChart;
class PidExporter;
class PidRecorder;
class QWidget;

class PidSaving : public QObject
{
    Q_OBJECT

public:
    // The page is the parent of boxes.
    PidSaving(const PidRecorder *recorder, const PidChart *chart, QWidget *page);

    void exportTables();
    void savePicture();
    // Completes an export that is running. False: it failed, and the user knows.
    bool complete();

signals:
    void notify(const Notice &notice);

private:
    void report(const QString &success, const QString &fileName, const QString &error);

    const PidRecorder *m_recorder;
    const PidChart *m_chart;
    QWidget *m_page;
    PidExporter *m_exporter;
    bool m_failed = false; // the last export
};
