#pragma once

// Saves what the chart shows, after asking for a file, and reports how it went:
// the given texts in boxes, the reasons as notices.

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
    // Does the rest of an export that is running. False where it failed.
    bool complete();

signals:
    void notify(const QString &text, int kind);

private:
    void report(const QString &success, const QString &fileName, const QString &error);

    PidChart *m_chart;
    QWidget *m_page;
    PidExporter *m_exporter;
    bool m_exported = true; // the last one
};
