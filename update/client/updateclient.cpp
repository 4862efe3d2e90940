#include "updateclient.h"

#include "packagename.h"
#include "versionnumber.h"

#include <QCoreApplication>
#include <QDebug>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>

#include <utility>

namespace {

constexpr int kTransferTimeoutMs = 30000; // without a byte

constexpr qint64 kMaxReplyBytes = 1024 * 1024; // of the version check
constexpr int kMaxNotes = 64 * 1024;           // characters
// How far the network may be ahead of the disk.
constexpr qint64 kReadBufferBytes = 1024 * 1024;
constexpr qint64 kMaxPackageBytes = 1024LL * 1024 * 1024;

const auto kNotWritten = QStringLiteral("文件没有完整写入磁盘");

int httpStatus(const QNetworkReply *reply)
{
    return reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

bool isSuccess(const QNetworkReply *reply)
{
    return httpStatus(reply) >= 200 && httpStatus(reply) < 300;
}

// In Chinese: Qt's own texts are English, and may quote the server.
QString reasonOf(const QNetworkReply *reply)
{
    switch (reply->error()) {
    case QNetworkReply::ConnectionRefusedError:
        return QStringLiteral("服务器拒绝连接");
    case QNetworkReply::RemoteHostClosedError:
        return QStringLiteral("服务器断开了连接");
    case QNetworkReply::HostNotFoundError:
        return QStringLiteral("找不到服务器");
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError: // by the transfer timeout
        return QStringLiteral("服务器长时间没有回应");
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::UnknownNetworkError:
        return QStringLiteral("网络不可用");
    default:
        return httpStatus(reply) >= 300 ? QStringLiteral("服务器返回错误 %1").arg(httpStatus(reply))
                                        : QStringLiteral("网络错误 %1").arg(reply->error());
    }
}

} // namespace

UpdateClient::UpdateClient(const QUrl &server, const QString &folder, QObject *parent)
    : QObject(parent)
    , m_server(server)
    , m_folder(folder)
    , m_manager(new QNetworkAccessManager(this))
{
    m_manager->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    connect(m_manager, &QNetworkAccessManager::finished, this, &UpdateClient::finish);
}

UpdateClient::~UpdateClient()
{
    m_manager->disconnect(this);
    cancel();
    m_manager->setParent(nullptr);
    m_manager->deleteLater();
}

QNetworkReply *UpdateClient::get(const QString &path)
{
    QUrl url = m_server;
    url.setPath(path + QCoreApplication::applicationName());
    emit contacting(url);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
    // The announced length is then that of the bytes that are stored.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setTransferTimeout(kTransferTimeoutMs);
    QNetworkReply *reply = m_manager->get(request);
    connect(reply, &QNetworkReply::redirected, this, &UpdateClient::contacting);
    return reply;
}

void UpdateClient::cancel()
{
    for (QNetworkReply *reply : {std::exchange(m_check, nullptr), std::exchange(m_download, nullptr)}) {
        if (!reply)
            continue;
        reply->disconnect(this);
        reply->abort(); // finish() ignores it
    }
    m_package.discard();
}

void UpdateClient::finish(QNetworkReply *reply)
{
    reply->deleteLater();
    if (reply == m_download) {
        finishDownload();
        return;
    }
    if (reply != m_check)
        return; // canceled
    m_check = nullptr;
    const QByteArray body = reply->readAll();
    if (reply->error() != QNetworkReply::NoError)
        qWarning().noquote() << "version check:" << reply->errorString();
    if (!body.isEmpty())
        parseVersion(body);
    else if (reply->error() != QNetworkReply::NoError)
        endCheck(Check::NoReply, reasonOf(reply));
    else
        endCheck(Check::NoReply, QStringLiteral("服务器的回复是空的"));
}

// ---- the version

void UpdateClient::check()
{
    cancel();
    m_check = get(QStringLiteral("/cv/"));
    qDebug() << "check version" << m_check->url().toString();
    connect(m_check, &QNetworkReply::downloadProgress, this, [this](qint64 received) {
        if (received > kMaxReplyBytes)
            endCheck(Check::BadReply, QStringLiteral("服务器的回复过长"));
    });
}

void UpdateClient::parseVersion(const QByteArray &body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    const bool isJson = error.error == QJsonParseError::NoError;
    if (!isJson)
        qWarning().noquote() << "version check:" << error.errorString();
    if (!document.isObject()) {
        endCheck(isJson ? Check::NoReply : Check::BadReply, QStringLiteral("服务器的回复不是版本信息"));
        return;
    }
    m_version.number = document.object().value(QStringLiteral("verNum")).toString();
    m_version.notes = document.object().value(QStringLiteral("verInfo")).toString();
    if (m_version.notes.size() > kMaxNotes)
        m_version.notes = m_version.notes.left(kMaxNotes) + QStringLiteral("…");
    const bool isNewer = VersionNumber::fromText(m_version.number) >= VersionNumber::firstNewer;
    endCheck(isNewer ? Check::Newer : Check::Latest);
}

void UpdateClient::endCheck(Check outcome, const QString &reason)
{
    cancel();
    emit checked(outcome, reason);
}

// ---- the package

void UpdateClient::download()
{
    cancel();
    m_packagePath.clear();
    m_download = get(QStringLiteral("/up/"));
    m_download->setReadBufferSize(kReadBufferBytes);
    connect(m_download, &QNetworkReply::readyRead, this, &UpdateClient::readPackage);
    connect(m_download, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64 total) {
        if (total > kMaxPackageBytes)
            endDownload(Download::TooLarge, QStringLiteral("%1 字节").arg(total));
        else
            emit progress(received, total);
    });
}

void UpdateClient::readPackage()
{
    if (!m_download || !isSuccess(m_download))
        return; // the page of an error is no package
    if (m_packagePath.isEmpty()) {
        const QString header = QString::fromUtf8(m_download->rawHeader("Content-Disposition"));
        m_packagePath = m_folder + QLatin1Char('/') + PackageName::fromHeader(header);
        qDebug() << "m_strFileName" << m_packagePath;
        if (!m_package.begin(m_packagePath)) {
            endDownload(Download::NotCreated, QStringLiteral("无法在download文件夹中新建文件"));
            return;
        }
    }
    if (m_package.size() + m_download->bytesAvailable() > kMaxPackageBytes)
        endDownload(Download::TooLarge, QStringLiteral("超过 %1 字节").arg(kMaxPackageBytes));
    else if (!m_package.append(m_download->readAll()))
        endDownload(Download::NotWritten, kNotWritten);
}

// The request has ended, one way or another.
void UpdateClient::finishDownload()
{
    readPackage(); // the last bytes; may fail
    if (!m_download)
        return;
    const QNetworkReply *reply = m_download;
    const QVariant announced = reply->header(QNetworkRequest::ContentLengthHeader);
    const bool isComplete = reply->error() == QNetworkReply::NoError && isSuccess(reply) &&
                            m_package.size() > 0 &&
                            (!announced.isValid() || announced.toLongLong() == m_package.size());
    if (isComplete && m_package.keep())
        endDownload(Download::Complete);
    else if (isComplete)
        endDownload(Download::NotWritten, kNotWritten);
    else if (reply->error() != QNetworkReply::NoError)
        endDownload(Download::Failed, reasonOf(reply));
    else
        endDownload(Download::Failed, QStringLiteral("收到的数据不完整"));
}

void UpdateClient::endDownload(Download outcome, const QString &reason)
{
    if (outcome != Download::Complete)
        qWarning().noquote() << "download failed:" << m_packagePath << m_package.error();
    cancel();
    emit downloaded(outcome, reason);
}
