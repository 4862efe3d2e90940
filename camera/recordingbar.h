#pragma once

// The bar that records what a camera sends, and plays a recorded stream again: where to,
// what, how it goes. Owns the recorder and the player; knows no link and no packet.
// Closed at first, and off at each start.

#include "camerarecorder.h"
#include "fieldmemory.h"
#include "notice.h"
#include "streamplayer.h"

#include <QWidget>

#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

class RecordingBar : public QWidget
{
    Q_OBJECT

public:
    explicit RecordingBar(QWidget *parent = nullptr);

    QPushButton *button() const { return m_button; } // which opens the bar
    CameraRecorder *recorder() { return &m_recorder; }
    StreamPlayer *player() { return &m_player; }

    // How the bytes of a stream are read, for its file.
    void setHead(const std::function<StreamHead()> &head) { m_head = head; }
    // Why nothing can be played now, for the user; empty where it can.
    void setPlayRefusal(const std::function<QString()> &refusal) { m_playRefusal = refusal; }
    // Of two pictures on display.
    void setDeviceCount(int count) { m_deviceCount = count; }
    void load() { m_memory.load(); }

signals:
    void notify(const Notice &notice);
    void playing(); // is about to begin
    void stateChanged();

private:
    void buildUi();
    QLabel *labelFor(const QString &text, QWidget *field);
    void toggleRecording();
    void takePicture();
    void togglePlaying(bool isFast);
    bool chooseFolder();
    QString folder() const;
    void showKind();
    void showState();
    void endPlaying(const QString &fault);

    CameraRecorder m_recorder;
    StreamPlayer m_player;
    FieldMemory m_memory;
    std::function<StreamHead()> m_head;
    std::function<QString()> m_playRefusal;
    int m_deviceCount = 1;
    QTimer m_progress;
    QPushButton *m_button;
    QComboBox *m_kind;
    QLabel *m_intervalLabel = nullptr;
    QSpinBox *m_interval;
    QLineEdit *m_folder;
    QPushButton *m_choose;
    QPushButton *m_record;
    QPushButton *m_take;
    QPushButton *m_play;
    QLabel *m_state;
};
