#include "qtupdatedialog.h"

#include "apppaths.h"
#include "qttitlebar.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
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

// For tests and demonstrations KORVEX_UPDATE_SERVER names another server, as
// host or host:port.
QUrl serverUrl()
{
    const QUrl other(QStringLiteral("http://") + qEnvironmentVariable("KORVEX_UPDATE_SERVER"));
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(other.host().isEmpty() ? kServer : other.host());
    url.setPort(other.port(kPort));
    return url;
}

QString failureText(UpdateClient::Download outcome)
{
    switch (outcome) {
    case UpdateClient::Download::NotCreated:
        return QStringLiteral("升级文件写入失败，请检查download文件夹的写入权限！");
    case UpdateClient::Download::NotWritten:
        return QStringLiteral("升级文件写入失败，请检查磁盘空间！");
    case UpdateClient::Download::TooLarge:
        return QStringLiteral("升级文件过大，下载已停止！");
    default:
        return QStringLiteral("更新失败，请检查网络连接！~");
    }
}

// The server's text is shown only as far as it can be a version.
QString digitsAndDots(const QString &text)
{
    QString kept;
    for (const QChar c : text.left(64))
        if ((c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.'))
            kept += c;
    return kept;
}

// With the version of this program, which the dialog shows nowhere else.
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
    , m_client(new UpdateClient(serverUrl(), AppPaths::root() + QStringLiteral("/download"), this))
{
    setObjectName(QStringLiteral("QtUpdateDialog"));
    buildUi();
    connect(m_client, &UpdateClient::contacting, this, &QtUpdateDialog::showHost);
    connect(m_client, &UpdateClient::checked, this, &QtUpdateDialog::showCheck);
    connect(m_client, &UpdateClient::progress, this, &QtUpdateDialog::downloadProgress);
    connect(m_client, &UpdateClient::downloaded, this, &QtUpdateDialog::showDownload);
    connect(m_update, &QPushButton::clicked, this, &QtUpdateDialog::SltDownloadFile);
    connect(m_cancel, &QPushButton::clicked, this, &QWidget::close);
    connect(m_checkDelay, &QTimer::timeout, this, &QtUpdateDialog::SltCheckVersion);
    m_checkDelay->setSingleShot(true);
    m_checkDelay->start(kCheckDelayMs);
}

QtUpdateDialog::~QtUpdateDialog()
{
    delete m_client; // before the widgets that it reports to
}

void QtUpdateDialog::buildUi()
{
    setMinimumSize(350, 180);
    // Dark in every skin; the skins set the colors of its texts.
    setStyleSheet(QStringLiteral("QWidget {background-color: #1e1e1e;} "
                                 "QPushButton {border: 1px solid #797979; min-width: 65px;}"));
    m_progress->setObjectName(QStringLiteral("progressUpdate"));
    m_progress->setAccessibleName(QStringLiteral("下载进度"));
    m_progress->setFixedHeight(2);
    m_progress->setTextVisible(false);
    QSizePolicy place = m_progress->sizePolicy();
    place.setRetainSizeWhenHidden(true); // or what is below would have to move, without space for it
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
    titleBar()->setIconColor(QColor(0xd4, 0xd4, 0xd4));
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

// Only where it is not the maker's: packages are not signed. The end of a name
// tells whose it is; a user name before the host is left out, since it could look
// like another host.
void QtUpdateDialog::showHost(const QUrl &url)
{
    const bool usual = url.host() == kServer && url.port() == kPort;
    m_host->setText(usual ? QString()
                          : QStringLiteral("服务器：") +
                                url.authority().section(QLatin1Char('@'), -1).right(64));
}

// ---- the version

void QtUpdateDialog::SltCheckVersion()
{
    m_checkDelay->stop(); // or it would end this check
    setStatus(QStringLiteral("正在检查更新，请稍后..."));
    m_notes->clear();
    m_client->check();
}

void QtUpdateDialog::SltNetworkReply(QNetworkReply *reply)
{
    m_client->finish(reply);
}

void QtUpdateDialog::showCheck(UpdateClient::Check outcome, const QString &reason)
{
    const UpdateClient::Version &version = m_client->version();
    switch (outcome) {
    case UpdateClient::Check::BadReply:
        setStatus(QStringLiteral("更新失败，请检查网络连接！~"), reason);
        [[fallthrough]];
    case UpdateClient::Check::NoReply: // the status label still says that it is checking
        m_notes->setPlainText(QStringLiteral("无法获取版本信息：%1").arg(reason));
        break;
    case UpdateClient::Check::Latest:
        m_notes->setPlainText(version.notes);
        setStatus(QStringLiteral("当前版本已经是最新版本！"));
        break;
    case UpdateClient::Check::Newer:
        m_update->setEnabled(true);
        setStatus(QStringLiteral("检测到新版本: V") + digitsAndDots(version.number));
        m_notes->setPlainText(version.notes + QStringLiteral("\n是否立即下载新版本?"));
        m_notes->moveCursor(QTextCursor::End);
        break;
    }
}

// ---- the package

void QtUpdateDialog::SltDownloadFile()
{
    m_progress->setRange(0, 0);
    m_progress->show();
    m_update->setEnabled(false);
    m_client->download();
}

void QtUpdateDialog::SltReadFiles()
{
    m_client->readPackage();
}

void QtUpdateDialog::downloadProgress(qint64 received, qint64 total)
{
    m_progress->setMaximum(static_cast<int>(qMax<qint64>(0, total))); // 0 where it is not known
    m_progress->setValue(static_cast<int>(received));
}

void QtUpdateDialog::showDownload(UpdateClient::Download outcome, const QString &reason)
{
    if (outcome == UpdateClient::Download::Complete) {
        startUnpacker();
        return;
    }
    m_progress->hide();
    m_update->setEnabled(true);
    setStatus(failureText(outcome), reason);
    m_notes->moveCursor(QTextCursor::End);
    m_notes->insertPlainText(QStringLiteral("\n下载失败：") + reason);
}

// The package is complete on disk. The program quits, and the unpacker waits for
// that.
void QtUpdateDialog::startUnpacker()
{
    const QString package = m_client->packagePath();
    if (!package.endsWith(QLatin1String("zip"))) {
        setStatus(QStringLiteral("升级文件格式解析错误！请联系管理员！"), package);
        m_update->setEnabled(true);
        return;
    }
    const QString unpacker = AppPaths::root() + QStringLiteral("/unzip.exe");
    if (!QFileInfo(unpacker).isFile()) {
        leaveToUser(QStringLiteral("未找到解压程序，请手动解压升级包"));
        return;
    }
    setStatus(QStringLiteral("文件更新完成，正在解压文件,稍后自动重启！"));
    if (m_mayQuit && !m_mayQuit()) {
        m_update->setEnabled(true);
        setStatus(QStringLiteral("已取消更新，升级包已保存"), QDir::toNativeSeparators(package));
        return;
    }
    if (!QProcess::startDetached(unpacker, {package, QCoreApplication::applicationName()})) {
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
    const QString place = QDir::toNativeSeparators(m_client->packagePath());
    m_update->setEnabled(true);
    setStatus(status, place);
    m_notes->setPlainText(QStringLiteral("升级包已下载到：\n%1").arg(place));
}

void QtUpdateDialog::setStatus(const QString &text, const QString &toolTip)
{
    m_status->setText(text);
    // A tool tip that looks like rich text would be shown as such.
    m_status->setToolTip(Qt::mightBeRichText(toolTip) ? toolTip.toHtmlEscaped() : toolTip);
}

void QtUpdateDialog::done(int result)
{
    m_client->cancel();
    QtFramelessDialog::done(result);
}
