#pragma once

// The list of runs with their figures and what can be done with them: show, name,
// hide, delete, lay over the current one, export. Owns the model; asks the chart for
// nothing, but says which run the user chose.

#include "notice.h"

#include <QTimer>
#include <QWidget>

class PidRecorder;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTableView;
class RunModel;

class RunPanel : public QWidget
{
    Q_OBJECT

public:
    // The recorder outlives the panel.
    explicit RunPanel(PidRecorder *recorder, QWidget *parent = nullptr);

    RunModel *model() const { return m_model; }
    int selected() const; // id; 0 for none
    void load();          // shows what the settings hold

public slots:
    // Lists what is new. Called by a timer while the panel is visible.
    void refresh();

signals:
    void selectionChanged(int id);
    void showRequested(int id); // in the chart
    void notify(const Notice &notice);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void buildUi();
    void showChoice();
    void referSelected();
    void removeSelected();
    void exportTable();
    QVector<int> selectedIds() const;

    PidRecorder *m_recorder;
    RunModel *m_model;
    QTableView *m_table;
    QLabel *m_empty;
    QPushButton *m_show;
    QPushButton *m_refer;
    QPushButton *m_hide;
    QPushButton *m_remove;
    QPushButton *m_export;
    QComboBox *m_band;
    QCheckBox *m_hidden;
    QTimer m_refresh;
};
