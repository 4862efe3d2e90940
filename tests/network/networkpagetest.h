#pragma once

// A network page with boards in processes of their own: what the tests of the
// page share.

#include "answers.h"
#include "boardprocess.h"
#include "networktoolwidget.h"
#include "pageparts.h"
#include "qtterminalwidget.h"
#include "waitfor.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

class NetworkPageTest : public QObject, protected PageParts<NetworkToolWidget>
{
    Q_OBJECT

protected slots:
    void init();
    void cleanup();

protected:
    enum Type { Server, Client, Udp };

    void choose(Type type) { child<QComboBox>("comboNetType")->setCurrentIndex(type); }
    void write(const char *field, const QString &text) { child<QLineEdit>(field)->setText(text); }
    // Chooses the type and opens it; on a port of the system's choice unless one is given.
    quint16 open(Type type, quint16 port = 0);
    void send(const QString &text);
    QString caption() const { return child<QAbstractButton>("btnOpen")->text(); }
    bool fieldsAreEnabled(bool enabled) const;
    QString stateText() const { return child<QLabel>("labelLinkState")->text(); }
    QString shown() { return child<QtTerminalWidget>("recvBrowser")->toPlainText(); }
    qint64 sent() const { return m_page->counts().at(0).toLongLong(); }
    qint64 received() const { return m_page->counts().at(1).toLongLong(); }
    bool wasTold(const QString &text, int kind) const;
    QStringList clients() const;

    // Options of a board that talks at once.
    static QStringList to(quint16 port, const QStringList &more = {}, const QString &address = "127.0.0.1");
};
