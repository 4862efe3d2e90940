#pragma once

// Asks the update server for the newest version, shows its notes, fetches the
// package into "download" and hands it to the unpacker, which replaces the
// installation once the program has quit. Modal; owns its requests and the
// package until it is complete.

#include "packagefile.h"
#include "qtframelessdialog.h"

#include <functional>

class QLabel;
class QNetworkAccessManager;
class QNetworkReply;
class QProgressBar;
class QPushButton;
class QTextEdit;
class QTimer;
class QUrl;

class QtUpdateDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    explicit QtUpdateDialog(QWidget *parent = nullptr);
    ~QtUpdateDialog() override;

    // Asked before the program is closed for the update; it stays open where
    // the answer is false. Without one it closes.
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
    // program goes on.
    void stayedOpen();

private:
    void buildUi();
    QUrl serverUrl(const QString &path) const;
    QNetworkReply *get(const QString &path);
    void showHost(const QUrl &url);
    void showVersion(const QByteArray &body);
    void showReason(const QString &reason);
    void failCheck(const QString &reason);
    void finishDownload();
    void failDownload(const QString &status, const QString &reason);
    void handOver();
    void leaveToUser(const QString &status);
    void setStatus(const QString &text, const QString &toolTip = {});
    void endRequests();

    QProgressBar *m_progress;
    QLabel *m_status;
    QTextEdit *m_notes;
    QWidget *m_splitLine;
    QLabel *m_host;
    QPushButton *m_update;
    QPushButton *m_cancel;
    QTimer *m_checkDelay;
    QNetworkAccessManager *m_manager;
    QNetworkReply *m_check = nullptr;
    QNetworkReply *m_download = nullptr;
    QString m_downloadFolder;
    QString m_strFileName; // full path of the package; empty before its first bytes
    PackageFile m_package;
    std::function<bool()> m_mayQuit;
};
