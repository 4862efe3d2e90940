#pragma once

// Sends files as they are, without a protocol, for boot loaders that only read:
// so many bytes or lines, and then a pause. What the board says meanwhile is
// the display's. Owns the file and the timer.

#include "link.h"
#include "transferdriver.h"
#include "ymodem.h"

#include <QFile>
#include <QObject>
#include <QTimer>

#include <functional>

class RawFileSend : public QObject, public TransferDriver
{
    Q_OBJECT

public:
    struct Pace
    {
        enum Unit { Bytes, Lines };
        Unit unit = Bytes;
        int count = 256;
        int ms = 10; // before the next ones; 0: as fast as the link accepts them
    };

    explicit RawFileSend(QObject *parent = nullptr);
    ~RawFileSend() override;

    // Over an open link, which has to outlive the transfer.
    bool start(Link *link, const QStringList &files, const Pace &pace);

    bool isBusy() const override { return m_link != nullptr; }
    void stop() override;
    bool usesInput() const override { return false; }
    qint64 bytesDone() const override { return m_bytes; }
    qint64 fileSize() const override { return m_file.size(); }
    QString reason() const override { return m_reason; }
    QStringList incompleteFiles() const override { return m_files.mid(m_completed); }
    const TransferLog &log() const override { return m_log; }

signals:
    void fileStarted(QString name); // full
    void progressed(QString name);
    void ended(Ymodem::Status status); // once

private:
    void step();
    bool openNext();
    QByteArray nextPortion();
    void end(Ymodem::Status status, const QString &reason);
    qint64 elapsedMs() const { return (Link::nowUs() - m_startUs) / 1000; }

    Link *m_link = nullptr;
    QStringList m_files;
    int m_completed = 0; // files that are sent
    Pace m_pace;
    QFile m_file;
    qint64 m_bytes = 0; // of the file
    QTimer m_timer;
    QString m_reason;
    TransferLog m_log;
    qint64 m_startUs = 0;
};
