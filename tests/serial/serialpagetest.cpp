#include "serialpagetest.h"

#include "apppaths.h"
#include "dialoganswers.h"
#include "korvexresources.h"
#include "settings.h"

#include <QComboBox>

void SerialPageTest::initTestCase()
{
    initKorvexResources();
}

void SerialPageTest::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    AppPaths::setRoot(m_root->path());
    AppPaths::makeFolders();
    Settings::instance() = Settings();
    m_board = std::make_unique<PtyPeer>();
    m_page = std::make_unique<SerialportWidget>();
    m_page->resize(900, 500);
    m_page->show();
    m_notices = std::make_unique<QSignalSpy>(m_page.get(), &SerialportWidget::signalNotify);
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

void SerialPageTest::chooseFile(const QString &name)
{
    DialogAnswers::instance().fileNames = [name](auto, auto, auto, auto) {
        return name.isEmpty() ? QStringList() : QStringList(name);
    };
}

QByteArray SerialPageTest::contentOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}
