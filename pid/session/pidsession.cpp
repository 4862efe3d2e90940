#include "pidsession.h"

PidSession::PidSession(PidRecorder *recorder, QObject *parent)
    : QObject(parent)
    , m_recorder(recorder)
    , m_receiver([this](const PidReport &report) { return act(report); }, this)
{
    connect(&m_receiver, &PidReceiver::lengthSkipped, this, &PidSession::lengthSkipped);
    connect(&m_receiver, &PidReceiver::blocked, this, &PidSession::blocked);
}

void PidSession::setOpen(bool open)
{
    m_isOpen = open;
    if (!open)
        m_recorder->runs()->endAll();
    m_receiver.clear();
    m_startedHere.fill(false);
}

// ---- commands

void PidSession::send(PidFrame::Command code, const PidEvent &event, const QByteArray &payload)
{
    if (!m_isOpen)
        return;
    m_recorder->addEvent(event);
    emit command(code, event.channel, payload);
}

void PidSession::sendGains(int channel, const PidGains &gains, qint64 us)
{
    m_recorder->params(channel).gains = gains;
    send(PidFrame::SetPid, {PidEvent::Gains, channel, us, false, gains},
         PidFrame::floatToBytes(gains.p) + PidFrame::floatToBytes(gains.i) + PidFrame::floatToBytes(gains.d));
}

void PidSession::sendTarget(int channel, qint32 target, qint64 us)
{
    m_recorder->params(channel).target = target;
    send(PidFrame::SetTarget, {PidEvent::Target, channel, us, false, {}, target},
         PidFrame::int32ToBytes(target));
}

void PidSession::sendPeriod(int channel, qint32 period, qint64 us)
{
    send(PidFrame::SetPeriod, {PidEvent::Period, channel, us, false, {}, period},
         PidFrame::int32ToBytes(period));
}

void PidSession::start(int channel, qint64 us)
{
    m_startedHere.at(static_cast<size_t>(channel)) = true;
    send(PidFrame::Start, {PidEvent::Started, channel, us, false});
}

void PidSession::stop(int channel, qint64 us)
{
    m_startedHere.at(static_cast<size_t>(channel)) = false;
    send(PidFrame::Stop, {PidEvent::Stopped, channel, us, false});
}

void PidSession::reset(int channel)
{
    if (m_isOpen)
        emit command(PidFrame::Reset, channel, {});
}

void PidSession::stopAll(int selected, bool selectedRuns, qint64 us)
{
    const bool stopSelected = selectedRuns || m_startedHere.at(static_cast<size_t>(selected));
    for (int channel = 0; channel < PidRecorder::channels; ++channel)
        if (channel != selected && m_startedHere.at(static_cast<size_t>(channel)))
            stop(channel, us);
    if (stopSelected)
        stop(selected, us);
}

// ---- reports

void PidSession::receive(const QByteArray &bytes, qint64 arrivalUs)
{
    m_receiver.append(bytes, arrivalUs);
    m_receiver.parse();
}

// False when the run of the parser ends with this report.
bool PidSession::act(const PidReport &report)
{
    const int channel = report.channel - 1;
    PidChannelParams &params = m_recorder->params(channel);
    PidEvent event{PidEvent::Started, channel, report.arrivalUs, true, report.gains, report.value};
    switch (report.command) {
    case PidFrame::Actual:
        m_recorder->addActual(channel, report.value, report.arrivalUs, !m_isPaused);
        return !m_isPaused; // while paused, it ends the run
    case PidFrame::Target:
        event.kind = PidEvent::Target;
        params.target = report.value;
        break;
    case PidFrame::Pid:
        event.kind = PidEvent::Gains;
        params.gains = report.gains;
        break;
    case PidFrame::Period:
        event.kind = PidEvent::Period;
        params.period = report.value;
        break;
    case PidFrame::Started:
        break;
    case PidFrame::Stopped:
        event.kind = PidEvent::Stopped;
        m_startedHere.at(static_cast<size_t>(channel)) = false;
        break;
    default:
        return true; // means nothing
    }
    m_recorder->addEvent(event);
    emit reported(report);
    return true;
}
