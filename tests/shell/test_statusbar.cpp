// The status bar: which notice is shown when, that a long one never widens the
// window, and the counters.

#include "noticelist.h"
#include "qtcountlabel.h"
#include "qtstatusbar.h"
#include "qtwidgetbase.h"
#include "statuslabel.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>
#include <QTimer>

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

        // With nothing waiting the error stays for a while, though not for good.
        bar.showSystemNotify(QStringLiteral("又错"), 255);
        bar.sltEndErrorHold();
        QCOMPARE(label->fullText(), QStringLiteral("又错"));
        bar.showSystemNotify(QStringLiteral("五"), 0);
        QCOMPARE(label->fullText(), QStringLiteral("五"));
        const auto running = [&bar](int interval) {
            const auto timers = bar.findChildren<QTimer *>();
            return std::any_of(timers.begin(), timers.end(), [interval](const QTimer *timer) {
                return timer->isActive() && timer->interval() == interval;
            });
        };
        QVERIFY(!running(QtStatusBar::errorHoldMs)); // it would end the next notice
        QVERIFY(running(QtStatusBar::informationShownMs));
        bar.showSystemNotify(QStringLiteral("再错"), 255);
        QVERIFY(running(QtStatusBar::errorShownMs));
        bar.sltEndNotice();
        QCOMPARE(label->fullText(), QString());
        QVERIFY(!label->isError());
        bar.showSystemNotify(QStringLiteral("六"), 0); // no hold is left
        QCOMPARE(label->fullText(), QStringLiteral("六"));
    }

    // What a page posted ends when the user turns to another one; an error is
    // shown for the time of its hold at least.
    void endsWithItsPage()
    {
        class Page : public QtWidgetBase
        {
        public:
            void post(QtStatusBar &bar, int kind)
            {
                connect(this, &QWidget::windowTitleChanged, &bar,
                        [&bar, kind](const QString &text) { bar.showSystemNotify(text, kind); });
                setWindowTitle(QStringLiteral("提示%1").arg(kind));
                disconnect(&bar);
            }
        } first, second;
        QtStatusBar bar;
        auto *label = bar.findChild<StatusLabel *>();
        first.post(bar, 0);
        bar.showPage(&first);
        QCOMPARE(label->fullText(), QStringLiteral("提示0"));
        bar.showPage(&second);
        QCOMPARE(label->fullText(), QString());
        first.post(bar, 255);
        bar.showPage(&second);
        QCOMPARE(label->fullText(), QStringLiteral("提示255"));
        bar.sltEndErrorHold();
        QCOMPARE(label->fullText(), QString());
        bar.showSystemNotify(QStringLiteral("设置"), 0); // of no page
        bar.showPage(&first);
        QCOMPARE(label->fullText(), QStringLiteral("设置"));
        QVERIFY(label->isEnabled());
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
        list->setErrorColor(Qt::red);
        QCOMPARE(view->item(9)->foreground().color(), QColor(Qt::red));
        QVERIFY(view->item(8)->foreground().color() != QColor(Qt::red));
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
        QVERIFY(QTest::qWaitForWindowExposed(&window, 30000));
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
        bar->showSystemNotify(QString(5000, QLatin1Char('x')), 255);
        QTextDocument tip; // as a tool tip lays it out
        tip.setHtml(label->toolTip());
        tip.setTextWidth(400);
        QVERIFY2(tip.size().height() < 300 && tip.idealWidth() <= 400,
                 qPrintable(QStringLiteral("%1 x %2").arg(tip.idealWidth()).arg(tip.size().height())));
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
