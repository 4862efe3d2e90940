#include "filesendpage.h"

#include "buttonrole.h"
#include "clickonce.h"
#include "filelist.h"
#include "placeholdertext.h"
#include "qtfiledialog.h"
#include "settings.h"
#include "transferoptions.h"

#include <QComboBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>

#include <algorithm>

namespace {

constexpr int kMaxLines = 2000;      // of the transfer's text
constexpr int kAmountPeriodMs = 250; // numbers that change faster cannot be read
constexpr qint64 kSpeedOverMs = 3000;
constexpr int kLeastNameWidth = 120; // in the progress bar, before it has its place

QString amountText(qint64 bytes)
{
    if (bytes < 1024)
        return QStringLiteral("%1 B").arg(bytes);
    if (bytes < 1024 * 1024)
        return QStringLiteral("%1 KB").arg(static_cast<double>(bytes) / 1024.0, 0, 'f', 1);
    return QStringLiteral("%1 MB").arg(static_cast<double>(bytes) / (1024.0 * 1024.0), 0, 'f', 2);
}

QString timeText(qint64 seconds)
{
    const QString text = QStringLiteral("%1:%2")
                             .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
                             .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return seconds < 3600 ? text : QStringLiteral("%1:").arg(seconds / 3600) + text;
}

} // namespace

FileSendPage::FileSendPage(QWidget *parent)
    : QWidget(parent)
    , m_files(new FileList(this))
    , m_text(new QPlainTextEdit(this))
    , m_protocol(new QComboBox(this))
    , m_length(new QComboBox(this))
    , m_open(new QPushButton(QStringLiteral("打开文件"), this))
    , m_send(new QPushButton(this))
    , m_clear(new QPushButton(QStringLiteral("清空文件"), this))
    , m_help(new QPushButton(QStringLiteral("协议详解"), this))
    , m_log(new QPushButton(QStringLiteral("传输日志"), this))
    , m_receive(new QPushButton(this))
    , m_more(new QPushButton(QStringLiteral("更多"), this))
    , m_options(new TransferOptions(this))
    , m_progress(new QProgressBar(this))
    , m_amount(new QLabel(this))
{
    buildUi();
    updateProtocol();
    updateButtons();
    connect(m_files, &FileList::filesChanged, this, &FileSendPage::updateButtons);
    connect(m_protocol, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &FileSendPage::updateProtocol);
    connect(m_options, &TransferOptions::rawChanged, this, &FileSendPage::updateButtons);
    connect(m_more, &QPushButton::clicked, this, [this] { showOptions(m_options->isHidden()); });
}

void FileSendPage::buildUi()
{
    setObjectName(QStringLiteral("widgetFileSend"));
    m_text->setObjectName(QStringLiteral("textTransfer"));
    m_text->setReadOnly(true);
    m_text->setMaximumBlockCount(kMaxLines);
    // One that comes up later would break the lines again, and Qt then no longer
    // follows the end.
    m_text->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_text->setPlaceholderText(QStringLiteral("传输过程将显示在这里"));
    PlaceholderText::keepFaint(m_text);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(8, 8, 8, 8);
    grid->setSpacing(8);
    grid->addWidget(m_files, 0, 0);
    grid->addWidget(m_text, 0, 1);
    grid->addWidget(buildButtons(), 0, 2);
    grid->addLayout(buildProgress(), 1, 0, 1, 3);
    grid->addWidget(m_options, 2, 0, 1, 3);
    m_options->hide();
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
}

QLayout *FileSendPage::buildProgress()
{
    m_progress->setObjectName(QStringLiteral("progressTransfer"));
    m_amount->setObjectName(QStringLiteral("labelTransferAmount"));
    // The bar must not move with every digit.
    m_amount->setMinimumWidth(m_amount->fontMetrics().horizontalAdvance(
        QStringLiteral("000.0 KB / 000.0 KB   000.0 KB/s   剩余 00:00")));
    m_progress->setFormat(QString());
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_progress, 1);
    row->addWidget(m_amount);
    return row;
}

