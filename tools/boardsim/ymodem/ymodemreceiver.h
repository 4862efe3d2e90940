#pragma once

// Receives files by YModem (CRC-16, blocks of 128 and 1024 bytes), batch after
// batch, as a boot loader does: asks with 'C' while nothing comes. Knows bytes
// and waiting times only; the owner of the port, the files and the clock is
// told what to do through YmodemReceiver::Board. What it does wrong on purpose
// is in its settings.

#include "payload.h"
#include "ymodemfaults.h"

#include <QByteArray>
#include <QString>

namespace Boardsim {

class YmodemReceiver
{
public:
    class Board
    {
    public:
        virtual ~Board() = default;
        virtual void send(const QByteArray &bytes) = 0;
        // Asks for one call of timeOut() after so long, instead of the call
        // asked for before; -1 for none.
        virtual void setTimer(int ms) = 0;
        // A file by this plain name (not empty, no path) begins, afresh if there
        // is one. False if it cannot be stored; so with its bytes.
        virtual bool beginFile(const QString &name) = 0;
        virtual bool storeBytes(const QByteArray &bytes) = 0;
        // Ends the file that was begun last; an incomplete one is of no use.
        virtual void endFile(bool complete) = 0;
        // "file a.bin 300 bytes", "file a.bin 200 of 300 bytes", "batch end 2 files",
        // "cancelled: why", "repeated block 2", "refused block 2".
        virtual void report(const QString &event) = 0;
    };

    struct Settings
    {
        int askMs = 1000;         // between two 'C'
        int packetMs = 10000;     // NAK after so long without a block within a file
        bool nakFirstEot = false; // of each file
        quint32 seed = 1;         // of noise
        // Of the names; one that is no UTF-8 is read as GB18030 all the same.
        Encoding encoding = Encoding::Utf8;
        YmodemFaults faults;
    };

    // The board must outlive the receiver.
    YmodemReceiver(const Settings &settings, Board &board);

    void start(); // asks from now on
    void stop();  // the host is gone
    void received(const QByteArray &bytes);
    void timeOut();

private:
    enum class State { Off, Header, Data };

    bool consume();
    void handlePacket(const QByteArray &packet);
    void handleHeader(const QByteArray &field);
    void handleData(const QByteArray &field);
    void handleEot();
    void handleEnd();
    bool beginFile(const QByteArray &field);
    void ask();
    void refuse(const QString &what);
    void cancel(const QString &reason, const QByteArray &bytes);
    void leaveFile(bool complete);
    bool misbehave(const YmodemPlace &place);
    void answer(const YmodemPlace &place, QByteArray bytes);
    QByteArray noise(const YmodemPlace &place);
    void setTimer();
    bool isAsking() const { return m_state == State::Header || m_next == 1; }
    YmodemPlace block(qint64 number) const { return {YmodemPlace::Block, number}; }

    Settings m_settings;
    Board &m_board;
    quint32 m_noiseState;
    State m_state = State::Off;
    QByteArray m_input;  // not yet consumed: at most one packet that is not whole
    QByteArray m_header; // of the file that is being received
    QString m_name;
    qint64 m_size = -1;   // announced; -1 not
    qint64 m_stored = 0;  // bytes
    qint64 m_next = 0;    // block, counted on past 255
    int m_files = 0;      // of this batch so far
    int m_cans = 0;       // in a row
    int m_timeOuts = 0;   // in a row
    int m_specialMs = -1; // waiting time instead of the usual, once
    bool m_eotRefused = false;
    bool m_silent = false;
};

} // namespace Boardsim
