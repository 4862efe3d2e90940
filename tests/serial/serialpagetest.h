#pragma once

// A serial page with a pseudo-terminal as its board: what the tests of the
// page share.

#include "serial/qtterminalwidget.h"
#include "serial/serialportwidget.h"
#include "tests/support/ptypeer.h"

#include <QAbstractButton>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

class SerialPageTest : public QObject
{
    Q_OBJECT

protected slots:
    void initTestCase();
    void init();
    void cleanup();

protected:
    template <class Widget> Widget *child(const char *name) const
    {
        return m_page->findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *button) { child<QAbstractButton>(button)->click(); }
    void openPort(const QString &text = QString());
    QString shown() { return child<QtTerminalWidget>("recvBrowser")->toPlainText(); }
    qint64 received() const { return m_page->counts().at(1).toLongLong(); }
    QString lastNotice() const
    {
        return m_notices->isEmpty() ? QString() : m_notices->last().at(0).toString();
    }
    int lastKind() const { return m_notices->isEmpty() ? -1 : m_notices->last().at(1).toInt(); }
    void receive(const QByteArray &bytes);
    void chooseFile(const QString &name);
    static QByteArray contentOf(const QString &name);

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<PtyPeer> m_board;
    std::unique_ptr<SerialportWidget> m_page;
    std::unique_ptr<QSignalSpy> m_notices;
};
