#include "qtupdatedialog.h"

#include "apppaths.h"
#include "packagename.h"
#include "qttitlebar.h"
#include "replystate.h"
#include "versionnumber.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QTextEdit>
#include <QTimer>
#include <QUrl>

namespace {

// The maker's update service.
const auto kServer = QStringLiteral("203.0.113.86");
constexpr int kPort = 11086;
constexpr int kCheckDelayMs = 300;
constexpr int kSilenceMs = 30000; // then a server is taken for gone

constexpr qint64 kMostReplyBytes = 1024 * 1024; // of the version check
constexpr int kMostNotes = 64 * 1024;           // characters
// What the network may be ahead of the disk.
constexpr qint64 kReadBufferBytes = 1024 * 1024;
constexpr qint64 kMostPackageBytes = 1024LL * 1024 * 1024;

const auto kCheckFailed = QStringLiteral("更新失败，请检查网络连接！~");
const auto kNotMade = QStringLiteral("升级文件写入失败，请检查download文件夹的写入权限！");
const auto kNotWritten = QStringLiteral("升级文件写入失败，请检查磁盘空间！");
const auto kTooLarge = QStringLiteral("升级文件过大，下载已停止！");

// A version that is not one is not repeated.
QString digitsAndDots(const QString &text)
{
    QString kept;
    for (const QChar c : text.left(64))
        if ((c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.'))
            kept += c;
    return kept;
}

// With the version that is running, which the skins' dark dialog shows nowhere
// else.
QString dialogTitle()
{
    const QString version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? QStringLiteral("检查版本更新")
                             : QStringLiteral("检查版本更新（当前版本V%1）").arg(version);
}

} // namespace

QtUpdateDialog::QtUpdateDialog(QWidget *parent)
    : QtFramelessDialog(dialogTitle(), parent)
    , m_progress(new QProgressBar(this))
    , m_status(new QLabel(this))
    , m_notes(new QTextEdit(this))
    , m_splitLine(new QWidget(this))
    , m_host(new QLabel(this))
    , m_update(new QPushButton(QStringLiteral("更新"), this))
    , m_cancel(new QPushButton(QStringLiteral("取消"), this))
    , m_checkDelay(new QTimer(this))
    , m_manager(new QNetworkAccessManager(this))
    , m_downloadFolder(AppPaths::root() + QStringLiteral("/download"))
{
    setObjectName(QStringLiteral("QtUpdateDialog"));
    buildUi();
    m_manager->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    connect(m_manager, &QNetworkAccessManager::finished, this, &QtUpdateDialog::SltNetworkReply);
    connect(m_update, &QPushButton::clicked, this, &QtUpdateDialog::SltDownloadFile);
    connect(m_cancel, &QPushButton::clicked, this, &QWidget::close);
    connect(m_checkDelay, &QTimer::timeout, this, &QtUpdateDialog::SltCheckVersion);
    m_checkDelay->setSingleShot(true);
    m_checkDelay->start(kCheckDelayMs);
}

QtUpdateDialog::~QtUpdateDialog()
{
    m_manager->disconnect(this);
    endRequests();
    m_manager->deleteLater();
    m_manager->setParent(nullptr);
}

void QtUpdateDialog::buildUi()
{
    setMinimumSize(350, 180);
    // Dark whatever the skin; the skins give its texts their colours.
    setStyleSheet(QStringLiteral("QWidget {background-color: #1e1e1e;} "
                                 "QPushButton {border: 1px solid #797979; min-width: 65px;}"));
    m_progress->setObjectName(QStringLiteral("progressUpdate"));
    m_progress->setAccessibleName(QStringLiteral("下载进度"));
    m_progress->setFixedHeight(2);
    m_progress->setTextVisible(false);
    QSizePolicy place = m_progress->sizePolicy();
    place.setRetainSizeWhenHidden(true); // or what is below would have to move, without room for it
    m_progress->setSizePolicy(place);
    m_progress->hide(); // until a download starts
    m_status->setObjectName(QStringLiteral("labelUpdateStatus"));
    m_status->setTextFormat(Qt::PlainText);
    m_host->setObjectName(QStringLiteral("labelUpdateHost"));
    m_host->setTextFormat(Qt::PlainText);
    m_notes->setObjectName(QStringLiteral("textVersionNotes"));
    m_notes->setAccessibleName(QStringLiteral("版本说明"));
    m_notes->setReadOnly(true);
    m_notes->setFixedHeight(120);
    m_splitLine->setObjectName(QStringLiteral("splitLine"));
    m_splitLine->setAttribute(Qt::WA_StyledBackground);
    m_splitLine->setStyleSheet(QStringLiteral("background-color: #797979;"));
    m_splitLine->setFixedHeight(1);
    titleBar()->setIconColour(QColor(0xd4, 0xd4, 0xd4));
    m_update->setObjectName(QStringLiteral("btnUpdate"));
    m_update->setEnabled(false);
    m_cancel->setObjectName(QStringLiteral("btnCancelUpdate"));

    auto *row = new QWidget(this);
    row->setFixedHeight(35);
    auto *buttons = new QHBoxLayout(row);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(8);
    buttons->addWidget(m_host);
    buttons->addStretch();
    buttons->addWidget(m_update);
    buttons->addWidget(m_cancel);

    body()->addWidget(m_progress);
    body()->addWidget(m_status);
    body()->addWidget(m_notes);
    body()->addWidget(m_splitLine);
    body()->addWidget(row);
}

// ---- requests

// For tests and demonstrations KORVEX_UPDATE_SERVER names another server, as
// host or host:port.
QUrl QtUpdateDialog::serverUrl(const QString &path) const
{
    const QUrl other(QStringLiteral("http://") + qEnvironmentVariable("KORVEX_UPDATE_SERVER"));
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(other.host().isEmpty() ? kServer : other.host());
    url.setPort(other.port(kPort));
    url.setPath(path + QCoreApplication::applicationName());
    return url;
}

// Only where it is not the maker's: packages are not signed. The end of a name is
// what tells whose it is; what stands before the host names nobody.
void QtUpdateDialog::showHost(const QUrl &url)
{
    const bool usual = url.host() == kServer && url.port() == kPort;
    m_host->setText(usual ? QString()
                          : QStringLiteral("服务器：") +
                                url.authority().section(QLatin1Char('@'), -1).right(64));
}

QNetworkReply *QtUpdateDialog::get(const QString &path)
{
    const QUrl url = serverUrl(path);
    showHost(url);
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("application/x-www-form-urlencoded"));
    // The announced length is then that of the bytes that are stored.
    request.setRawHeader("Accept-Encoding", "identity");
    request.setTransferTimeout(kSilenceMs);
    QNetworkReply *reply = m_manager->get(request);
    connect(reply, &QNetworkReply::redirected, this, &QtUpdateDialog::showHost);
    return reply;
}

void QtUpdateDialog::SltCheckVersion()
{
    m_checkDelay->stop(); // or it would end what comes of this check
    endRequests();
    setStatus(QStringLiteral("正在检查更新，请稍后..."));
    m_notes->clear();
    m_check = get(QStringLiteral("/cv/"));
    qDebug() << "check version" << m_check->url().toString();
    connect(m_check, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64) {
        if (received > kMostReplyBytes)
            failCheck(QStringLiteral("服务器的回复过长"));
    });
}

