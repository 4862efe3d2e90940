#pragma once

// The numbers of a receive display as curves: chart, list of curves, and the bar
// above them. Reads the record of the display, also the lines that were there
// before, and those that a filter hides. Form of the lines and key axis are
// settings, which all displays share.

#include "notice.h"

#include <QTimer>
#include <QWidget>

class CurveExporter;
class CurveFeed;
class LogCurveList;
class LogPlot;
class QBoxLayout;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QPushButton;
class QtTerminalWidget;

class CurvePane : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString plotStyle READ plotStyle WRITE setPlotStyle)

public:
    // The terminal outlives the pane.
    explicit CurvePane(QtTerminalWidget *terminal, QWidget *parent = nullptr);

    QString plotStyle() const { return m_plotStyle; }
    void setPlotStyle(const QString &style);
    // The list stands beside the chart, or below it where the pane is narrow.
    void setNarrow(bool narrow);
    // Of the bar's menu, to which more can be added.
    QMenu *menu() const { return m_menu; }
    // Shows what the settings hold.
    void load();
    // Does the rest of an export now; false where it failed.
    bool completeExport();

signals:
    void closeRequested();
    void notify(const Notice &notice);

private:
    void buildUi();
    QBoxLayout *buildBar();
    void buildMenu();
    void chooseForm();
    void restart();
    void dropCurves();
    void showNew();
    void showState();
    void showStateSoon();
    void showHint();
    void showFollow();
    void showReadOut(const QPoint &position);
    void moveReadOut();
    void exportTable();
    void savePicture();
    void report(const QString &success, const QString &fileName, const QString &error);

    QtTerminalWidget *m_terminal;
    CurveFeed *m_feed;
    LogPlot *m_plot;
    LogCurveList *m_list;
    CurveExporter *m_exporter;
    QComboBox *m_form;
    QLineEdit *m_expression;
    QPushButton *m_pause;
    QMenu *m_menu;
    QAction *m_byLine = nullptr;
    QLabel *m_counts;
    QBoxLayout *m_column = nullptr;
    QBoxLayout *m_bar = nullptr;
    QBoxLayout *m_content;
    QTimer m_stateTimer;
    QString m_plotStyle;
    bool m_exportFailed = false;
};
