#include "qtsendboxwidget.h"

#include "apppaths.h"
#include "buttonrole.h"
#include "commandpage.h"
#include "filesendpage.h"
#include "multisendpage.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "qtpagebar.h"
#include "qttexteditinput.h"
#include "safefile.h"
#include "sendformatbar.h"
#include "settings.h"
#include "singlesendpage.h"

#include <QButtonGroup>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace {

constexpr int kDefaultAutoInterval = 1000;

QString confFile(QtSendBoxWidget::Owner owner, const char *serialName, const char *networkName)
{
    const char *name = owner == QtSendBoxWidget::Serial ? serialName : networkName;
    return AppPaths::confFolder() + QLatin1Char('/') + QLatin1String(name);
}

QString listFile(QtSendBoxWidget::Owner owner)
{
    return confFile(owner, "ser_multi_conf.txt", "net_multi_conf.txt");
}

QString textFile(QtSendBoxWidget::Owner owner)
{
    return confFile(owner, "ser_send_data.txt", "net_send_data.txt");
}

QString historyFile(QtSendBoxWidget::Owner owner)
{
    return confFile(owner, "ser_send_history.txt", "net_send_history.txt");
}

} // namespace

QtSendBoxWidget::QtSendBoxWidget(Owner owner, QWidget *parent)
    : QWidget(parent)
    , m_owner(owner)
    , m_pages(new QStackedWidget(this))
    , m_single(new SingleSendPage(textFile(owner), historyFile(owner), this))
    , m_multi(new MultiSendPage(listFile(owner), this))
    , m_file(new FileSendPage(this))
    , m_commands(new CommandPage(this))
{
    setObjectName(QStringLiteral("sendBox"));
    m_pages->addWidget(m_single);
    m_pages->addWidget(m_multi);
    m_pages->addWidget(m_file);
    m_pages->addWidget(m_commands);
    m_file->setSendingPossible(owner == Serial);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_pages);
    setCurrentPage(SinglePage);

    m_autoTimer.setInterval(kDefaultAutoInterval);
    m_autoTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_autoTimer, &QTimer::timeout, this, &QtSendBoxWidget::SltAutoSendData);

    m_bytesTimer.setSingleShot(true);
    m_bytesTimer.setInterval(0);
    connect(&m_bytesTimer, &QTimer::timeout, this, &QtSendBoxWidget::showBytes);
    connect(m_single->editor(), &QTextEdit::textChanged, this, [this] {
        m_reportedIgnored = 0;
        m_bytesTimer.start();
    });
    connect(m_single->formatBar(), &SendFormatBar::changed, &m_bytesTimer, QOverload<>::of(&QTimer::start));
    connect(m_single->formatBar(), &SendFormatBar::newlineWanted, this, &QtSendBoxWidget::newlineWanted);
    connect(m_single, &SingleSendPage::hexWanted, this, &QtSendBoxWidget::hexWanted);
    connect(m_single->editor(), &QtTextEditInput::showErrorHint, this, &QtSendBoxWidget::showErrorHint);
    connect(m_single->editor(), &QtTextEditInput::pasteRefused, this,
            [this] { QtMessageTip::showTip(tooLong(QStringLiteral("粘贴的内容超过20万字符"))); });
    connectPages();
}

void QtSendBoxWidget::connectPages()
{
    connect(m_single->sendButton(), &QPushButton::clicked, this, &QtSendBoxWidget::SltSingleSendPage);
    connect(m_single->loadButton(), &QPushButton::clicked, this, &QtSendBoxWidget::SltLoadDataFile);

    connect(m_multi->sendButtons(), QOverload<int>::of(&QButtonGroup::buttonClicked), this,
            &QtSendBoxWidget::SltMultiBtnClicked);
    for (const QLineEdit *edit : m_multi->edits())
        connect(edit, &QLineEdit::editingFinished, this, &QtSendBoxWidget::SltMultiEditFinished);
    connect(m_multi->clearButton(), &QPushButton::clicked, this, &QtSendBoxWidget::SltClearMultiEdit);
    connect(m_multi->pageBar(), &QtPageBar::signalChangePage, this, &QtSendBoxWidget::SltMultiChangePage);
    connect(m_single, &SingleSendPage::notify, this, &QtSendBoxWidget::notify);
    connect(m_commands, &CommandPage::notify, this, &QtSendBoxWidget::notify);
    connect(m_commands, &CommandPage::deviceNeeded, this,
            [this](bool *isThere) { *isThere = requireDevice(); });
    connect(m_multi, &MultiSendPage::notify, this, &QtSendBoxWidget::notify);

    connect(m_file->openButton(), &QPushButton::clicked, this, &QtSendBoxWidget::sltBorwserXYModemFile);
    connect(m_file->sendButton(), &QPushButton::clicked, this, &QtSendBoxWidget::sltSendXYModemFile);
    connect(m_file->clearButton(), &QPushButton::clicked, this, &QtSendBoxWidget::sltClearXYModemFile);
    connect(m_file->helpButton(), &QPushButton::clicked, this, &QtSendBoxWidget::sltOpenXYModemHelp);
}

