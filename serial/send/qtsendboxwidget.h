#pragma once

// The send area of the serial and the network page: single send, multi-send
// and file send. It turns typed text into bytes and emits them; it knows no
// device, only whether its page says that one is open.

#include "notice.h"

#include <QStackedWidget>
#include <QTimer>

class FileSendPage;
class MultiSendPage;
class SingleSendPage;

class QtSendBoxWidget : public QWidget
{
    Q_OBJECT

public:
    enum Owner { Serial, Network };
    enum Page { SinglePage = 0, MultiPage = 1, FilePage = 2 };

    static constexpr int leastAutoInterval = 10; // milliseconds

    explicit QtSendBoxWidget(Owner owner, QWidget *parent = nullptr);
    ~QtSendBoxWidget() override;

    // Over sockets no file transfer is spoken.
    bool offersFiles() const { return m_owner == Serial; }

    // Saves the typed text and the rows. False where that failed and the user wants
    // to stay.
    bool saveBeforeExit();

    void setDeviceOpen(bool open);
    bool isAutoSending() const { return m_autoTimer.isActive(); }

    // Sends the single-send text again and again while that page is shown.
    // Milliseconds between two sends; false when below leastAutoInterval.
    bool setAutoInterval(int milliseconds);
    int autoInterval() const { return m_autoTimer.interval(); }

    FileSendPage *filePage() const { return m_file; }

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
    // The box stopped sending by itself or was refused to start.
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
    void sendOnce(const QString &text);
    void sendText(QString text);
    bool deviceIsOpen();
    QString tooLong(const QString &what) const;
    void loadSingleText();
    QString saveSingleText(); // the reason of a failure, which is also posted
    void notifyHexIgnored(int ignored, bool nothingLeft);

    Owner m_owner;
    QStackedWidget *m_pages;
    SingleSendPage *m_single;
    MultiSendPage *m_multi;
    FileSendPage *m_file;
    QTimer m_autoTimer;
    QTimer m_saveTimer; // the typed text is written when typing pauses
    bool m_deviceOpen = false;
    bool m_hexSend = false;
    bool m_newline = false;
    bool m_textChanged = false;
    QString m_textReadError; // why the stored text could not be read
    int m_ignoredTold = 0;   // characters that the user was told are not sent
};
