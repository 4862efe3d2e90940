// The status bar: which notice is shown when, that a long one never widens the
// window, and the counters.

#include "shell/window/noticelist.h"
#include "shell/window/qtcountlabel.h"
#include "shell/window/qtstatusbar.h"
#include "shell/window/statuslabel.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

class StatusBarTest : public QObject
{
    Q_OBJECT

private slots:
    void errorIsHeld()
    {
        QtStatusBar bar;
        auto *label = bar.findChild<StatusLabel *>();
        bar.showSystemNotify(QStringLiteral("一"), 0);
        bar.showSystemNotify(QStringLiteral("二"), 0);
        QCOMPARE(label->fullText(), QStringLiteral("二"));
        QCOMPARE(label->property("kind").toString(), QStringLiteral("info"));

        bar.showSystemNotify(QStringLiteral("出错"), 255);
        bar.showSystemNotify(QStringLiteral("三"), 0);
        bar.showSystemNotify(QStringLiteral("四"), 0);
        QCOMPARE(label->fullText(), QStringLiteral("出错"));
        QCOMPARE(label->property("kind").toString(), QStringLiteral("error"));
        bar.sltEndErrorHold();
        QCOMPARE(label->fullText(), QStringLiteral("四"));
        QCOMPARE(label->property("kind").toString(), QStringLiteral("info"));
        QVERIFY(!label->isError());

        // With nothing waiting the error stays until the next notice.
        bar.showSystemNotify(QStringLiteral("又错"), 255);
        bar.sltEndErrorHold();
        QCOMPARE(label->fullText(), QStringLiteral("又错"));
        bar.showSystemNotify(QStringLiteral("五"), 0);
        QCOMPARE(label->fullText(), QStringLiteral("五"));
    }

    void newErrorReplacesAtOnce()
    {
        QtStatusBar bar;
        auto *label = bar.findChild<StatusLabel *>();
        bar.showSystemNotify(QStringLiteral("错一"), 255);
        bar.showSystemNotify(QStringLiteral("信息"), 0);
        bar.showSystemNotify(QStringLiteral("错二"), 255);
        QCOMPARE(label->fullText(), QStringLiteral("错二"));
        // The information is older than the error on display: not shown again.
        bar.sltEndErrorHold();
        QCOMPARE(label->fullText(), QStringLiteral("错二"));
    }

    void recentNotices()
    {
        QtStatusBar bar;
        bar.resize(600, 32);
        bar.show();
        for (int i = 0; i < NoticeLog::remembered + 20; ++i)
            bar.showSystemNotify(QStringLiteral("第%1条").arg(i), i % 10 == 0 ? 255 : 0);
        QCOMPARE(bar.notices().recent().size(), NoticeLog::remembered);
        QCOMPARE(bar.notices().recent().first().text, QStringLiteral("第20条"));

        QTest::mouseClick(bar.findChild<StatusLabel *>(), Qt::LeftButton);
        auto *list = bar.findChild<NoticeList *>();
        QVERIFY(list && list->isVisible());
        const auto *view = list->findChild<QListWidget *>();
        QCOMPARE(view->count(), NoticeLog::remembered);
        QVERIFY(view->item(0)->text().endsWith(QStringLiteral("第119条")));
        QVERIFY(view->item(9)->text().contains(QStringLiteral("[错误] 第110条")));
        QTest::keyClick(list, Qt::Key_Escape);
        QVERIFY(!list->isVisible());
    }

    void longNoticeIsCut()
    {
        QWidget window;
        auto *layout = new QHBoxLayout(&window);
        auto *bar = new QtStatusBar;
        layout->addWidget(bar);
        window.resize(500, 60);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const int least = window.minimumSizeHint().width();
        const QString text = QStringLiteral("<b>很长的\n提示</b>").repeated(200);
        bar->showSystemNotify(text, 255);
        QApplication::processEvents();
        QCOMPARE(window.width(), 500);
        QCOMPARE(window.minimumSizeHint().width(), least);
        auto *label = bar->findChild<StatusLabel *>();
        QVERIFY(!label->fullText().contains(QLatin1Char('\n')));
        QVERIFY(label->geometry().right() < bar->findChild<QPushButton *>()->geometry().left());
        // Markup in a name from outside is text in the tool tip, too.
        QVERIFY(label->toolTip().contains(QStringLiteral("&lt;b&gt;")));
        QVERIFY(label->toolTip().size() < 1000); // or it is higher than the screen
    }

    void counts()
    {
        QtStatusBar bar;
        auto *sent = bar.findChild<QtCountLabel *>(QStringLiteral("sentCount"));
        auto *received = bar.findChild<QtCountLabel *>(QStringLiteral("receivedCount"));
        bar.showCounts({QStringLiteral("12"), QStringLiteral("34567")});
        QCOMPARE(sent->text(), QStringLiteral("发送字节数: 12"));
        QCOMPARE(received->text(), QStringLiteral("接收字节数: 34567"));
        bar.showCounts({});
        QVERIFY(sent->text().isEmpty());
        QVERIFY(received->text().isEmpty());

        QSignalSpy spy(&bar, &QtStatusBar::clearCount);
        auto *button = bar.findChild<QPushButton *>(QStringLiteral("btnClearCount"));
        QCOMPARE(button->text(), QStringLiteral("清空计数"));
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(spy.count(), 1);
    }
};

QTEST_MAIN(StatusBarTest)
#include "test_statusbar.moc"
