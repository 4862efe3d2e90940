#pragma once

// Shows what the update client finds out: the notes of the newest version, the
// progress of its download and reasons of failures. Starts the unpacker, which
// replaces the installation once the program has quit. Modal.

#include "qtframelessdialog.h"
#include "updateclient.h"

#include <functional>

class QLabel;
class QProgressBar;
class QPushButton;
class QTextEdit;
class QTimer;

class QtUpdateDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    explicit QtUpdateDialog(QWidget *parent = nullptr);
    ~QtUpdateDialog() override;

    // Asked before the program is closed for the update; it stays open where
    // the answer is false. Without a question it closes.
    void setQuitQuestion(const std::function<bool()> &mayQuit) { m_mayQuit = mayQuit; }

public slots:
    void SltCheckVersion();
    void SltNetworkReply(QNetworkReply *reply);
    void SltDownloadFile();
    void SltReadFiles();
    void downloadProgress(qint64 received, qint64 total);

    void done(int result) override;

signals:
    // The question was answered with yes, but the unpacker does not start: the
    // program continues.
    void stayedOpen();

private:
    void buildUi();
    void showHost(const QUrl &url);
    void showCheck(UpdateClient::Check outcome, const QString &reason);
    void showDownload(UpdateClient::Download outcome, const QString &reason);
    void startUnpacker();
    void leaveToUser(const QString &status);
    void setStatus(const QString &text, const QString &toolTip = {});

    QProgressBar *m_progress;
    QLabel *m_status;
    QTextEdit *m_notes;
    QWidget *m_splitLine;
    QLabel *m_host;
    QPushButton *m_update;
    QPushButton *m_cancel;
    QTimer *m_checkDelay;
    UpdateClient *m_client;
    std::function<bool()> m_mayQuit;
};
