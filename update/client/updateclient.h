#pragma once

// Asks the update server for the newest version and downloads its package.
// Owns the requests, their time and size limits, and the package's file until
// it is complete. Knows no widget and starts no program.

#include "packagefile.h"

#include <QNetworkAccessManager>
#include <QObject>
#include <QUrl>

class UpdateClient : public QObject
{
    Q_OBJECT

public:
    enum class Check {
        Newer,    // version() is newer than this program
        Latest,   // it is not
        NoReply,  // nothing, or nothing with a version in it
        BadReply, // no JSON, or far too long
    };
    Q_ENUM(Check)

    enum class Download {
        Complete, // at packagePath()
        Failed,   // by the server or the network
        NotCreated,
        NotWritten,
        TooLarge,
    };
    Q_ENUM(Download)

    struct Version
    {
        QString number; // as the server writes it
        QString notes;
    };

    // Requests go to `server` with "/cv/" or "/up/" and the application's name as
    // path; packages are stored in `folder`.
    UpdateClient(const QUrl &server, const QString &folder, QObject *parent = nullptr);
    ~UpdateClient() override;

    const Version &version() const { return m_version; }
    QString packagePath() const { return m_packagePath; } // empty before its first bytes

    // Each ends what is still running, without a signal.
    void check();
    void download();
    void cancel();

public slots:
    // Of a reply of this client; others are ignored.
    void finish(QNetworkReply *reply);
    void readPackage();

signals:
    void contacting(const QUrl &url); // with each request and redirection
    // Reasons are for the user; empty where it went well.
    void checked(UpdateClient::Check outcome, const QString &reason);
    void progress(qint64 received, qint64 total); // bytes; total -1 where it is not known
    void downloaded(UpdateClient::Download outcome, const QString &reason);

private:
    QNetworkReply *get(const QString &path);
    void parseVersion(const QByteArray &body);
    void endCheck(Check outcome, const QString &reason = {});
    void finishDownload();
    void endDownload(Download outcome, const QString &reason = {});

    const QUrl m_server;
    const QString m_folder;
    QNetworkAccessManager *m_manager;
    QNetworkReply *m_check = nullptr;
    QNetworkReply *m_download = nullptr;
    Version m_version;
    QString m_packagePath;
    PackageFile m_package;
};
