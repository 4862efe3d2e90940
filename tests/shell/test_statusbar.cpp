// The status bar: which notice is shown and for how long, and that a long one
// never widens the window.

#include "noticelist.h"
#include "qtstatusbar.h"
#include "qtwidgetbase.h"
#include "statuslabel.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTextDocument>
#include <QTimer>

namespace {

constexpr int information = 0;
constexpr int error = 255;

// Lets the running timer with the interval time out now.
bool timeOut(QtStatusBar &bar, int interval)
{
    for (QTimer *timer : bar.findChildren<QTimer *>())
        if (timer->isActive() && timer->interval() == interval) {
            timer->start(0);
            return true;
        }
    return false;
}

} // namespace

class StatusBarTest : public QObject
{
    Q_OBJECT

private slots:
    void holdsAnErrorForAWhile()
    {
        QtStatusBar bar;
        auto *label = bar.findChild<StatusLabel *>();
        bar.showSystemNotify("一", error);
        bar.showSystemNotify("信息", information);
        bar.showSystemNotify("二", error); // newer than the pending information, which is dropped
        QCOMPARE(label->fullText(), QString("二"));
        bar.sltEndErrorHold();
        QCOMPARE(label->fullText(), QString("二"));
        bar.showSystemNotify("三", error);
        bar.showSystemNotify("四", information);
        bar.showSystemNotify("五", information);
        QCOMPARE(label->fullText(), QString("三"));
        QCOMPARE(label->property("kind").toString(), QString("error"));
        QVERIFY(timeOut(bar, QtStatusBar::errorHoldMs));
        QTRY_COMPARE(label->fullText(), QString("五"));
        QCOMPARE(label->property("kind").toString(), QString("info"));
        QVERIFY(!timeOut(bar, QtStatusBar::errorHoldMs)); // it would end the next notice
    }

    void endsNotices()
    {
        QtStatusBar bar;
        auto *label = bar.findChild<StatusLabel *>();
        bar.showSystemNotify("信息", information);
        QVERIFY(timeOut(bar, QtStatusBar::informationShownMs));
        QTRY_COMPARE(label->fullText(), QString());
        bar.showSystemNotify("错误", error);
        QVERIFY(timeOut(bar, QtStatusBar::errorShownMs));
        QTRY_COMPARE(label->fullText(), QString());
        QVERIFY(!label->isError());
        bar.showSystemNotify("信息", information); // the hold ended with the error
        QCOMPARE(label->fullText(), QString("信息"));
    }

    // A page's notice ends when the user turns to another page; an error is
    // shown for the time of its hold at least.
    void endsWithItsPage()
    {
        QtStatusBar bar;
        auto *label = bar.findChild<StatusLabel *>();
        QtWidgetBase first, second;
        connect(&first, &QtWidgetBase::signalNotify, &bar, &QtStatusBar::showSystemNotify);
        emit first.signalNotify("信息", information);
        bar.showPage(&first);
        QCOMPARE(label->fullText(), QString("信息"));
        bar.showPage(&second);
        QCOMPARE(label->fullText(), QString());
        emit first.signalNotify("错误", error);
        bar.showPage(&second);
        QCOMPARE(label->fullText(), QString("错误"));
        bar.sltEndErrorHold();
        QCOMPARE(label->fullText(), QString());
        bar.showSystemNotify("设置", information); // of no page
        bar.showPage(&first);
        QCOMPARE(label->fullText(), QString("设置"));
    }

    void listsRecentNotices()
    {
        QtStatusBar bar;
        bar.show();
        bar.resize(500, 32);
        for (int i = 0; i < NoticeLog::maxRecent + 20; ++i)
            bar.showSystemNotify(QString(i, 'x') + QString("第%1条").arg(i),
                                 i % 10 == 0 ? error : information);
        QTest::mouseClick(bar.findChild<StatusLabel *>(), Qt::LeftButton);
        auto *list = bar.findChild<NoticeList *>();
        QVERIFY(list && list->isVisible() && list->width() < 500);
        const auto *view = list->findChild<QListWidget *>();
        QCOMPARE(view->count(), NoticeLog::maxRecent);
        QVERIFY(view->item(0)->text().endsWith("第119条"));
        QVERIFY(view->item(9)->text().contains("[错误] xxx"));
        list->setErrorColor(Qt::red);
        QCOMPARE(view->item(9)->foreground().color(), QColor(Qt::red));
        QVERIFY(view->item(8)->foreground().color() != QColor(Qt::red));
        QTest::keyClick(list, Qt::Key_Escape);
        QVERIFY(!list->isVisible());
    }

    void cutsLongNotices()
    {
        QWidget window;
        auto *bar = new QtStatusBar;
        (new QHBoxLayout(&window))->addWidget(bar);
        window.resize(500, 60);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window, 30000));
        const int minWidth = window.minimumSizeHint().width();
        bar->showSystemNotify(QString("<b>很长的\n提示</b>").repeated(200), error);
        QCOMPARE(window.minimumSizeHint().width(), minWidth);
        auto *label = bar->findChild<StatusLabel *>();
        QVERIFY(!label->fullText().contains('\n'));
        QVERIFY(label->geometry().right() < bar->findChild<QPushButton *>()->geometry().left());
        // Markup in a name from outside is text in the tool tip, too.
        QVERIFY(label->toolTip().contains("&lt;b&gt;"));
        bar->showSystemNotify(QString(5000, 'x'), error);
        QTextDocument tip; // as a tool tip lays it out
        tip.setHtml(label->toolTip());
        tip.setTextWidth(400);
        QVERIFY(tip.size().height() < 300 && tip.idealWidth() <= 400);
    }
};

QTEST_MAIN(StatusBarTest)
#include "test_statusbar.moc"
