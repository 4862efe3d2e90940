#pragma once

// The parameters of the channel that is selected: its gains, target and period,
// and the buttons that send them. Gains are sent together, so while one of them
// is typed and not sent, no report overwrites any. What is typed for a channel
// comes back when that channel is selected again; Esc drops it. Sends nothing
// itself.

#include "formpanel.h"
#include "pidchannelparams.h"
#include "pidfield.h"

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

    // The channel that is selected now: gains with three decimals, or what was
    // typed for it before.
    void showChannel(const PidChannelParams &params);
    // As reported, with six digits.
    void showReportedGains(const PidChannelParams &params);
    void showReportedTarget(qint32 target);
    void showReportedPeriod(qint32 period);

    // What the fields hold; nothing where it is no number that can be sent.
    std::optional<std::array<float, 3>> gains() const;
    std::optional<qint32> target() const { return m_target->integer(); }
    std::optional<qint32> period() const { return m_period->integer(); }
    // It was sent.
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
    // What was to be typed or sent is not possible: why.
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
