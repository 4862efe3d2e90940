// What SerialportWidget is made of.

#include "filesendpage.h"
#include "filetransfer.h"
#include "formpanel.h"
#include "qextserialport.h"
#include "qtterminalwidget.h"
#include "quietreader.h"
#include "receivestore.h"
#include "recvoptions.h"
#include "sendoptions.h"
#include "serialconfigpanel.h"
#include "serialportwidget.h"
#include "workarea.h"

#include <QPushButton>

void SerialportWidget::buildUi()
{
    m_area = new WorkArea(QtSendBoxWidget::Serial, QStringLiteral("serial"),
                          QStringLiteral("选择端口并打开串口后，接收到的数据将显示在这里"),
                          QStringLiteral("串口已打开，正在等待数据"), this);
    m_terminal = m_area->terminal();
    m_received = m_area->received();
    m_sendBox = m_area->sendBox();
    m_state = m_area->state();

    m_panel = new FormPanel(this);
    m_panel->setObjectName(QStringLiteral("configPanel"));
    m_config = new SerialConfigPanel(m_panel);
    m_recvOptions = new RecvOptions(m_panel);
    m_sendOptions = new SendOptions(m_sendBox, m_panel);
    m_panel->addWidget(m_config);
    m_panel->addWidget(m_recvOptions);
    m_panel->addWidget(m_sendOptions);
    m_area->placeBeside(m_panel, m_sendOptions->lastField());
    setPageKeys(m_config->openButton(), m_area->foldButton());
}

void SerialportWidget::connectParts()
{
    connect(m_port.get(), &QextSerialPort::readyRead, this, &SerialportWidget::sltInterruptDetection);
    connect(m_port.get(), &QextSerialPort::closed, this, &SerialportWidget::portClosed);
    connect(m_port.get(), &QextSerialPort::writeFailed, this, &SerialportWidget::writeFailed);
    connect(m_reader, &QuietReader::quiet, this, &SerialportWidget::SltRecvFromSerialport);
    connect(m_reader, &QuietReader::pieceRead, m_received, &ReceiveStore::add);
    connect(m_reader, &QuietReader::packetRead, this, &SerialportWidget::handleReceived);
    connect(m_reader, &QuietReader::gathering, m_area, &WorkArea::showGathering);
    // Queued: the report comes from within the port's own reading.
    connect(m_port.get(), &QextSerialPort::hungUp, this, &SerialportWidget::portVanished,
            Qt::QueuedConnection);
    connect(m_area, &WorkArea::countsDue, this, &SerialportWidget::showCounts);

    connect(m_config, &SerialConfigPanel::openClicked, this, &SerialportWidget::SltOpenSerialport);
    connect(m_recvOptions, &RecvOptions::clearClicked, this, &SerialportWidget::clearRecv);
    connect(m_recvOptions, &RecvOptions::saveClicked, this, &SerialportWidget::SltSaveDataToFile);
    connect(m_recvOptions, &RecvOptions::delayChanged, this, &SerialportWidget::SltDelayChanged);
    connect(m_sendOptions, &SendOptions::pageChosen, this, &SerialportWidget::SltChangeSendPage);
    connect(m_sendOptions, &SendOptions::intervalEdited, this, &SerialportWidget::SltChangeAutoInterval);
    connect(m_area->foldButton(), &QPushButton::clicked, this, &SerialportWidget::SltBtnFoldClicked);
    connect(m_sendBox, &QtSendBoxWidget::signalSendData, this, &SerialportWidget::SltWriteDataToSerialport);
    connect(m_sendBox, &QtSendBoxWidget::showErrorHint, this, &SerialportWidget::sltShowErrorHint);
    connect(m_area, &WorkArea::notify, this, &SerialportWidget::notify);
    connect(m_area, &WorkArea::clearRequested, this, &SerialportWidget::clearRecv);
    connect(m_sendBox, &QtSendBoxWidget::signalSendFile, this, &SerialportWidget::sltSendXYmodemFile);
    connect(m_sendBox->filePage()->logButton(), &QPushButton::clicked, this,
            [this] { m_transfer->showLog(this); });
    connect(m_transfer, &FileTransfer::handedOver, this, &SerialportWidget::givePortAway);
    connect(m_transfer, &FileTransfer::readDue, m_reader, &QuietReader::stop);
    connect(m_transfer, &FileTransfer::returned, this, &SerialportWidget::takePortBack);
    connect(m_transfer, &FileTransfer::notify, this, &SerialportWidget::notify);
}
