#pragma once

// The PID assistant: sends gains, targets and commands for five channels to a
// board and plots what it reports against time. Owns the serial link; the
// frames are pid_link's, the chart is PidPlot's.

#include "pidchannelparams.h"
#include "pidreceiver.h"
#include "qtwidgetbase.h"

#include <QElapsedTimer>

#include <array>

class FormPanel;
class PidChart;
class PidOperations;
class PidPanel;
class PidPortPanel;
class PidSaving;
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
    bool saveBeforeExit() override;
    void reloadSettings() override;

    // Does nothing while the port is closed.
    void SendPidFrame(quint8 command, quint8 channel, const QByteArray &payload);
    // Uses up what has been received, as far as it goes.
    void ParsePidFrames();

    static QByteArray Int32ToBytes(qint32 value) { return PidFrame::int32ToBytes(value); }
    static qint32 BytesToInt32(const QByteArray &bytes) { return PidFrame::bytesToInt32(bytes); }
    static QByteArray FloatToBytes(float value) { return PidFrame::floatToBytes(value); }
    static float BytesToFloat(const QByteArray &bytes) { return PidFrame::bytesToFloat(bytes); }

    quint64 actualReports() const { return m_actualReports; } // plotted so far

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
    void connectParts();

    void setPortState(bool open);
    void closePort();
    void portVanished();
    void stopRunning();

    // False when the run of the parser ends with this report.
    bool act(const PidReport &report, bool late);
    void actOnActual(const PidReport &report);
    void actOnStarted();

    quint8 channelByte() const;
    PidChannelParams &selected();
    void sendCommand(PidFrame::Command command, const QByteArray &payload = {});
    void sayNotSent(const QString &what);
    void rememberFitAll(bool fitAll);
    void fold();

    PidPortPanel *m_portPanel = nullptr;
    PidPanel *m_pid = nullptr;
    PidOperations *m_operations = nullptr;
    FormPanel *m_panel = nullptr;
    PidChart *m_chart = nullptr;
    PidSaving *m_saving = nullptr;

    QtSerialPort *m_link;
    PidReceiver m_receiver;
    std::array<PidChannelParams, PidFrame::channels> m_params;
    QString m_plotStyle;
    quint64 m_actualReports = 0;
    quint32 m_startedHere = 0; // bit per channel: start was sent, and no stop since

    // Milliseconds since the epoch, counted on from the start of the page so
    // that setting the clock does not tear the curves.
    qint64 now() const { return m_epoch + m_sinceEpoch.elapsed(); }
    qint64 m_epoch;
    QElapsedTimer m_sinceEpoch;
    qint64 m_timeOrigin = -1; // of the time axis; -1 unset
};
