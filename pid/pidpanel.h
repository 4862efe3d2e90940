#pragma once

// The parameters of the channel that is selected: its gains, target and period,
// and the buttons that send them. Keeps no records and sends nothing itself.

#include "pid/pidchannelparams.h"
#include "shell/base/formpanel.h"

#include <array>
#include <optional>

class PidGainField;
class QComboBox;
class QLineEdit;
class QPushButton;

class PidPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit PidPanel(QWidget *parent = nullptr);

    int channel() const; // 0 to 4

    // All fields of a channel that is selected now: gains with three decimals.
    void showChannel(const PidChannelParams &params);
    // As reported, with six digits. A field that the user is typing into is
    // left alone.
    void showReportedGains(const PidChannelParams &params);
    void showReportedTarget(qint32 target);
    void showReportedPeriod(qint32 period);

    // What the fields hold; nothing where it is no number that can be sent.
    // What they hold is then no longer taken for being typed.
    std::optional<std::array<float, 3>> takeGains();
    std::optional<qint32> takeTarget();
    std::optional<qint32> takePeriod();

    QComboBox *channelBox() const { return m_channel; }
    const std::array<PidGainField *, 3> &gainFields() const { return m_gains; }
    QLineEdit *targetField() const { return m_target; }
    QLineEdit *periodField() const { return m_period; }
    QPushButton *sendGains() const { return m_sendGains; }
    QPushButton *sendTarget() const { return m_sendTarget; }
    QPushButton *sendPeriod() const { return m_sendPeriod; }

private:
    void buildUi();

    QComboBox *m_channel;
    std::array<PidGainField *, 3> m_gains; // P, I, D
    QLineEdit *m_target;
    QLineEdit *m_period;
    QPushButton *m_sendGains;
    QPushButton *m_sendTarget;
    QPushButton *m_sendPeriod;
};
