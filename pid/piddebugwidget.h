#pragma once

// The PID assistant: sends gains, targets and commands for five channels to a
// board and plots what it reports against time. Owns the serial link; the
// frames are pid_link's, the chart is PidPlot's.

#include "pid/pidchannelparams.h"
#include "pid/pidparser.h"
#include "shell/base/qtwidgetbase.h"

#include <QElapsedTimer>
#include <QTimer>

#include <array>

class FormPanel;
class PidCurveList;
class PidOperations;
class PidPanel;
class PidPlot;
class PidPortPanel;
class QCheckBox;
class QComboBox;
class QLabel;
class QMouseEvent;
class QPushButton;
class QtSerialPort;
class StateIndicator;

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
    bool prepareToClose() override;

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
    void signalNotify(QString text, int type);

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

    bool parseRun();
    void unblock();
    bool act(const PidReport &report);
    void actOnActual(const PidReport &report);
    void actOnStarted();

    quint8 channelByte() const;
    PidChannelParams &selected();
    void sendCommand(PidFrame::Command command, const QByteArray &payload = {});
    void sayNotSent(const QString &what);
    void applyCurve(int graph);
    void applyCurves();
    void savePicture();
    void showFollow();
    void showReadOut(const QPoint &place);
    void showValues();
    void fold();

    PidPortPanel *m_portPanel = nullptr;
    PidPanel *m_pid = nullptr;
    PidOperations *m_operations = nullptr;
    FormPanel *m_panel = nullptr;
    QPushButton *m_fold = nullptr;
    QComboBox *m_zoom = nullptr;
    QCheckBox *m_fitAll = nullptr;
    QLabel *m_follow = nullptr;
    QPushButton *m_live = nullptr;
    StateIndicator *m_state = nullptr;
    PidPlot *m_plot = nullptr;
    PidCurveList *m_curves = nullptr;

    QtSerialPort *m_link;
    PidParser m_parser;
    QTimer m_unblock;    // a false length is given up
    bool m_late = false; // what is being parsed came long ago
    std::array<PidChannelParams, PidFrame::channels> m_params;
    std::array<qint32, PidFrame::channels> m_actual{}; // as last plotted
    QString m_plotStyle;
    quint64 m_actualReports = 0;
    quint32 m_startedHere = 0; // bit per channel: start was sent, and no stop since
    quint32 m_fresh = 0;       // bit per channel: values that are not shown yet

    // Milliseconds since the epoch, counted on from the start of the page so
    // that setting the clock does not tear the curves.
    qint64 now() const { return m_epoch + m_sinceEpoch.elapsed(); }
    qint64 m_epoch;
    QElapsedTimer m_sinceEpoch;
    qint64 m_timeOrigin = -1; // of the time axis; -1 unset
};
