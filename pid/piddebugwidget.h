#pragma once

// The PID assistant: sends gains, targets and commands for five channels to a
// board and plots its reports against time. Owns the serial link, the session
// with the board and the recorder; connects them with the panels and the chart,
// and keeps nothing itself.

#include "fieldmemory.h"
#include "link.h"
#include "pidframe.h"
#include "qtwidgetbase.h"

class FormPanel;
class PidChart;
class PidOperations;
class PidPanel;
class PidPortPanel;
class PidRecordActions;
class PidRecorder;
class PidRunningBar;
class PidSaving;
class PidSession;
struct PidReport;
class QMouseEvent;
class QtSerialPort;

class PidDebugWidget : public QtWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(QString plotStyle READ plotStyle WRITE setPlotStyle)

public:
    explicit PidDebugWidget(QWidget *parent = nullptr);
    ~PidDebugWidget() override;

    QString plotStyle() const { return m_plotStyle; }
    void setPlotStyle(const QString &style);

    // Stops what was started: a motor may be turning.
    void closeLinks() override;
    bool mayClose() override;
    bool saveBeforeExit() override;
    void reloadSettings() override;

    // Does nothing while the port is closed.
    void SendPidFrame(quint8 command, quint8 channel, const QByteArray &payload);
    // Parses the received bytes as far as the rules of the link allow.
    void ParsePidFrames();

    static QByteArray Int32ToBytes(qint32 value) { return PidFrame::int32ToBytes(value); }
    static qint32 BytesToInt32(const QByteArray &bytes) { return PidFrame::bytesToInt32(bytes); }
    static QByteArray FloatToBytes(float value) { return PidFrame::floatToBytes(value); }
    static float BytesToFloat(const QByteArray &bytes) { return PidFrame::bytesToFloat(bytes); }

    quint64 actualReports() const; // recorded so far

signals:

public slots:
    void SltSerialportChanged(QStringList serialports);
    void SltOpenSerialport();
    void SltRecvFromSerialport(QByteArray byData);
    void SltPlotMoveEvent(QMouseEvent *event);
    void SltComboPidChanged(int index);
    void SltGraphClicked(int index, bool bShow);
    void SltBtnSendPidClicked();
    void SltBtnSendValueClicked();
    void SltBtnSendIntervalClicked();
    void SltBtnClearClicked();
    void SltBtnExportClicked();
    void SltBtnStartClicked();
    void SltBtnResetClicked();
    void SltPoltScale(int index);
    void SltRightButtonPoltScale(QMouseEvent *event);

private:
    void buildUi();
    QWidget *buildPanel();
    QWidget *buildWorkArea();
    void connectLink();
    void connectPanel();
    void connectWorkArea();
    void addProfiles();

    void handlePortState(Link::State state);
    void reportNotOpened();
    void setPortState(bool open);
    void closePort();
    void portVanished();

    void showReport(const PidReport &report);
    void followStart(const PidReport &report);
    void reportNotSent(const QString &what);
    void rememberFitAll(bool fitAll);
    void stop(int channel);
    void stopAllRunning();
    void fold();

    FieldMemory m_memory;
    PidPortPanel *m_portPanel = nullptr;
    PidPanel *m_pid = nullptr;
    PidOperations *m_operations = nullptr;
    FormPanel *m_panel = nullptr;
    PidChart *m_chart = nullptr;
    PidSaving *m_saving = nullptr;
    PidRecordActions *m_record = nullptr;

    QtSerialPort *m_link;
    PidRecorder *m_recorder;
    PidSession *m_session;
    QString m_plotStyle;
};
