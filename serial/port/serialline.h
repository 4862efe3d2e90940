#pragma once

// One serial port from opening to closing: what the ports of all pages share.
// Owns the system's port. A line that is closed lets its bytes leave first
// (see ClosingPort), an open one can be lent to a file transfer, and errors
// are reported once.

#include <QObject>
#include <QSerialPort>
#include <QString>

#include <memory>

class PortDrain;

class SerialLine : public QObject
{
    Q_OBJECT

public:
    explicit SerialLine(QObject *parent = nullptr);
    ~SerialLine() override;

    // Closes the line. Parameters that are set on the returned port before
    // open() are those that it opens with.
    QSerialPort &prepare(const QString &name);
    bool open(QIODevice::OpenMode mode);
    // At once for the owner; closed() comes when the bytes have left. May come
    // from within.
    void close();

    bool isOpen() const; // and the owner's
    bool isClosing() const { return m_closing > 0; }
    QString name() const { return m_name; } // as given to prepare()
    QSerialPort &port() { return *m_port; }
    const QSerialPort &port() const { return *m_port; }

    qint64 write(const QByteArray &bytes);
    // Hands what was written to the system now rather than in the event loop's
    // next turn.
    void flush();
    // Why opening or writing failed, for the user.
    QString reason() const { return m_reason; }

    // The notices that written bytes did not leave an open or a closing line.
    QString writeFailedText(qint64 unsentBytes) const;
    QString unsentText(qint64 unsentBytes) const;

    // Takes the open port out of the owner's hands: lent() comes when what was
    // written has left, with null when the device is gone. May come from within.
    void lend();
    // Gives the port back; false when the device has gone meanwhile.
    bool takeBack();

signals:
    void readyRead();
    // The device went away (adapter unplugged, pseudo-terminal gone). Once; the
    // owner closes the line then.
    void hungUp();
    // The device refused what was written; that much was dropped.
    void writeFailed(qint64 unsentBytes);
    void closed(qint64 unsentBytes);
    void lent(QSerialPort *port, qint64 unsentBytes);

private:
    enum class Use { Owner, Lending, Lent };

    void handleError(QSerialPort::SerialPortError error);
    void handleWriteError();
    bool isDevicePresent() const;

    std::unique_ptr<QSerialPort> m_port;
    std::unique_ptr<PortDrain> m_drain; // while it is being lent
    QString m_name;
    QString m_reason;
    QString m_drainedName; // of the port that closed() or lent() was last about
    Use m_use = Use::Owner;
    int m_closing = 0; // ports on their way to being closed
    bool m_hungUp = false;
    bool m_writeFailed = false;
    qint64 m_lineFreeAtNs = 0; // what was written has left by then
};
