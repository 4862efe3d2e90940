#pragma once

// A network page with boards in processes of their own: what the tests of the
// page share.

#include "boardprocess.h"
#include "networktoolwidget.h"
#include "pageparts.h"
#include "qtterminalwidget.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

// For waits on what has to come sooner or later, however slow the machine.
#define WAIT_FOR(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 30000)
#define WAIT_EQUAL(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, 30000)

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

    // Rows "IPv4" and "IPv6" with the loopback "address" of each.
    static void addFamilies();
    // Options of a board that talks at once.
    static QStringList to(quint16 port, const QString &address, const QStringList &more);
};
