#include "network/tcpclient.h"

TcpClient::TcpClient(QObject *parent)
    : QTcpSocket(parent)
{
    setReadBufferSize(readBufferBytes);
    connect(this, &QTcpSocket::readyRead, this, &TcpClient::SltReadMessage);
}

TcpClient::~TcpClient()
{
    if (isOpen())
        close();
}

void TcpClient::SltReadMessage()
{
    if (m_reading && bytesAvailable() > 0)
        emit signalReadMessage(m_name, readAll());
}
