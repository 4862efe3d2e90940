#pragma once

// Polls once a second which serial ports are present and reports when their
// number has changed. A port that gives way to another within one period goes
// unnoticed: the comparison is by count.

#include <QObject>
#include <QStringList>
#include <QTimer>

class QSerialPorCheck : public QObject
{
    Q_OBJECT

public:
    explicit QSerialPorCheck(QObject *parent = nullptr);
    ~QSerialPorCheck() override;

    void start();

public slots:
    void SltCheckSerialport(); // one look

signals:
    // The ports present, each as name, space and description.
    void signalSerialChanged(QStringList serials);

private:
    QTimer m_timer;
    QStringList m_known;
};
