#pragma once

// A PID page with a pseudo-terminal as its board, and frames written out: what
// the tests of the page share.

#include "pageparts.h"
#include "piddebugwidget.h"
#include "pidplot.h"
#include "ptypeer.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>
#include <memory>

inline const auto kIdle = QStringLiteral("启动");
inline const auto kRunning = QStringLiteral("停止");

inline QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

// A report; its sum is wrong, which does not matter.
inline QByteArray report(int channel, int code, const char *payload = "")
{
    const QByteArray bytes = hex(payload);
    return "ORVN" + QByteArray(1, char(channel)) + QByteArray(1, char(bytes.size() + 11)) +
           QByteArray(3, '\0') + char(code) + bytes + '\0';
}

inline const QByteArray kStart1 = hex("4f52564e010b0000001263");
inline const QByteArray kStop1 = hex("4f52564e010b0000001364");
inline const QByteArray kStop3 = hex("4f52564e030b0000001366");

class PidPageTest : public QObject, protected PageParts<PidDebugWidget>
{
    Q_OBJECT

protected slots:
    void initTestCase();
    void init();
    void cleanup();

protected:
    void type(const char *field, const QString &text)
    {
        child<QLineEdit>(field)->selectAll();
        QTest::keyClicks(child<QLineEdit>(field), text);
    }
    QString text(const char *field) const { return child<QLineEdit>(field)->text(); }
    QString startText() const { return child<QPushButton>("btnPidStart")->text(); }
    void select(int channel) { child<QComboBox>("comboPidChannel")->setCurrentIndex(channel - 1); }
    void open();
    bool isOpen() const { return child<QPushButton>("btnPidOpen")->text() == QStringLiteral("关闭串口"); }
    void receive(const QByteArray &bytes) { m_page->SltRecvFromSerialport(bytes); }
    int points(int graph) const { return plot()->graph(graph)->dataCount(); }
    PidPlot *plot() const { return child<PidPlot>("pidPlot"); }
    void answer(const QString &fileName);

    std::unique_ptr<PtyPeer> m_board;
    QStringList m_warnings;
};
