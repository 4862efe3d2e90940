#pragma once

#include "ymodemreceiver.h"

#include <QStringList>

// The board around the boot loader's receiver, in memory.
struct MemoryBoard : Boardsim::YmodemReceiver::Board
{
    void send(const QByteArray &bytes) override { sent += bytes; }
    void setTimer(int ms) override { timer = ms; }
    bool beginFile(const QString &fileName) override
    {
        name = fileName;
        content.clear();
        return true;
    }
    bool storeBytes(const QByteArray &bytes) override
    {
        content += bytes;
        return true;
    }
    void endFile(bool complete) override
    {
        if (complete)
            kept += {name, content};
        else
            ++dropped;
    }
    void report(const QString &event) override { events += event; }

    QByteArray sent, content;
    QString name;
    QStringList events;
    QList<QPair<QString, QByteArray>> kept; // names and contents
    int dropped = 0;
    int timer = -1;
};
