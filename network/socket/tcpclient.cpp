#include "tcpclient.h"

TcpClient::TcpClient(QObject *parent)
    : LinkSocket(parent)
{
    connect(this, &QTcpSocket::readyRead, this, &TcpClient::SltReadMessage);
}

TcpClient::~TcpClient()
{
    if (isOpen())
        close();
}

bool TcpClient::adopt(qintptr descriptor)
{
    if (!setSocketDescriptor(descriptor, ConnectedState, ReadWrite))
        return false;
    prepare();
    return true;
}

void TcpClient::SltReadMessage()
{
    if (m_reading && bytesAvailable() > 0)
        emit signalReadMessage(m_name, readAll());
}
