#include "pidpagetest.h"

#include "apppaths.h"
#include "dialoganswers.h"
#include "korvexresources.h"

void PidPageTest::initTestCase()
{
    initKorvexResources();
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void PidPageTest::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    AppPaths::setRoot(m_root->path());
    m_board = std::make_unique<PtyPeer>();
    m_page = std::make_unique<PidDebugWidget>();
    m_page->resize(1200, 460);
    m_page->show();
    QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    m_notices = std::make_unique<QSignalSpy>(m_page.get(), &PidDebugWidget::signalNotify);
    m_warnings.clear();
    DialogAnswers::instance().message = [this](const QString &title, const QString &text, int) {
        m_warnings << title + QLatin1Char('|') + text;
        return 1;
    };
}

void PidPageTest::cleanup()
{
    m_page.reset();
    m_board.reset();
    DialogAnswers::instance() = DialogAnswers();
}

void PidPageTest::open()
{
    child<QComboBox>("comboPidPort")->setEditText(m_board->device());
    click("btnPidOpen");
    QCOMPARE(lastNotice(), QStringLiteral("串口[%1]打开成功!").arg(m_board->device()));
    QVERIFY(isOpen());
}

void PidPageTest::answer(const QString &fileName)
{
    DialogAnswers::instance().fileNames = [fileName](auto, auto, auto, auto) {
        return fileName.isEmpty() ? QStringList() : QStringList(fileName);
    };
}
