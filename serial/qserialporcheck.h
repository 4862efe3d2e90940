#pragma once

#include <QObject>
#include <QStringList>

class QSerialPorCheck : public QObject
{
    Q_OBJECT

public:
    explicit QSerialPorCheck(QObject *parent = nullptr);
    void start();

signals:
    void signalSerialChanged(QStringList serials);
};
