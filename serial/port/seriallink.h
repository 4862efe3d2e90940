#pragma once

// A serial port as a Link. Owns the system's port. What was accepted for
// sending leaves before the device is closed and its settings are restored
// (see ClosingPort); a device that is unplugged closes the link with a reason;
// one that refuses or accepts nothing is reported by failed().

#include "link.h"
#include "readpause.h"
#include "serialsettings.h"

#include <QStringList>

#include <memory>

class ClosingPort;
class PortDrain;
class PortOpening;

class SerialLink : public Link
{
    Q_OBJECT

public:
    // What becomes of the opening when the device refuses a parameter.
    enum class Refusal { FailsOpening, KeepsOpen };

    // A device that accepts nothing gets no more than this queued.
    static constexpr qint64 maxPendingBytes = 16LL * 1024 * 1024;

    explicit SerialLink(QObject *parent = nullptr);
    // As close(); the bytes leave all the same.
    ~SerialLink() override;

    // False with a reason() when it fails. An open port is closed first. Where the
    // device may take seconds and opensLater is set, true also with the state
    // Opening, which ends in Open or, with a reason(), in Closed.
    bool open(const SerialSettings &settings, Refusal refusal = Refusal::FailsOpening);
    // Off at first: open() waits for the device.
    void setOpensLater(bool opensLater) { m_opensLater = opensLater; }
    // Gives the open port these settings, all but the name. Returns the
    // parameters that the device refused, for the user; it keeps its own there.
    QStringList apply(const SerialSettings &settings);
    // As they were asked for.
    const SerialSettings &settings() const { return m_settings; }
    // The parameters that were refused when it was opened.
    QStringList refusedParameters() const { return m_refused; }
    // The system's words for the port's last error, for the log.
    QString errorText() const { return m_port->errorString(); }

    qint64 pendingBytes() const override;
    void close() override;
    // The device has gone from the port list: an open link ends with a reason.
    void handleHangUp();

    // A device that fails to write counts as gone: the link ends with a reason. Off
    // at first: it stays open, and failed() tells.
    void setEndsOnWriteError(bool ends) { m_endsOnWriteError = ends; }

    // A fast line is read every 3 ms at most; where shorter pauses of the
    // board count, sooner.
    void setMaxReadPause(int ms) { m_readPause.setMaxMs(qMin(ms, 3)); }

    // The modem lines. They are kept when the link is opened again, and nothing but
    // these changes them while it is open; with RTS/CTS flow control the driver
    // moves RTS.
    struct Lines
    {
        bool isKnown = false; // the driver tells them
        bool cts = false;
        bool dsr = false;
        bool dcd = false;
        bool ri = false;
    };
    void setDtr(bool isOn);
    void setRts(bool isOn);
    // For a moment; the settings stay. DTR moves first where it rises, RTS where
    // DTR falls: a board's reset line, low while only RTS is raised, sees no pulse
    // of its own.
    void driveLines(bool dtr, bool rts);
    bool isRtsRaised() const;
    void setBreak(bool isOn);
    Lines lines() const;

    // Waits until what was sent has left the line, for a limited time; see
    // drained(), which may come from within. The port stays open.
    void drain();
    void cancelDrain();

signals:
    // unsentBytes were dropped.
    void drained(qint64 unsentBytes);
    // A notice for the user: accepted bytes did not leave, or the device
    // accepts no more.
    void failed(const QString &notice);

protected:
    qint64 accept(const QByteArray &bytes, quint64 peer) override;
    void readingChanged() override;
    void readNow(); // what has arrived, paused or not

private:
    void readRest();
    void openLater(Refusal refusal);
    bool finishOpening(bool isOpen);
    void cancelOpening();
    bool fail(const QString &reason);
    void beginClosing();
    void handleArrival();
    void handleError(QSerialPort::SerialPortError error);
    void handleWriteError();
    void endNow(const QString &reason);
    void letGo();
    void handleClosed(const ClosingPort *closing, const QString &name, qint64 unsentBytes);
    void reportUnsent(const QString &name, qint64 bytes);
    void handleHandedOver(qint64 bytes);
    void setBlocked(bool isBlocked);

    std::unique_ptr<QSerialPort> m_port;
    std::unique_ptr<PortDrain> m_drain;
    std::unique_ptr<PortOpening> m_opening; // while the state is Opening
    ClosingPort *m_closing = nullptr;       // the port of a closing link
    const Peer m_peer;                      // the one other end
    SerialSettings m_settings;
    QStringList m_refused;
    bool m_errorPending = false; // noticed, and handled in the event loop's next turn
    bool m_hungUp = false;
    bool m_blocked = false;
    bool m_endsOnWriteError = false;
    bool m_opensLater = false;
    bool m_isHandingOver = false; // handedOver() is being emitted
    qint64 m_lineFreeAtNs = 0;    // what was sent has left by then
    qint64 m_readBytes = 0;
    qint64 m_arrivalUs = 0; // of the last of them
    ReadPause m_readPause;
};
