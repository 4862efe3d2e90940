#pragma once

// What the user does with the record: save it as a session, open one, export it with
// times, limit it, clear it. Asks before anything is lost. Owns the commands of a menu
// and the work with files; the record is the recorder's.

#include "notice.h"
#include "pidsessionfiles.h"

#include <functional>

class PidChart;
class QAction;
class QMenu;

class PidRecordActions : public QObject
{
    Q_OBJECT

public:
    // Fills the chart's menu. The page is the parent of boxes; recorder and chart
    // outlive this.
    PidRecordActions(PidRecorder *recorder, PidChart *chart, QWidget *page);

    // Why a session can't be opened now; empty where it can.
    void setRefusal(const std::function<QString()> &refusal) { m_refusal = refusal; }
    void load(); // the limit in the settings, unless samples would be dropped
    // A connection records; the file would replace what it recorded.
    void cancelOpening();
    // Asks about what the user wrote about runs and has not saved. False: cancelled.
    bool mayClose();
    // Completes a running save, and the one that was agreed to. False where it failed.
    bool saveBeforeExit();

signals:
    void notify(const Notice &notice);

private:
    void buildMenu(QMenu *menu);
    void addLimits(QMenu *menu);
    // Asks for a file; `next` follows when it is written. False: cancelled or failed at once.
    bool saveAs(const std::function<void()> &next = {});
    bool mayOpen();
    void open();
    void exportTable();
    void clear();
    void setLimit(int millions);
    void handleFinished(const PidSessionFiles::Outcome &outcome);
    PidSessionInfo info() const;

    PidRecorder *m_recorder;
    PidChart *m_chart;
    QWidget *m_page;
    PidSessionFiles *m_files;
    std::function<QString()> m_refusal;
    std::function<void()> m_afterSave;
    bool m_failed = false;      // the last operation
    bool m_savesAtExit = false; // the user agreed to it in mayClose()
};