QWidget *FileSendPage::buildButtons()
{
    auto *buttons = new QWidget(this);
    m_protocol->setObjectName(QStringLiteral("comboProtocol"));
    m_length->setObjectName(QStringLiteral("comboPacketLength"));
    m_open->setObjectName(QStringLiteral("btnOpenFiles"));
    m_send->setObjectName(QStringLiteral("btnSendFiles"));
    m_clear->setObjectName(QStringLiteral("btnClearFiles"));
    m_help->setObjectName(QStringLiteral("btnProtocolHelp"));
    m_protocol->addItems({QStringLiteral("XModem"), QStringLiteral("YModem")});
    m_protocol->setCurrentIndex(1);
    m_length->addItem(QStringLiteral("128字节"), 128);
    m_length->addItem(QStringLiteral("1024字节"), 1024);
    m_length->setCurrentIndex(1);
    m_receive->setObjectName(QStringLiteral("btnReceiveFiles"));
    m_more->setObjectName(QStringLiteral("btnTransferOptions"));
    m_more->setToolTip(QStringLiteral("快速、原始发送、接收文件夹和上限"));
    m_log->setObjectName(QStringLiteral("btnTransferLog"));
    m_log->setToolTip(QStringLiteral("查看最近一次传输的协议日志：时间、数据包和应答"));
    m_log->setEnabled(false); // until something is sent or received
    ClickOnce::install(m_send);
    ClickOnce::install(m_receive);

    auto *grid = new QGridLayout(buttons);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(8);
    m_text->setAccessibleName(QStringLiteral("传输过程"));
    m_protocol->setAccessibleName(QStringLiteral("传输协议"));
    m_length->setAccessibleName(QStringLiteral("发送长度"));
    grid->addWidget(new QLabel(QStringLiteral("传输协议:"), buttons), 0, 0);
    grid->addWidget(m_protocol, 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("发送长度:"), buttons), 1, 0);
    grid->addWidget(m_length, 1, 1);
    grid->addWidget(m_open, 2, 0);
    grid->addWidget(m_clear, 2, 1);
    grid->addWidget(m_send, 3, 0);
    grid->addWidget(m_receive, 3, 1);
    grid->addWidget(m_help, 0, 2);
    grid->addWidget(m_log, 1, 2);
    grid->addWidget(m_more, 2, 2);
    grid->setRowStretch(4, 1);
    return buttons;
}

QStringList FileSendPage::files() const
{
    return m_files->files();
}

QString FileSendPage::selectedFile() const
{
    return m_files->selectedFile();
}

int FileSendPage::protocol() const
{
    return m_protocol->currentIndex();
}

int FileSendPage::packetLength() const
{
    return m_length->currentData().toInt();
}

// ---- what can be done now

void FileSendPage::setSendingPossible(bool possible)
{
    m_possible = possible;
    m_receive->setVisible(possible);
    m_more->setVisible(possible);
    if (possible) {
        auto &choices = Settings::instance().fileTransfer;
        m_memory.add(m_protocol, &choices.protocol);
        m_memory.add(m_length, &choices.packetLength);
        m_options->remember();
        m_options->setVisible(choices.showsOptions);
    }
    updateButtons();
}

void FileSendPage::load()
{
    m_memory.load();
    m_options->load();
    m_options->setVisible(m_possible && Settings::instance().fileTransfer.showsOptions);
}

void FileSendPage::showOptions(bool shown)
{
    m_options->setVisible(shown);
    Settings::instance().fileTransfer.showsOptions.change(shown);
}

// What the fields mean.
void FileSendPage::updateProtocol()
{
    const bool isXmodem = protocol() == 0;
    m_protocol->setToolTip(isXmodem ? QStringLiteral("一次一个文件，不传送文件名和大小；校验由接收端选择")
                                    : QStringLiteral("批量传送文件，带文件名和大小，CRC-16校验"));
    m_length->setToolTip(
        isXmodem ? QStringLiteral("1024字节即XModem-1K，最后不足1024字节的部分用128字节包")
                 : QStringLiteral("1024字节：剩余不超过128字节时用128字节包；128字节：全部用128字节包"));
}

void FileSendPage::setDeviceOpen(bool open)
{
    m_deviceOpen = open;
    ButtonRole::setPrimary(m_send, open || m_sending);
    updateButtons();
}

void FileSendPage::setSending(bool sending)
{
    m_sending = sending;
    if (sending)
        beginTransfer(QStringLiteral("等待接收端…"));
    updateButtons();
}

void FileSendPage::setReceiving(bool receiving)
{
    m_receiving = receiving;
    if (receiving)
        beginTransfer(QStringLiteral("等待发送端…"));
    updateButtons();
}

void FileSendPage::beginTransfer(const QString &waiting)
{
    m_files->describe();
    m_text->clear();
    m_progress->setValue(0);
    m_progress->setFormat(waiting);
    m_name.clear();
    m_amount->clear();
    m_sizes.clear();
    m_log->setEnabled(true);
    m_recent.clear();
    m_clock.start();
    m_amountShownAt = 0;
}