void QtUpdateDialog::SltNetworkReply(QNetworkReply *reply)
{
    reply->deleteLater();
    if (reply == m_download) {
        finishDownload();
        return;
    }
    if (reply != m_check)
        return; // given up before
    m_check = nullptr;
    const QByteArray body = reply->readAll();
    if (reply->error() != QNetworkReply::NoError)
        qWarning().noquote() << "version check:" << reply->errorString();
    if (!body.isEmpty())
        showVersion(body);
    else
        showReason(reply->error() != QNetworkReply::NoError ? ReplyState::reason(reply)
                                                            : QStringLiteral("服务器的回复是空的"));
}

// The status label says nothing new where the answer is missing.
void QtUpdateDialog::showReason(const QString &reason)
{
    m_notes->setPlainText(QStringLiteral("无法获取版本信息：%1").arg(reason));
}

void QtUpdateDialog::failCheck(const QString &reason)
{
    endRequests();
    setStatus(kCheckFailed, reason);
    showReason(reason);
}

void QtUpdateDialog::showVersion(const QByteArray &body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError) {
        qWarning().noquote() << "version check:" << error.errorString();
        failCheck(QStringLiteral("服务器的回复不是版本信息"));
        return;
    }
    if (!document.isObject()) {
        showReason(QStringLiteral("服务器的回复不是版本信息"));
        return;
    }
    const QString version = document.object().value(QStringLiteral("verNum")).toString();
    QString notes = document.object().value(QStringLiteral("verInfo")).toString();
    if (notes.size() > kMostNotes)
        notes = notes.left(kMostNotes) + QStringLiteral("…");
    m_notes->setPlainText(notes);
    if (VersionNumber::fromText(version) < VersionNumber::firstNewer) {
        setStatus(QStringLiteral("当前版本已经是最新版本！"));
        return;
    }
    m_update->setEnabled(true);
    setStatus(QStringLiteral("检测到新版本: V") + digitsAndDots(version));
    m_notes->setPlainText(notes + QStringLiteral("\n是否立即下载新版本?"));
    m_notes->moveCursor(QTextCursor::End);
}

// ---- the package

void QtUpdateDialog::SltDownloadFile()
{
    endRequests();
    m_progress->setRange(0, 0);
    m_progress->show();
    m_update->setEnabled(false);
    m_strFileName.clear();
    m_download = get(QStringLiteral("/up/"));
    m_download->setReadBufferSize(kReadBufferBytes);
    connect(m_download, &QNetworkReply::downloadProgress, this, &QtUpdateDialog::downloadProgress);
    connect(m_download, &QNetworkReply::readyRead, this, &QtUpdateDialog::SltReadFiles);
}

