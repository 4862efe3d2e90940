#pragma once

// How a request has ended.

#include <QString>

class QNetworkReply;

namespace ReplyState {

bool isSuccess(const QNetworkReply *reply); // by its HTTP status
// Why there is no good answer, in Chinese: Qt's own texts are English, and may
// quote the server.
QString reason(const QNetworkReply *reply);

} // namespace ReplyState
