#include "filesendpage.h"

#include "buttonrole.h"
#include "clickonce.h"
#include "placeholdertext.h"
#include "qtfiledialog.h"

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
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
    , m_files(new QListWidget(this))
    , m_text(new QPlainTextEdit(this))
    , m_protocol(new QComboBox(this))
    , m_length(new QComboBox(this))
    , m_open(new QPushButton(QStringLiteral("打开文件"), this))
    , m_send(new QPushButton(this))
    , m_clear(new QPushButton(QStringLiteral("清空文件"), this))
    , m_help(new QPushButton(QStringLiteral("协议详解"), this))
    , m_log(new QPushButton(QStringLiteral("传输日志"), this))
    , m_hint(new QLabel(QStringLiteral("单击“打开文件”选择需要发送的文件"), m_files))
    , m_progress(new QProgressBar(this))
    , m_amount(new QLabel(this))
{
    buildUi();
    updateButtons();
}

void FileSendPage::buildUi()
{
    setObjectName(QStringLiteral("widgetFileSend"));
    m_files->setObjectName(QStringLiteral("listFiles"));
    // A long name gives way to the size behind it.
    m_files->setTextElideMode(Qt::ElideMiddle);
    m_files->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_hint->setProperty("kind", QStringLiteral("hint"));
    m_hint->setWordWrap(true);
    m_hint->setAlignment(Qt::AlignCenter);
    auto *hintLayout = new QVBoxLayout(m_files);
    hintLayout->addWidget(m_hint);

    m_text->setObjectName(QStringLiteral("textTransfer"));
    m_text->setReadOnly(true);
    m_text->setMaximumBlockCount(kMaxLines);
    // One that comes up later would break the lines again, and Qt then no longer
    // follows the end.
    m_text->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_text->setPlaceholderText(QStringLiteral("传输过程将显示在这里"));
    PlaceholderText::keepFaint(m_text);

    m_progress->setObjectName(QStringLiteral("progressTransfer"));
    m_amount->setObjectName(QStringLiteral("labelTransferAmount"));
    // The bar must not move with every digit.
    m_amount->setMinimumWidth(m_amount->fontMetrics().horizontalAdvance(
        QStringLiteral("000.0 KB / 000.0 KB   000.0 KB/s   剩余 00:00")));
    m_log->setObjectName(QStringLiteral("btnTransferLog"));
    m_log->setToolTip(QStringLiteral("查看最近一次传输的协议日志：时间、数据包和应答"));
    m_progress->setFormat(QString());
    m_log->setEnabled(false); // until something is sent
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_progress, 1);
    row->addWidget(m_amount);
    row->addWidget(m_log);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(8, 8, 8, 8);
    grid->setSpacing(8);
    grid->addWidget(m_files, 0, 0);
    grid->addWidget(m_text, 0, 1);
    grid->addWidget(buildButtons(), 0, 2);
    grid->addLayout(row, 1, 0, 1, 3);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
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
    m_protocol->setToolTip(QStringLiteral("所有文件都按YModem批量协议（CRC-16）发送，此选项不影响传输"));
    m_length->setToolTip(QStringLiteral("数据包长度由文件剩余字节数自动决定：不超过128字节时用128字节包，"
                                        "否则用1024字节包；此选项不影响传输"));
    ClickOnce::install(m_send);

    auto *grid = new QGridLayout(buttons);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(8);
    m_files->setAccessibleName(QStringLiteral("需要发送的文件"));
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
    grid->addWidget(m_help, 3, 1);
    grid->setRowStretch(4, 1);
    return buttons;
}

QStringList FileSendPage::files() const
{
    QStringList names;
    for (int i = 0; i < m_files->count(); ++i)
        names.append(m_files->item(i)->data(Qt::UserRole).toString());
    return names;
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
    updateButtons();
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
    if (sending) {
        describeFiles();
        m_text->clear();
        m_progress->setValue(0);
        m_progress->setFormat(QStringLiteral("等待接收端…"));
        m_amount->clear();
        m_sizes.clear();
        m_log->setEnabled(true);
        m_recent.clear();
        m_clock.start();
    }
    updateButtons();
}

