#include "serialpagetest.h"

#include "korvexresources.h"

#include <QComboBox>

void SerialPageTest::init()
{
    initKorvexResources();
    m_board = std::make_unique<PtyPeer>();
    makePage(900, 500);
}

void SerialPageTest::cleanup()
{
    DialogAnswers::instance() = DialogAnswers();
    m_page.reset();
    m_board.reset();
}

void SerialPageTest::openPort(const QString &text)
{
    child<QComboBox>("comboPort")->setEditText(text.isEmpty() ? m_board->device() : text);
    click("btnOpen");
}

void SerialPageTest::receive(const QByteArray &bytes)
{
    const qint64 before = received();
    QVERIFY(m_board->write(bytes));
    QTRY_COMPARE_WITH_TIMEOUT(received(), before + bytes.size(), 20000);
}
