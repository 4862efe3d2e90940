#pragma once

// "expect": waits for a line and prints it.

#include "expectedline.h"
#include "portcommand.h"

#include <QTimer>

class ExpectCommand : public PortCommand
{
    Q_OBJECT

public:
    explicit ExpectCommand(const Options &options);

protected:
    void prepare() override;
    void handleOpened() override;
    void handleReceived(const QByteArray &bytes, qint64 arrivalUs) override;
    void handleLost() override;

private:
    void checkQuiet();
    bool succeed(const std::optional<QByteArray> &line);
    void tellUnjudged();

    ExpectedLine m_expected;
    QTimer m_quiet;
    qint64 m_arrivalUs = 0;
    QTimer m_limit;
    bool m_hasSent = false;
    bool m_hasToldUnjudged = false;
};
