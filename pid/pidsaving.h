#pragma once

// Saves what the chart shows, after asking for a file, and reports how it went:
// the given texts in boxes, the reasons as notices.

#include "notice.h"

#include <QObject>

class PidChart;
class PidExporter;
class QWidget;

class PidSaving : public QObject
{
    Q_OBJECT

public:
    // Boxes are the page's.
    PidSaving(PidChart *chart, QWidget *page);

    void exportTables();
    void savePicture();
    // Ends an export that is running; false: it failed, and the user was told.
    bool complete();

signals:
    void notify(const Notice &notice);

private:
    void report(const QString &success, const QString &fileName, const QString &error);

    PidChart *m_chart;
    QWidget *m_page;
    PidExporter *m_exporter;
    bool m_failed = false; // the last export
};
