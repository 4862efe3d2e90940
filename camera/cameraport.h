#pragma once

// The camera page's serial port: opens what the fields describe, and gathers
// received bytes until the line pauses. A line hands over a few bytes at a time,
// and an announcement that is cut is not waited for.

#include "linksession.h"

#include <QByteArray>
#include <QTimer>

class CameraLinkPanel;
class SerialLink;

class CameraPort : public QObject
{
    Q_OBJECT

public:
    CameraPort(CameraLinkPanel *fields, QObject *parent);

    LinkSession::Transport transport();
    // What is wrong with the fields; empty where nothing is.
    struct Fault
    {
        QString state; // for the line below the button; empty: left as it is
        QString notice;
    };
    Fault checkFields() const;

    // The list of ports has changed: a port that is gone closes the link.
    void setPorts(const QStringList &entries);

public slots:
    void gather(const QByteArray &bytes);
    void passOn(); // what is gathered so far

signals:
    void received(const QByteArray &bytes);
    void notify(const Notice &notice);

private:
    bool open();

    CameraLinkPanel *m_fields;
    SerialLink *m_link;
    QByteArray m_gathered;
    QTimer m_pause;
};
