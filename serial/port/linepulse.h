#pragma once

// What restarts a board by DTR and RTS: the usual circuit of two transistors pulls
// the reset line low while RTS is raised and DTR is not, and the boot line low
// while DTR is raised and RTS is not. Also a break of a quarter of a second. Each
// ends with the lines as they were.

#include <QObject>
#include <QTimer>
#include <QVector>

class SerialLink;

class LinePulse : public QObject
{
    Q_OBJECT

public:
    explicit LinePulse(SerialLink *link, QObject *parent = nullptr);

    // Of an open link; nothing happens while another one runs.
    void reset();
    void enterBootLoader(); // resets with the boot line low
    void sendBreak();
    bool isRunning() const { return m_timer.isActive(); }

signals:
    void finished();

private:
    struct Step
    {
        bool dtr;
        bool rts;
        int ms;
    };

    void begin(const QVector<Step> &steps);
    void next();
    void end();

    SerialLink *m_link;
    QTimer m_timer;
    QVector<Step> m_steps;
    int m_step = 0;
    bool m_isBreak = false;
    bool m_dtrBefore = false;
    bool m_rtsBefore = false;
};
