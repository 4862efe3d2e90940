#pragma once

// How good the camera's link is: a panel with counts and last faults, which a button
// opens, and a line that offers to resynchronize byte by byte, once, when bytes
// arrive and pictures stay away. Shows what CameraReceiver counts.

#include "notice.h"

#include <QWidget>

class CameraReceiver;
class QPushButton;
class QTableWidget;
class QTabWidget;

class CameraHealthPane : public QWidget
{
    Q_OBJECT

public:
    explicit CameraHealthPane(CameraReceiver *receiver, QWidget *parent = nullptr);

    QPushButton *button() const { return m_button; } // which opens the panel
    // Once a second. canResynchronize: packets are read, and not yet byte by byte.
    void refresh(bool canResynchronize);

signals:
    void resynchronizeWanted();
    void notify(const Notice &notice);

private:
    QWidget *buildOffer();
    QWidget *buildPanel();
    void openPanel(bool open);
    void showTables();
    void save();

    CameraReceiver *m_receiver;
    QPushButton *m_button;
    QWidget *m_offer;
    bool m_hasOffered = false;
    QTableWidget *m_counts;
    QTableWidget *m_faults;
    QWidget *m_panel;
};
