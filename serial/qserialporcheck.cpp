#include "serial/qserialporcheck.h"

QSerialPorCheck::QSerialPorCheck(QObject *parent)
    : QObject(parent)
{
}

void QSerialPorCheck::start() {}
