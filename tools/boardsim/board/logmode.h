#pragma once

#include "boardmode.h"

#include <QElapsedTimer>
#include <QTimer>

namespace Boardsim {

// Prints log lines at a steady rate. A board has no flow control: lines that
// find the host still busy with many earlier ones are lost.
class LogMode : public BoardMode
{
    Q_OBJECT

public:
    struct Options
    {
        PayloadOptions payload;
        int linesPerSecond = 20;
        void addTo(CommandLine &line);
    };

    LogMode(const Options &options, VirtualPort &port);

    void start() override;
    void stop() override;

private:
    void printDue();

    Encoding m_encoding;
    quint32 m_seed;
    int m_linesPerSecond;
    quint32 m_nextLine = 0;
    quint32 m_firstLine = 0; // of this host
    QElapsedTimer m_clock;
    QTimer m_timer;
};

} // namespace Boardsim
