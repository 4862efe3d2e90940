#include "boardprocess.h"
#include "bytespool.h"
#include "dialoganswers.h"
#include "duty.h"
#include "mainwindow.h"
#include "payload.h"
#include "qtsendboxwidget.h"
#include "serialportwidget.h"
#include "ymodemfiletransmit.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QPushButton>

namespace {

constexpr int kTotal = 1700000; // of each run, in some 19 s: it is over when it is looked at
constexpr int kFileBytes = 200000;

QByteArray contentOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class SerialDuty : public Duty
{
public:
    SerialDuty(MainWindow &window, const QString &folder)
        : m_page(window.findChild<SerialportWidget *>())
        , m_sent(folder + QStringLiteral("/firmware.bin"))
        , m_received(folder + QStringLiteral("/received"))
    {
    }

    void prepare() override
    {
        // Beforehand, or making them would be taken for a stall.
        m_expected = Boardsim::Payload(Boardsim::Encoding::Gb18030, 1).take(kTotal);
        QFile file(m_sent);
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(Boardsim::Payload(Boardsim::Encoding::Binary, 7).take(kFileBytes)) != kFileBytes)
            qFatal("cannot write the file to send");
        m_log.start({QStringLiteral("--mode"), QStringLiteral("burst"), QStringLiteral("--total"),
                     QString::number(kTotal), QStringLiteral("--encoding"), QStringLiteral("gb18030"),
                     QStringLiteral("--delay"), QStringLiteral("500")},
                    QStringLiteral("COM3"));
        m_loader.start({QStringLiteral("--mode"), QStringLiteral("ymodem"),
                        QStringLiteral("--receive-folder"), m_received},
                       QStringLiteral("COM7"));
        DialogAnswers::instance().fileNames = [this](auto...) { return QStringList{m_sent}; };
    }

    void begin() override {}

    void tick(int second) override
    {
        switch (second % 60) {
        case 1:
            open(QStringLiteral("COM3"), "radioRecvText");
            break;
        case 25:
            checkRun();
            open(QStringLiteral("COM3"), "radioRecvHex");
            break;
        case 49:
            checkRun();
            openAndSend();
            break;
        case 59:
            checkFile();
            break;
        default:
            break;
        }
    }

    void stop() override
    {
        m_log.end();
        m_loader.end();
    }

    QString result() override
    {
        return compare(QStringLiteral("serial bytes, as expected"), m_rightBytes, m_runs * kTotal) +
               compare(QStringLiteral("YModem files, as sent"), m_rightFiles, m_files);
    }

private:
    void open(const QString &port, const char *format)
    {
        m_page->findChild<QAbstractButton *>(QLatin1String(format))->setChecked(true);
        m_page->findChild<QComboBox *>(QStringLiteral("comboPort"))->setEditText(port);
        m_spoolBefore = m_page->spool().size();
        m_page->SltOpenSerialport();
    }

    // Closes the port after a run.
    void checkRun()
    {
        m_page->SltOpenSerialport();
        ++m_runs;
        const ByteSpool &spool = m_page->spool();
        QByteArray bytes;
        while (m_spoolBefore + bytes.size() < spool.size())
            bytes += spool.read(m_spoolBefore + bytes.size(), kTotal);
        if (m_expected.startsWith(bytes))
            m_rightBytes += bytes.size();
    }

    void openAndSend()
    {
        QDir(m_received).removeRecursively();
        open(QStringLiteral("COM7"), "radioRecvText");
        m_page->findChild<QtSendBoxWidget *>()->setCurrentPage(QtSendBoxWidget::FilePage);
        if (m_files == 0)
            m_page->findChild<QPushButton *>(QStringLiteral("btnOpenFiles"))->click();
        m_page->findChild<QPushButton *>(QStringLiteral("btnSendFiles"))->click();
        ++m_files;
    }

    void checkFile()
    {
        m_page->SltOpenSerialport();
        m_rightFiles += contentOf(m_received + QStringLiteral("/firmware.bin")) == contentOf(m_sent);
    }

    SerialportWidget *m_page;
    QString m_sent;
    QString m_received;
    BoardProcess m_log;
    BoardProcess m_loader;
    QByteArray m_expected; // of each run
    qint64 m_spoolBefore = 0;
    qint64 m_rightBytes = 0;
    qint64 m_runs = 0;
    qint64 m_files = 0;
    qint64 m_rightFiles = 0;
};

} // namespace

std::unique_ptr<Duty> makeSerialDuty(MainWindow &window, const QString &folder)
{
    return std::make_unique<SerialDuty>(window, folder);
}
