// The tools whose boards only have to be connected: network, camera, PID.

#include "boardprocess.h"
#include "cameradebugwidget.h"
#include "duty.h"
#include "frameshow.h"
#include "mainwindow.h"
#include "networktoolwidget.h"
#include "piddebugwidget.h"
#include "pidplot.h"

#include <QComboBox>
#include <QLineEdit>
#include <QTcpServer>

namespace {

quint16 freePort()
{
    QTcpServer probe;
    probe.listen();
    return probe.serverPort();
}

QStringList options(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '));
}

// Some pages count in 32 bits, which an hour of pictures goes beyond.
qint64 counted(qint64 bytes)
{
    return static_cast<quint32>(bytes);
}

// A page that listens, and a process that connects to it.
template <typename Page> class ServerDuty : public Duty
{
public:
    ServerDuty(MainWindow &window, const char *portField)
        : m_page(window.findChild<Page *>())
        , m_port(freePort())
    {
        m_page->template findChild<QLineEdit *>(QLatin1String(portField))->setText(QString::number(m_port));
    }

    void prepare() override {}
    void tick(int) override {}
    void stop() override { m_board.end(); }

protected:
    void startBoard(const char *more)
    {
        m_board.start(QStringList{QStringLiteral("--mode"), QStringLiteral("tcp-client"),
                                  QStringLiteral("--net-port"), QString::number(m_port)} +
                      options(more));
    }
    QString compareBytes(const QString &name)
    {
        return compare(name, counted(m_page->counts().value(1).toLongLong()),
                       counted(m_board.counted(QStringLiteral("written"))));
    }

    Page *m_page;

private:
    quint16 m_port;
    BoardProcess m_board;
};

class NetworkDuty : public ServerDuty<NetworkToolWidget>
{
public:
    explicit NetworkDuty(MainWindow &window)
        : ServerDuty(window, "editPort")
    {
    }
    void begin() override
    {
        m_page->sltBtnOpenClicked();
        startBoard("--act talk --peers 200 --message-bytes 64 --period 200 --encoding gb18030");
    }
    QString result() override { return compareBytes(QStringLiteral("network bytes of 200 peers")); }
};

class CameraDuty : public ServerDuty<CameraDebugWidget>
{
public:
    explicit CameraDuty(MainWindow &window)
        : ServerDuty(window, "editCameraPort")
    {
    }
    void begin() override
    {
        m_page->SltOpenLink();
        startBoard("--act camera --devices 2 --fps 15 --format 4 --width 320 --height 240");
    }
    QString result() override
    {
        const FrameShow &show = m_page->frameShow();
        m_faults += show.unusable();
        return compareBytes(QStringLiteral("camera bytes of two cameras")) +
               QStringLiteral("    frames %1, shown %2, skipped %3, unusable %4\n")
                   .arg(m_page->frames())
                   .arg(show.shown())
                   .arg(show.skipped())
                   .arg(show.unusable());
    }
};

class PidDuty : public Duty
{
public:
    explicit PidDuty(MainWindow &window)
        : m_page(window.findChild<PidDebugWidget *>())
    {
    }
    void prepare() override
    {
        m_board.start(options("--mode pid --report-rate 100 --delay 0"), QStringLiteral("COM6"));
    }
    void begin() override
    {
        m_page->findChild<QComboBox *>(QStringLiteral("comboPidPort"))->setEditText(QStringLiteral("COM6"));
        m_page->SltOpenSerialport();
        for (quint8 channel = 1; channel <= 5; ++channel)
            m_page->SendPidFrame(0x11, channel, PidFrame::int32ToBytes(100 * channel));
        sendToAll(0x12);
    }
    void tick(int second) override
    {
        // A step of the set point now and then, so that the curves move.
        if (second % 5 == 0)
            for (quint8 channel = 1; channel <= 5; ++channel)
                m_page->SendPidFrame(0x11, channel,
                                     PidFrame::int32ToBytes(100 * channel * (1 + second / 5 % 2)));
    }
    void stop() override { sendToAll(0x13); }
    QString result() override
    {
        m_board.end();
        return compare(QStringLiteral("PID reports of five channels"),
                       static_cast<qint64>(m_page->actualReports()),
                       m_board.counted(QStringLiteral("reports"))) +
               QStringLiteral("    pictures of the chart %1\n")
                   .arg(m_page->findChild<PidPlot *>()->pictures());
    }

private:
    void sendToAll(quint8 command)
    {
        for (quint8 channel = 1; channel <= 5; ++channel)
            m_page->SendPidFrame(command, channel, {});
    }

    PidDebugWidget *m_page;
    BoardProcess m_board;
};

} // namespace

std::unique_ptr<Duty> makeNetworkDuty(MainWindow &window)
{
    return std::make_unique<NetworkDuty>(window);
}

std::unique_ptr<Duty> makeCameraDuty(MainWindow &window)
{
    return std::make_unique<CameraDuty>(window);
}

std::unique_ptr<Duty> makePidDuty(MainWindow &window)
{
    return std::make_unique<PidDuty>(window);
}