void FileSendPage::updateButtons()
{
    const bool isBusy = m_sending || m_receiving;
    m_send->setText(m_sending ? QStringLiteral("停止发送") : QStringLiteral("发送文件"));
    m_receive->setText(m_receiving ? QStringLiteral("停止接收") : QStringLiteral("接收文件"));
    const bool anyFile = m_files->count() > 0;
    const bool mayBegin = m_possible && m_deviceOpen && !isBusy;
    m_send->setEnabled(m_sending || (mayBegin && anyFile));
    m_receive->setEnabled(m_receiving || mayBegin);
    ButtonRole::setPrimary(m_receive, m_receiving);
    if (!m_possible)
        m_send->setToolTip(QStringLiteral("文件传输只能通过串口进行"));
    else if (!m_deviceOpen && !isBusy)
        m_send->setToolTip(QStringLiteral("请先打开串口"));
    else
        m_send->setToolTip(anyFile ? QString() : QStringLiteral("请先打开要发送的文件"));
    m_receive->setToolTip(mayBegin || isBusy ? QStringLiteral("按所选协议接收文件，保存到“更多”中的文件夹")
                                             : QStringLiteral("请先打开串口"));
    for (QWidget *widget : {static_cast<QWidget *>(m_open), static_cast<QWidget *>(m_clear)})
        widget->setEnabled(!isBusy);
    m_protocol->setEnabled(!isBusy); // receiving has one also while sending has none
    m_length->setEnabled(!isBusy && !m_options->isRaw());
    m_files->setLocked(isBusy);
    m_options->setLocked(isBusy);
}

// ---- how it goes

void FileSendPage::setProgress(int percent, const QString &name)
{
    if (name == m_name && percent == m_percent)
        return; // most packets of a large file
    if (name != m_name)
        m_recent.clear(); // the next file
    m_name = name;
    m_percent = percent;
    // Of a long name both ends are shown, and the percentage in any case. A
    // name's own '%' must not begin one of the bar's placeholders.
    const QFontMetrics metrics = m_progress->fontMetrics();
    const int room = m_progress->width() - metrics.horizontalAdvance(QStringLiteral("    100%"));
    QString shown =
        metrics.elidedText(QFileInfo(name).fileName(), Qt::ElideMiddle, std::max(room, kLeastNameWidth));
    shown.replace(QLatin1Char('%'), QStringLiteral("%\u2060"));
    m_progress->setFormat(percent < 0 ? shown : shown + QStringLiteral("  %p%"));
    m_progress->setValue(std::max(percent, 0));
}

// The speed is that of the last seconds.
void FileSendPage::setAmount(qint64 sent, qint64 size)
{
    const qint64 now = m_clock.elapsed();
    m_recent.emplace_back(now, sent);
    while (m_recent.size() > 2 && now - m_recent.front().first > kSpeedOverMs)
        m_recent.pop_front();
    // Also for an end that comes now.
    m_sizes = size < 0 ? amountText(sent) : QStringLiteral("%1 / %2").arg(amountText(sent), amountText(size));
    if (sent != size && m_recent.size() > 1 && now - m_amountShownAt < kAmountPeriodMs)
        return;
    m_amountShownAt = now;
    const qint64 ms = now - m_recent.front().first;
    const qint64 bytes = sent - m_recent.front().second;
    QString text = m_sizes;
    if (ms > 0 && bytes > 0)
        text += QStringLiteral("   %1/s").arg(amountText(bytes * 1000 / ms));
    if (ms > 0 && bytes > 0 && size >= sent)
        text += QStringLiteral("   剩余 %1").arg(timeText((size - sent) * ms / bytes / 1000));
    m_amount->setText(text);
}

void FileSendPage::setEnd(const QString &words, bool complete)
{
    m_amount->setText(m_sizes); // nothing remains to be waited for
    if (complete)
        m_progress->setValue(100);
    m_progress->setFormat(m_percent < 0 && !complete ? words : words + QStringLiteral("  %p%"));
}

void FileSendPage::appendText(const QString &text)
{
    m_text->appendPlainText(text);
}

// ---- the files

void FileSendPage::chooseFiles()
{
    m_files->addFiles(
        QtFileDialog::getOpenFileNames(this, QString(), QString(), QStringLiteral("所有文件(*.*)")));
}

void FileSendPage::clearFiles()
{
    m_files->clearFiles();
}