void QtSendBoxWidget::SltClearMultiEdit()
{
    m_multi->clearPage();
}

void QtSendBoxWidget::SltMultiChangePage(int page)
{
    m_multi->turnTo(page);
}

void QtSendBoxWidget::SltMultiBtnClicked(int place)
{
    sendOnce(m_multi->rowToSend(place), rowFormat());
}

void QtSendBoxWidget::SltMultiEditFinished()
{
    if (const QObject *edit = sender())
        m_multi->storeRow(edit->property("id").toInt());
}

void QtSendBoxWidget::sltBorwserXYModemFile()
{
    m_file->chooseFiles();
}

// An empty list stops the transfer that is running.
void QtSendBoxWidget::sltSendXYModemFile()
{
    const QStringList files = m_file->isSending() ? QStringList() : m_file->files();
    if (files.isEmpty() && !m_file->isSending())
        QtMessageTip::showTip(QStringLiteral("请先打开需要发送的文件"));
    else
        emit signalSendFile(m_file->protocol(), m_file->packetLength(), files);
}

void QtSendBoxWidget::sltOpenXYModemHelp()
{
    QDesktopServices::openUrl(QUrl(QStringLiteral("https://www.orvane.example/help/ymodem")));
}

void QtSendBoxWidget::sltClearXYModemFile()
{
    m_file->clearFiles();
}

QtSendBoxWidget::~QtSendBoxWidget()
{
    // The pages save in their destructors, when nothing is there to show notices.
    m_single->blockSignals(true);
    m_multi->blockSignals(true);
    m_commands->blockSignals(true);
}

void QtSendBoxWidget::setDeviceOpen(bool open, const QString &reason)
{
    m_deviceOpen = open;
    m_closedReason = reason;
    ButtonRole::setPrimary(m_single->sendButton(), open);
    m_file->setDeviceOpen(open);
    m_commands->setDeviceOpen(open);
    if (!open)
        stopAutoSend();
}

bool QtSendBoxWidget::setAutoInterval(int milliseconds)
{
    if (milliseconds < minAutoInterval)
        return false;
    m_autoTimer.setInterval(milliseconds);
    return true;
}

// The box is as high as the page shown needs, not as the highest page.
void QtSendBoxWidget::setCurrentPage(int index)
{
    for (int i = 0; i < m_pages->count(); ++i)
        m_pages->widget(i)->setSizePolicy(QSizePolicy::Preferred,
                                          i == index ? QSizePolicy::Preferred : QSizePolicy::Ignored);
    m_pages->setCurrentIndex(index);
    if (index != SinglePage && isAutoSending()) {
        stopAutoSend();
        emit notify(Notice::information(QStringLiteral("已离开单项发送，自动发送已停止")));
    }
    if (index != CommandsPage && m_commands->runner()->isRunning())
        emit notify(Notice::information(QStringLiteral("命令序列仍在运行，可在“命令列表”中停止")));
}

void QtSendBoxWidget::setNewline(bool bCheck)
{
    m_format.addsNewLine = bCheck;
    m_single->formatBar()->setNewline(bCheck);
    m_bytesTimer.start();
}

void QtSendBoxWidget::setAutoSend(bool bCheck)
{
    m_reportedIgnored = 0;
    if (!bCheck) {
        m_autoTimer.stop();
    } else if (m_pages->currentIndex() != SinglePage) {
        stopAutoSend(); // what it sends would not be seen
        QtMessageTip::showTip(QStringLiteral("自动发送只用于单项发送"));
    } else if (requireDevice()) {
        m_autoTimer.start();
    }
}

void QtSendBoxWidget::setHexSend(bool bCheck)
{
    m_format.isHex = bCheck;
    m_reportedIgnored = 0;
    m_single->editor()->setHexMode(bCheck);
    m_bytesTimer.start();
}

bool QtSendBoxWidget::requireDevice()
{
    if (m_deviceOpen)
        return true;
    stopAutoSend();
    QtMessageTip::showTip(m_closedReason.isEmpty() ? QStringLiteral("请确认通信设备是否打开?")
                                                   : m_closedReason);
    return false;
}