void FileSendPage::updateButtons()
{
    m_send->setText(m_sending ? QStringLiteral("停止发送") : QStringLiteral("发送文件"));
    const bool anyFile = m_files->count() > 0;
    m_send->setEnabled(m_sending || (m_possible && m_deviceOpen && anyFile));
    if (!m_possible)
        m_send->setToolTip(QStringLiteral("文件传输只能通过串口进行"));
    else if (!m_deviceOpen && !m_sending)
        m_send->setToolTip(QStringLiteral("请先打开串口"));
    else
        m_send->setToolTip(anyFile ? QString() : QStringLiteral("请先打开要发送的文件"));
    for (QWidget *widget : {static_cast<QWidget *>(m_open), static_cast<QWidget *>(m_clear),
                            static_cast<QWidget *>(m_protocol), static_cast<QWidget *>(m_length)})
        widget->setEnabled(!m_sending);
}

// ---- how it goes

void FileSendPage::setProgress(int percent, const QString &name)
{
    if (name != m_name)
        m_recent.clear(); // the next file
    m_name = name;
    // Of a long name both ends are shown, and the percentage in any case. A
    // name's own '%' must not begin one of the bar's placeholders.
    const QFontMetrics metrics = m_progress->fontMetrics();
    const int room = m_progress->width() - metrics.horizontalAdvance(QStringLiteral("    100%"));
    QString shown =
        metrics.elidedText(QFileInfo(name).fileName(), Qt::ElideMiddle, std::max(room, kLeastNameWidth));
    shown.replace(QLatin1Char('%'), QStringLiteral("%\u2060"));
    m_progress->setFormat(shown + QStringLiteral("  %p%"));
    m_progress->setValue(percent);
}

// The speed is that of the last seconds.
void FileSendPage::setAmount(qint64 sent, qint64 size)
{
    const qint64 now = m_clock.elapsed();
    m_recent.emplace_back(now, sent);
    while (m_recent.size() > 2 && now - m_recent.front().first > kSpeedOverMs)
        m_recent.pop_front();
    m_sizes =
        QStringLiteral("%1 / %2").arg(amountText(sent), amountText(size)); // also for an end that comes now
    if (sent < size && m_recent.size() > 1 && now - m_amountShownAt < kAmountPeriodMs)
        return;
    m_amountShownAt = now;
    const qint64 ms = now - m_recent.front().first;
    const qint64 bytes = sent - m_recent.front().second;
    QString text = m_sizes;
    if (ms > 0 && bytes > 0)
        text += QStringLiteral("   %1/s   剩余 %2")
                    .arg(amountText(bytes * 1000 / ms), timeText((size - sent) * ms / bytes / 1000));
    m_amount->setText(text);
}

void FileSendPage::setEnd(const QString &words, bool complete)
{
    m_amount->setText(m_sizes); // nothing remains to be waited for
    if (complete)
        m_progress->setValue(100);
    m_progress->setFormat(words + QStringLiteral("  %p%"));
}

void FileSendPage::appendText(const QString &text)
{
    m_text->appendPlainText(text);
}

// ---- the files

void FileSendPage::chooseFiles()
{
    const QStringList chosen =
        QtFileDialog::getOpenFileNames(this, QString(), QString(), QStringLiteral("所有文件(*.*)"));
    for (const QString &name : chosen) {
        if (files().contains(name))
            continue;
        auto *item = new QListWidgetItem(m_files);
        item->setData(Qt::UserRole, name);
        item->setToolTip(QDir::toNativeSeparators(name));
    }
    describeFiles();
    m_hint->setVisible(m_files->count() == 0);
    updateButtons();
}

// Files that were chosen earlier may have been rewritten since.
void FileSendPage::describeFiles()
{
    for (int i = 0; i < m_files->count(); ++i) {
        QListWidgetItem *item = m_files->item(i);
        const QFileInfo info(item->data(Qt::UserRole).toString());
        const QString size = info.exists() ? QStringLiteral("%1 字节").arg(QLocale::c().toString(info.size()))
                                           : QStringLiteral("文件不存在");
        item->setText(QStringLiteral("%1  (%2)").arg(info.fileName(), size));
    }
}

void FileSendPage::clearFiles()
{
    m_files->clear();
    m_hint->show();
    updateButtons();
}
