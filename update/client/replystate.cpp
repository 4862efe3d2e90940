#include "replystate.h"

#include <QNetworkReply>

bool ReplyState::isSuccess(const QNetworkReply *reply)
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    return status >= 200 && status < 300;
}

QString ReplyState::reason(const QNetworkReply *reply)
{
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    switch (reply->error()) {
    case QNetworkReply::ConnectionRefusedError:
        return QStringLiteral("服务器拒绝连接");
    case QNetworkReply::RemoteHostClosedError:
        return QStringLiteral("服务器断开了连接");
    case QNetworkReply::HostNotFoundError:
        return QStringLiteral("找不到服务器");
    case QNetworkReply::TimeoutError:
    case QNetworkReply::OperationCanceledError: // by the limit of the silence
        return QStringLiteral("服务器长时间没有回应");
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::UnknownNetworkError:
        return QStringLiteral("网络不可用");
    default:
        return status >= 300 ? QStringLiteral("服务器返回错误 %1").arg(status)
                             : QStringLiteral("网络错误 %1").arg(reply->error());
    }
}