void QtSendBoxWidget::stopAutoSend()
{
    m_autoTimer.stop();
    emit autoSendStopped();
}

void QtSendBoxWidget::SltSingleSendPage()
{
    sendOnce(m_single->text(), singleFormat());
}

// Rows share the line end with the single send, and have no checksum.
SendText QtSendBoxWidget::rowFormat() const
{
    SendText format = singleFormat();
    format.hasEscapes = false;
    format.checksum = {};
    return format;
}

SendText QtSendBoxWidget::singleFormat() const
{
    SendText format = m_format;
    m_single->formatBar()->writeTo(&format);
    format.codecIndex = Settings::instance().textCodec;
    return format;
}

void QtSendBoxWidget::showBytes()
{
    const SendText format = singleFormat();
    const bool isPlain = format.isPlain();
    if (m_single->formatBar()->isOpen() || !isPlain)
        m_single->formatBar()->showBytes(format.encode(m_single->text()), isPlain);
    else
        m_single->formatBar()->showBytes({}, true);
}

// At the user's request, which an empty text answers with a tip.
void QtSendBoxWidget::sendOnce(const QString &text, const SendText &format)
{
    m_reportedIgnored = 0;
    if (!requireDevice())
        return;
    if (text.trimmed().isEmpty() && (format.isHex || (text.isEmpty() && !format.addsNewLine)))
        QtMessageTip::showTip(QStringLiteral("请输入需要发送的数据"));
    else
        sendText(text, format);
}

void QtSendBoxWidget::SltAutoSendData()
{
    if (requireDevice())
        sendText(m_single->text(), singleFormat());
}

void QtSendBoxWidget::sendText(const QString &text, const SendText &format)
{
    const SendText::Encoded encoded = format.encode(text);
    reportIgnored(encoded);
    if (encoded.bytes.isEmpty())
        return;
    if (m_pages->currentWidget() == m_single)
        m_single->keepSent(format.isHex);
    emit signalSendData(encoded.bytes);
}

// Once for each text, not at every period.
void QtSendBoxWidget::reportIgnored(const SendText::Encoded &encoded)
{
    if (!encoded.wrongEscape.isEmpty()) {
        stopAutoSend(); // it would be refused again at each period
        emit notify(Notice::error(QStringLiteral("转义“%1”无效，未发送！").arg(encoded.wrongEscape)));
    } else if (encoded.ignored > 0 && encoded.ignored != m_reportedIgnored) {
        const QString text = encoded.hasNoByte()
                                 ? QStringLiteral("没有完整的十六进制字节，未发送！")
                                 : QStringLiteral("十六进制数据不完整或包含无效字符，末尾%1个字符未发送！")
                                       .arg(encoded.ignored);
        emit notify(Notice::error(text));
    }
    m_reportedIgnored = encoded.ignored;
}

QString QtSendBoxWidget::tooLong(const QString &what) const
{
    return what + (offersFiles() ? QStringLiteral("，请使用文件发送！") : QStringLiteral("，无法发送！"));
}

void QtSendBoxWidget::SltLoadDataFile()
{
    const QString name = QtFileDialog::getOpenFileName(this, QString(), QString(),
                                                       QStringLiteral("文本文件(*.txt);;所有文件(*.*)"));
    if (name.isEmpty())
        return;
    const int maxBytes = m_format.maxFileBytes();
    QByteArray content;
    QString error;
    if (QFileInfo(name).size() > maxBytes) {
        emit notify(Notice::error(tooLong(QStringLiteral("文件超过%1字节").arg(maxBytes))));
    } else if (!SafeFile::read(name, maxBytes, &content, &error) || content.isNull()) {
        emit notify(Notice::error(QStringLiteral("文件加载失败!")));
        emit notify(Notice::error(error.isEmpty() ? QStringLiteral("文件不存在") : error));
    } else {
        m_single->replaceText(m_format.ofFile(content));
    }
}

bool QtSendBoxWidget::saveBeforeExit()
{
    QString error = m_single->saveChanges();
    const QString rowsError = m_multi->storeShownPage();
    const QString commandsError = m_commands->storeAll();
    if (error.isEmpty())
        error = rowsError.isEmpty() ? commandsError : rowsError;
    return error.isEmpty() ||
           QtMessageBox::question(this, QStringLiteral("询问"),
                                  QStringLiteral("发送区的内容无法保存：%1。是否仍然退出？").arg(error)) == 1;
}
