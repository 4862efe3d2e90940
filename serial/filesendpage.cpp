#include "serial/filesendpage.h"

#include "shell/base/qtfiledialog.h"

#include <QComboBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>

FileSendPage::FileSendPage(QWidget *parent)
    : QWidget(parent)
    , m_files(new QListWidget(this))
    , m_protocol(new QComboBox(this))
    , m_length(new QComboBox(this))
    , m_open(new QPushButton(QStringLiteral("打开文件"), this))
    , m_send(new QPushButton(QStringLiteral("发送文件"), this))
    , m_clear(new QPushButton(QStringLiteral("清空文件"), this))
    , m_help(new QPushButton(QStringLiteral("协议详解"), this))
    , m_hint(new QLabel(QStringLiteral("点击“打开文件”选择需要发送的文件"), m_files))
    , m_progress(new QProgressBar(this))
{
    buildUi();
    setSendingPossible(false);
}

void FileSendPage::buildUi()
{
    setObjectName(QStringLiteral("widgetFileSend"));
    m_files->setObjectName(QStringLiteral("listFiles"));
    m_protocol->setObjectName(QStringLiteral("comboProtocol"));
    m_length->setObjectName(QStringLiteral("comboPacketLength"));
    m_open->setObjectName(QStringLiteral("btnOpenFiles"));
    m_send->setObjectName(QStringLiteral("btnSendFiles"));
    m_clear->setObjectName(QStringLiteral("btnClearFiles"));
    m_help->setObjectName(QStringLiteral("btnProtocolHelp"));
    m_hint->setProperty("kind", QStringLiteral("hint"));
    m_protocol->addItems({QStringLiteral("XModem"), QStringLiteral("YModem")});
    m_protocol->setCurrentIndex(1);
    m_length->addItem(QStringLiteral("128字节"), 128);
    m_length->addItem(QStringLiteral("1024字节"), 1024);
    m_length->setCurrentIndex(1);
    m_send->setProperty("primary", true);

    auto *hintLayout = new QVBoxLayout(m_files);
    hintLayout->addWidget(m_hint, 0, Qt::AlignCenter);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(8, 8, 8, 8);
    grid->setSpacing(8);
    grid->addWidget(m_files, 0, 0, 5, 1);
    grid->addWidget(new QLabel(QStringLiteral("传输协议:"), this), 0, 1);
    grid->addWidget(m_protocol, 0, 2);
    grid->addWidget(new QLabel(QStringLiteral("发送长度:"), this), 1, 1);
    grid->addWidget(m_length, 1, 2);
    grid->addWidget(m_open, 2, 1);
    grid->addWidget(m_clear, 2, 2);
    grid->addWidget(m_send, 3, 1);
    grid->addWidget(m_help, 3, 2);
    grid->addWidget(m_progress, 5, 0, 1, 3);
    m_progress->hide(); // until something is sent
    grid->setRowStretch(4, 1);
    grid->setColumnStretch(0, 1);
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

void FileSendPage::setSendingPossible(bool possible)
{
    m_send->setEnabled(possible);
    m_send->setToolTip(possible ? QString() : QStringLiteral("文件传输功能将在后续版本提供"));
}

void FileSendPage::setProgress(int percent, const QString &name)
{
    m_progress->show();
    m_progress->setValue(percent);
    m_progress->setFormat(QFileInfo(name).fileName() + QStringLiteral("  %p%"));
}

void FileSendPage::chooseFiles()
{
    const QStringList chosen =
        QtFileDialog::getOpenFileNames(this, QString(), QString(), QStringLiteral("所有文件(*.*)"));
    for (const QString &name : chosen) {
        const QFileInfo info(name);
        auto *item = new QListWidgetItem(
            QStringLiteral("%1  (%2 字节)").arg(info.fileName(), QLocale::c().toString(info.size())),
            m_files);
        item->setData(Qt::UserRole, name);
        item->setToolTip(name);
    }
    m_hint->setVisible(m_files->count() == 0);
}

void FileSendPage::clearFiles()
{
    m_files->clear();
    m_hint->show();
}
