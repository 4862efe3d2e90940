#pragma once

// The serial port assistant: configuration panel, receive display, send box
// and counters. Owns the port that it opens; bytes that come in go to a spool
// file and to the display.

#include "serial/bytespool.h"
#include "shell/base/qtwidgetbase.h"

#include <QElapsedTimer>
#include <QTimer>
#include <memory>

class FormPanel;
class QLabel;
class QPushButton;
class QtSendBoxWidget;
class QtTerminalWidget;
class QextSerialPort;
class RecvOptions;
class SendOptions;
class SerialConfigPanel;
class StateIndicator;

class SerialportWidget : public QtWidgetBase
{
    Q_OBJECT

public:
    static constexpr int pageIndex = 0; // in the window's stack

    explicit SerialportWidget(QWidget *parent = nullptr);
    ~SerialportWidget() override;

    QStringList counts() const override;
    void clearCounts() override;
    bool prepareToClose() override;
    void reloadSettings() override;

    const ByteSpool &spool() const { return m_spool; }

public slots:
    void SltSerialportChanged(QStringList serialports);
    void clearRecv();
    void SltOpenSerialport();
    void SltWriteDataToSerialport(QByteArray byCmd);
    void SltRecvFromSerialport();
    void SltDelayChanged();
    void SltBtnFoldClicked();
    void SltChangeSendPage(int index);
    void SltChangeAutoInterval();
    void SltSaveDataToFile();
    void sltShowErrorHint();
    void sltInterruptDetection();
    void sltTransmitProgress(int porgress, QString name);

signals:
    void signalNotify(QString text, int kind);
    void signalRefresCounts(int pageIndex);

private:
    void buildUi();
    QWidget *buildPanel();
    QWidget *buildWorkArea();
    void connectParts();

    void applyParameters();
    void setPortState(bool open);
    void closePort();
    void portVanished();
    void handleReceived(const QByteArray &bytes);
    void flushSpool();
    void refreshCounts();
    void showCounts();
    bool saveAll();
    bool autoSave();
    bool nothingToSave() const;

    SerialConfigPanel *m_config = nullptr;
    RecvOptions *m_recvOptions = nullptr;
    SendOptions *m_sendOptions = nullptr;
    FormPanel *m_panel = nullptr;
    QPushButton *m_fold = nullptr;
    StateIndicator *m_state = nullptr;
    QLabel *m_sendLabel = nullptr;
    QLabel *m_recvLabel = nullptr;
    QtTerminalWidget *m_terminal = nullptr;
    QtSendBoxWidget *m_sendBox = nullptr;

    std::unique_ptr<QextSerialPort> m_port;
    QTimer m_recvTimer;
    QTimer m_countTimer; // counts are shown at most four times a second, and the spool written
    QElapsedTimer m_sinceCounts;
    quint32 m_sendCount = 0;
    quint32 m_recvCount = 0;

    ByteSpool m_spool; // every byte received, for the whole session
    ByteSpool::State m_spoolTold = ByteSpool::State::OnDisk;
    bool m_writeBlockedTold = false;
    bool m_unsaved = false; // something came since the last save or clearing
    bool m_hidden = false;  // some of it was not shown, or is shown no more
};