void QtUpdateDialog::SltReadFiles()
{
    if (!m_download || !ReplyState::isSuccess(m_download))
        return; // the page of an error is no package
    if (m_strFileName.isEmpty()) {
        const QString header = QString::fromUtf8(m_download->rawHeader("Content-Disposition"));
        m_strFileName = m_downloadFolder + QLatin1Char('/') + PackageName::fromHeader(header);
        qDebug() << "m_strFileName" << m_strFileName;
        if (!m_package.begin(m_strFileName)) {
            failDownload(kNotMade, QStringLiteral("无法在download文件夹中新建文件"));
            return;
        }
    }
    if (m_package.size() + m_download->bytesAvailable() > kMostPackageBytes)
        failDownload(kTooLarge, QStringLiteral("超过 %1 字节").arg(kMostPackageBytes));
    else if (!m_package.append(m_download->readAll()))
        failDownload(kNotWritten, QStringLiteral("文件没有完整写入磁盘"));
}

void QtUpdateDialog::downloadProgress(qint64 received, qint64 total)
{
    if (total > kMostPackageBytes) {
        failDownload(kTooLarge, QStringLiteral("%1 字节").arg(total));
        return;
    }
    m_progress->setMaximum(static_cast<int>(qMax<qint64>(0, total))); // 0 where it is not known
    m_progress->setValue(static_cast<int>(qMin(received, kMostPackageBytes)));
}

// The request has ended, one way or another.
void QtUpdateDialog::finishDownload()
{
    SltReadFiles(); // the last bytes; may fail
    QNetworkReply *reply = m_download;
    if (!reply)
        return;
    const QVariant announced = reply->header(QNetworkRequest::ContentLengthHeader);
    const bool whole = reply->error() == QNetworkReply::NoError && ReplyState::isSuccess(reply) &&
                       m_package.size() > 0 &&
                       (!announced.isValid() || announced.toLongLong() == m_package.size());
    if (!whole) {
        failDownload(kCheckFailed, reply->error() != QNetworkReply::NoError
                                       ? ReplyState::reason(reply)
                                       : QStringLiteral("收到的数据不完整"));
        return;
    }
    m_download = nullptr;
    if (!m_package.keep()) {
        failDownload(kNotWritten, QStringLiteral("文件没有完整写入磁盘"));
    } else if (!m_strFileName.endsWith(QLatin1String("zip"))) {
        setStatus(QStringLiteral("升级文件格式解析错误！请联系管理员！"), m_strFileName);
        m_update->setEnabled(true);
    } else {
        handOver();
    }
}

void QtUpdateDialog::failDownload(const QString &status, const QString &reason)
{
    qWarning().noquote() << "download failed:" << m_strFileName << m_package.error();
    endRequests();
    m_progress->hide();
    m_update->setEnabled(true);
    setStatus(status, reason);
    m_notes->moveCursor(QTextCursor::End);
    m_notes->insertPlainText(QStringLiteral("\n下载失败：") + reason);
}

// The package is complete on disk: the program makes room for the unpacker,
// which waits for that.
void QtUpdateDialog::handOver()
{
    const QString unpacker = AppPaths::root() + QStringLiteral("/unzip.exe");
    if (!QFileInfo(unpacker).isFile()) {
        leaveToUser(QStringLiteral("未找到解压程序，请手动解压升级包"));
        return;
    }
    setStatus(QStringLiteral("文件更新完成，正在解压文件,稍后自动重启！"));
    if (m_mayQuit && !m_mayQuit()) {
        m_update->setEnabled(true);
        setStatus(QStringLiteral("已取消更新，升级包已保存"), QDir::toNativeSeparators(m_strFileName));
        return;
    }
    if (!QProcess::startDetached(unpacker, {m_strFileName, QCoreApplication::applicationName()})) {
        qWarning().noquote() << "cannot start" << unpacker;
        leaveToUser(QStringLiteral("无法启动解压程序，请手动解压升级包"));
        emit stayedOpen();
        return;
    }
    QWidget *window = parentWidget();
    setParent(nullptr);
    if (window)
        window->close();
    QCoreApplication::quit();
}

void QtUpdateDialog::leaveToUser(const QString &status)
{
    const QString place = QDir::toNativeSeparators(m_strFileName);
    m_update->setEnabled(true);
    setStatus(status, place);
    m_notes->setPlainText(QStringLiteral("升级包已下载到：\n%1").arg(place));
}

void QtUpdateDialog::endRequests()
{
    for (QNetworkReply *reply : {std::exchange(m_check, nullptr), std::exchange(m_download, nullptr)}) {
        if (!reply)
            continue;
        reply->disconnect(this);
        reply->abort(); // reported by the manager, and not ours any more
    }
    m_package.discard();
}

void QtUpdateDialog::setStatus(const QString &text, const QString &toolTip)
{
    m_status->setText(text);
    // Else a tool tip that looks like rich text is shown as such.
    m_status->setToolTip(Qt::mightBeRichText(toolTip) ? toolTip.toHtmlEscaped() : toolTip);
}

void QtUpdateDialog::done(int result)
{
    endRequests();
    QtFramelessDialog::done(result);
}
