#pragma once

// The parameters of the selected channel: its gains, target and period, and the
// buttons that send them. Gains are sent together, so while one of them is typed
// and not sent, no report overwrites any. Typed text belongs to its channel and
// returns when that channel is selected again; Esc drops it. Sends nothing
// itself.

#include "formpanel.h"
#include "pidfield.h"
#include "pidrecorder.h"

#include <array>
#include <optional>

class QComboBox;
class QPushButton;

class PidPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit PidPanel(QWidget *parent = nullptr);

    int channel() const; // 0 to 4

    // Shows the channel that is selected now: gains with three decimals, or the
    // text typed for it before.
    void showChannel(const PidChannelParams &params);
    // As reported, with six digits.
    void showReportedGains(const PidGains &gains);
    void showReportedTarget(qint32 target);
    void showReportedPeriod(qint32 period);

    // The values of the fields; none where a text is not a number to be sent.
    std::optional<PidGains> gains() const;
    std::optional<qint32> target() const { return m_target->integer(); }
    std::optional<qint32> period() const { return m_period->integer(); }
    // As if the user had typed them.
    void proposeGains(const PidGains &gains);
    // The fields were sent: they no longer count as typed.
    void setGainsSent();
    void setTargetSent() { m_target->setSent(); }
    void setPeriodSent() { m_period->setSent(); }

    QComboBox *channelBox() const { return m_channel; }
    const std::array<PidField *, 3> &gainFields() const { return m_gains; }
    PidField *targetField() const { return m_target; }
    PidField *periodField() const { return m_period; }
    QPushButton *sendGains() const { return m_sendGains; }
    QPushButton *sendTarget() const { return m_sendTarget; }
    QPushButton *sendPeriod() const { return m_sendPeriod; }

signals:
    // Typing or sending was refused, with the reason for the user.
    void refused(const QString &reason);

private:
    static constexpr size_t fieldCount = 5;
    using Fields = std::array<PidField *, fieldCount>;
    using Draft = std::array<PidField::Content, fieldCount>;

    void buildUi();
    void connectFields();
    Fields fields() const { return {m_gains[0], m_gains[1], m_gains[2], m_target, m_period}; }
    bool areGainsTyped() const;

    QComboBox *m_channel;
    std::array<PidField *, 3> m_gains; // P, I, D
    PidField *m_target;
    PidField *m_period;
    QPushButton *m_sendGains;
    QPushButton *m_sendTarget;
    QPushButton *m_sendPeriod;
    size_t m_shown = 0;                           // the channel that the fields belong to
    std::array<std::optional<Draft>, 5> m_drafts; // of channels with typed values
};
