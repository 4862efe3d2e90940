#pragma once

// What the serial and the network page have beside their panel: the button
// that folds the panel, byte counts and state on top, the receive display, and
// the send box below it. Also lays the page out. Knows no device.

#include "notice.h"
#include "qtsendboxwidget.h"
#include "settings.h"

#include <QElapsedTimer>
#include <QMap>
#include <QTimer>
#include <QWidget>
#include <functional>

class CodecBar;
class CurveSplit;
class FindBar;
class FormPanel;
class LogFind;
class QAction;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QSplitter;
class QVBoxLayout;
class QtTerminalWidget;
class ReceiveStore;
class StateIndicator;
class ViewMenu;

class WorkArea : public QWidget
{
    Q_OBJECT

public:
    // The spool file's name begins with stem; the empty display says one of the
    // hints.
    WorkArea(QtSendBoxWidget::Owner owner, const QString &stem, const QString &closedHint,
             const QString &openHint, QWidget *page);

    // The page: panel, then this. The keyboard goes from the panel's last field
    // to what is here.
    void placeBeside(FormPanel *panel, QWidget *lastField);

    // Keeps the fold and the height of the send box. After placeBeside().
    void remember(Settings::AreaChoices *choices);

    // Into the row above the display, and below the display. Before placeBeside().
    void addTool(QWidget *tool);
    void addBar(QWidget *bar);
    void addCommand(QAction *action); // to the menu of the view

    QPushButton *foldButton() const { return m_fold; }
    void fold(); // or unfold

    void showHint(bool open); // of the link
    // Whether received data is shown; one click on the notice above the display resumes.
    void showStopped(bool stopped);
    // What was sent, in the form of the display, where the user wants to see it.
    bool showsSent() const;
    void showSent(const QByteArray &bytes, bool hex, bool isLogMode);
    // Each page of the send box keeps the height that it was given.
    void showSendPage(int index);

    StateIndicator *state() const { return m_state; }
    QtTerminalWidget *terminal() const { return m_terminal; }
    ReceiveStore *received() const { return m_received; }
    QtSendBoxWidget *sendBox() const { return m_sendBox; }

    // Flushes what was received and emits countsDue(), at once, but not more often
    // than the eye can follow.
    void refreshCounts();
    // Bytes.
    void showCounts(qint64 sent, qint64 received);
    // That a device is waited for; empty hides it.
    void showWaiting(const QString &text);
    // Bytes of a packet that has not ended yet; 0 hides the label.
    void showGathering(qint64 bytes);

    // The settings of the view, or the codec, are others now.
    void reloadView();
    void reloadCodec();
    // Does the rest of an export of curves now; false where it failed.
    bool completeExport();

signals:
    void countsDue();
    void clearRequested();
    void resumeRequested();
    void notify(const Notice &notice);
    void codecWanted(int codec); // by the user, here
    void codecSwitched();        // here or elsewhere

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // Flushes what was received and emits countsDue().
    void flushAndCount();
    void showAgain();
    void handleCodec();
    QLayout *buildTop();
    void fitCounts();
    QWidget *buildDisplay();
    void addShortcut(const QKeySequence &key, const std::function<void()> &action);
    void buildUi();
    void restoreSendHeight();

    QWidget *m_page;
    QString m_closedHint;
    QString m_openHint;
    FormPanel *m_panel = nullptr;
    QSplitter *m_split = nullptr;
    CurveSplit *m_curves = nullptr;
    Settings::AreaChoices *m_choices = nullptr;
    int m_sendPage = 0;
    QMap<int, int> m_sendHeights; // by page; of those that were shown
    QPushButton *m_fold;
    StateIndicator *m_state;
    QLabel *m_waiting;
    QLabel *m_gathering;
    QWidget *m_counts; // hidden where the row has no room for them
    QLabel *m_sendLabel;
    QLabel *m_recvLabel;
    QHBoxLayout *m_top;
    QHBoxLayout *m_tools;
    QVBoxLayout *m_bars = nullptr;
    QPushButton *m_findButton;
    QPushButton *m_stopped;
    QtTerminalWidget *m_terminal;
    ViewMenu *m_view;
    CodecBar *m_codecBar;
    FindBar *m_findBar;
    LogFind *m_find;
    ReceiveStore *m_received;
    QtSendBoxWidget *m_sendBox;
    int m_codec;                   // shown
    bool m_wasCodecWanted = false; // by the bar
    QTimer m_countTimer;
    QElapsedTimer m_sinceCounts;
};
