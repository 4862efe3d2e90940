#pragma once

// The send area of the serial and the network page: wires and shows its three
// pages (single send, multi-send, file send) and emits the bytes to send. Knows
// no device, only whether its page says that one is open.

#include "notice.h"
#include "sendtext.h"

#include <QStackedWidget>
#include <QTimer>

class CommandPage;
class FileSendPage;
class MultiSendPage;
class SingleSendPage;

class QtSendBoxWidget : public QWidget
{
    Q_OBJECT

public:
    enum Owner { Serial, Network };
    enum Page { SinglePage = 0, MultiPage = 1, FilePage = 2, CommandsPage = 3 };

    static constexpr int minAutoInterval = 10; // milliseconds

    explicit QtSendBoxWidget(Owner owner, QWidget *parent = nullptr);
    ~QtSendBoxWidget() override;

    // Files are sent over serial ports only.
    bool offersFiles() const { return m_owner == Serial; }

    // Saves the typed text and the rows. False where that failed and the user
    // stays.
    bool saveBeforeExit();

    // Why not, for who tries to send; empty for the usual words.
    void setDeviceOpen(bool open, const QString &reason = {});
    bool isAutoSending() const { return m_autoTimer.isActive(); }

    // Milliseconds between two automatic sends, of the single-send text while that
    // page is shown; false when below minAutoInterval.
    bool setAutoInterval(int milliseconds);
    int autoInterval() const { return m_autoTimer.interval(); }

    FileSendPage *filePage() const { return m_file; }
    SingleSendPage *singlePage() const { return m_single; }
    CommandPage *commandPage() const { return m_commands; }

    // The bytes that the text would be sent as, where they are shown.
    void showBytes();

public slots:
    void setCurrentPage(int index);
    void setNewline(bool bCheck);
    void setAutoSend(bool bCheck);
    void setHexSend(bool bCheck);
    void stopAutoSend();

signals:
    void signalSendData(QByteArray byCmd);
    void showErrorHint();
    void signalSendFile(int type, int size, QStringList fileName);
    // The bar of the single send, or its history, asks for what the panel chooses.
    void newlineWanted(bool isOn);
    void hexWanted(bool isHex);
    // Automatic sending stopped or was refused.
    void autoSendStopped();
    void notify(const Notice &notice);

private slots:
    void SltSingleSendPage();
    void SltClearMultiEdit();
    void SltMultiChangePage(int page);
    void SltMultiBtnClicked(int place);
    void SltMultiEditFinished();
    void SltLoadDataFile();
    void SltAutoSendData();
    void sltBorwserXYModemFile();
    void sltSendXYModemFile();
    void sltOpenXYModemHelp();
    void sltClearXYModemFile();

private:
    void connectPages();
    void sendOnce(const QString &text, const SendText &format);
    void sendText(const QString &text, const SendText &format);
    SendText rowFormat() const;
    SendText singleFormat() const;
    // Stops automatic sending and shows a tip where no device is open.
    bool requireDevice();
    QString tooLong(const QString &what) const;
    void reportIgnored(const SendText::Encoded &encoded);

    Owner m_owner;
    QStackedWidget *m_pages;
    SingleSendPage *m_single;
    MultiSendPage *m_multi;
    FileSendPage *m_file;
    CommandPage *m_commands;
    QTimer m_autoTimer;
    QTimer m_bytesTimer; // the bytes are shown when typing pauses
    QString m_closedReason;
    bool m_deviceOpen = false;
    SendText m_format;         // how typed text becomes bytes
    int m_reportedIgnored = 0; // characters that the user knows are not sent
};
