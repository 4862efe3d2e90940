#pragma once

#include "serialend.h"

#include <QSocketNotifier>

#include <memory>

namespace Boardsim {

// A terminal device opened as a host opens a serial port, in raw mode.
class HostDevice : public SerialEnd
{
    Q_OBJECT

public:
    using SerialEnd::SerialEnd;
    ~HostDevice() override;

    // False and an English text if it cannot be opened. Once only.
    bool open(const QString &path, QString *error);

    void write(const QByteArray &bytes) override;
    qsizetype queued() const override { return m_output.size(); }
    void setReading(bool reading) override;

signals:
    void hungUp();

private:
    void readSome();
    void writeSome();

    int m_descriptor = -1;
    QByteArray m_output;
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
};

} // namespace Boardsim
