#pragma once

// A serial page with a pseudo-terminal as its board: what the tests of the
// page share.

#include "answers.h"
#include "pageparts.h"
#include "ptypeer.h"
#include "qtterminalwidget.h"
#include "serialportwidget.h"
#include "testfiles.h"

#include <QAbstractButton>
#include <QtTest>
#include <memory>

class SerialPageTest : public QObject, protected PageParts<SerialportWidget>
{
    Q_OBJECT

protected slots:
    void init();
    void cleanup();

protected:
    void openPort(const QString &text = QString());
    QString shown() { return child<QtTerminalWidget>("recvBrowser")->toPlainText(); }
    qint64 received() const { return m_page->counts().at(1).toLongLong(); }
    void receive(const QByteArray &bytes);
    QString lastError() const { return lastKind() == 255 ? lastNotice() : QString(); }
    QString noticeBefore() const { return m_notices->at(m_notices->count() - 2).at(0).toString(); }
    bool isPortShownOpen() const
    {
        return child<QAbstractButton>("btnOpen")->text() == QStringLiteral("关闭串口");
    }
    bool isEnabled(const char *name) const { return child<QWidget>(name)->isEnabled(); }

    std::unique_ptr<PtyPeer> m_board;
};
