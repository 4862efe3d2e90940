// The status bar: which notice is shown and for how long, and that a long one
// never widens the window.

#include "noticelist.h"
#include "qtstatusbar.h"
#include "qtwidgetbase.h"
#include "statuslabel.h"

#include <QtTest>
#include <QtWidgets>

constexpr int information = 0;
constexpr int error = 255;

class StatusBarTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bar = std::make_unique<QtStatusBar>();
        m_bar->setStyleSheet("QtStatusBar {background-color: #112233;}"
                             "StatusLabel[kind=\"error\"] {color: #ff0000; background-color: #445566;}");
        m_label = m_bar->findChild<StatusLabel *>();
        m_bar->resize(800, 32);
    }

    void holdsAnErrorForAWhile()
    {
        m_bar->showSystemNotify("一", error);
        m_bar->showSystemNotify("信息", information);
        m_bar->showSystemNotify("二", error); // newer than the pending information, which is dropped
        QCOMPARE(m_label->fullText(), QString("二"));
        m_bar->sltEndErrorHold();
        QCOMPARE(m_label->fullText(), QString("二"));
        QVERIFY(!timeOut(QtStatusBar::errorHoldMs));
        m_bar->showSystemNotify("三", error);
        m_bar->showSystemNotify("四", information);
        m_bar->showSystemNotify("五", information);
        QCOMPARE(m_label->fullText(), QString("三"));
        QCOMPARE(m_label->palette().color(QPalette::WindowText), QColor(Qt::red));
        const QImage label = m_label->grab().toImage();
        QCOMPARE(label.pixelColor(1, 1), QColor("#445566"));
        int icon = 0; // in the middle of the left end
        int text = 0;
        for (int y = 2 * label.height() / 5; y < 3 * label.height() / 5; ++y)
            for (int x = 0; x < 100; ++x)
                (x < 24 ? icon : text) += label.pixelColor(x, y).red() > 200;
        QVERIFY(icon > 5 && text > 5);
        QVERIFY(timeOut(QtStatusBar::errorHoldMs));
        QTRY_COMPARE(m_label->accessibleName(), QString("五"));
        QVERIFY(m_label->palette().color(QPalette::WindowText) != QColor(Qt::red));
        QVERIFY(!timeOut(QtStatusBar::errorHoldMs)); // it would end the next notice
    }

    void endsNotices()
    {
        m_bar->showSystemNotify("信息", information);
        QVERIFY(timeOut(QtStatusBar::informationShownMs));
        QTRY_COMPARE(m_label->fullText(), QString());
        m_bar->showSystemNotify("错误", error);
        QVERIFY(timeOut(QtStatusBar::errorShownMs));
        m_bar->showSystemNotify("信息", information); // does not make it stay for longer
        QTRY_COMPARE(m_label->fullText(), QString());
        QVERIFY(!m_label->isError() && m_label->isEnabled()); // still opens the list
        QCOMPARE(m_label->accessibleName() + '|' + m_label->toolTip(),
                 QString("最近的提示|单击查看最近的提示"));
        m_bar->showSystemNotify("信息", information); // the hold ended with the error
        QCOMPARE(m_label->fullText(), QString("信息"));
        m_bar->show();
        QTest::mouseClick(m_label, Qt::LeftButton);
        QVERIFY(m_bar->findChild<NoticeList *>()->height() < 200); // no higher than its lines
    }

    // A page's notice ends when the user turns to another page; an error is
    // shown for the time of its hold at least.
    void endsWithItsPage()
    {
        QtWidgetBase first, second;
        connect(&first, &QtWidgetBase::signalNotify, m_bar.get(), &QtStatusBar::showSystemNotify);
        emit first.signalNotify("错误", error); // before a page is shown
        m_bar->sltEndErrorHold();
        QCOMPARE(m_label->fullText(), QString("错误"));
        emit first.signalNotify("信息", information);
        m_bar->showPage(&first);
        QCOMPARE(m_label->fullText(), QString("信息"));
        m_bar->showPage(&second);
        QCOMPARE(m_label->fullText(), QString());
        emit first.signalNotify("错误", error);
        m_bar->showPage(&second);
        QCOMPARE(m_label->fullText(), QString("错误"));
        m_bar->sltEndErrorHold();
        QCOMPARE(m_label->fullText(), QString());
        m_bar->showSystemNotify("设置", information); // of no page
        m_bar->showPage(&first);
        QCOMPARE(m_label->fullText(), QString("设置"));
    }

    void listsRecentNotices()
    {
        m_bar->show();
        m_bar->resize(500, 32);
        for (int i = 0; i < NoticeLog::maxRecent + 20; ++i)
            m_bar->showSystemNotify(QString(i, 'x') + QString("第%1条").arg(i),
                                    i % 10 == 9 ? error : information);
        QTest::mouseClick(m_label, Qt::LeftButton);
        auto *list = m_bar->findChild<NoticeList *>();
        QVERIFY(list && list->isVisible() && list->width() < 500 && list->width() > 450);
        auto *view = list->findChild<QListWidget *>();
        QCOMPARE(list->focusWidget(), view);
        QCOMPARE(view->count(), NoticeLog::maxRecent);
        QVERIFY(view->item(0)->text().endsWith("第119条"));
        QVERIFY(view->item(10)->text().contains("[错误] xxx") && view->accessibleName() == "最近的提示");
        QVERIFY(view->wordWrap() && view->selectionMode() == QAbstractItemView::ExtendedSelection);
        QVERIFY(list->height() <= 10 * view->visualItemRect(view->item(0)).height() + 10); // and is scrolled
        list->setErrorColor(Qt::red);
        for (int i = 0; i < view->count(); ++i)
            QCOMPARE(view->item(i)->foreground().color() == QColor(Qt::red), i % 10 == 0);
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
            QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
            QVERIFY(!QApplication::activePopupWidget());
            QTest::keyClick(m_label, key);
            QVERIFY(QApplication::activePopupWidget());
        }
    }

    void cutsLongNotices()
    {
        QWidget window;
        (new QHBoxLayout(&window))->addWidget(m_bar.get());
        const auto keep = qScopeGuard([this] { m_bar->setParent(nullptr); });
        window.resize(500, 60);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window, 30000));
        const QPoint corner = m_bar->geometry().topLeft();
        QCOMPARE(window.grab().toImage().pixelColor(corner), QColor("#112233"));
        const int minWidth = window.minimumSizeHint().width();
        m_bar->showSystemNotify(QString("<b>很长的\n提示</b>").repeated(200), error);
        QCOMPARE(window.minimumSizeHint().width(), minWidth);
        QVERIFY(!m_label->fullText().contains('\n'));
        QVERIFY(m_label->geometry().right() < m_bar->findChild<QPushButton *>()->geometry().left());
        // Markup in a name from outside is text in the tool tip, too.
        QVERIFY(m_label->toolTip().startsWith("<p>&lt;b&gt;很长的"));
        m_bar->showSystemNotify(QString(5000, 'x'), error);
        QTextDocument tip; // as a tool tip lays it out
        tip.setHtml(m_label->toolTip());
        tip.setTextWidth(400);
        QVERIFY(tip.size().height() < 300 && tip.idealWidth() <= 400);
        // Smaller figures leave the bar as it is.
        const auto *count = m_bar->findChild<QLabel *>("sentCount");
        m_bar->showCounts({"123456789", "1"});
        const int width = count->sizeHint().width();
        m_bar->showCounts({"1", "1"});
        QCOMPARE(count->minimumWidth(), width);
        m_bar->showCounts({});
        QVERIFY(count->text().isEmpty() && count->minimumWidth() == 0);
        m_bar->showCounts({"", "Size: 1"}); // of a page that counts something else
        QCOMPARE(count->text() + '|' + m_bar->findChild<QLabel *>("receivedCount")->text(),
                 QString("|Size: 1"));
        m_bar->setCodecs({"A", "B"});
        for (const int codec : {0, 1})
            m_bar->showCodec(codec);
        const auto codecs = m_bar->findChild<QMenu *>()->actions();
        QVERIFY(!codecs.at(0)->isChecked() && codecs.at(1)->isChecked());
    }

private:
    // Lets the running timer with the interval time out now.
    bool timeOut(int interval)
    {
        for (auto *timer : m_bar->findChildren<QTimer *>())
            if (timer->isActive() && timer->interval() == interval) {
                timer->start(0);
                return true;
            }
        return false;
    }

    std::unique_ptr<QtStatusBar> m_bar;
    StatusLabel *m_label = nullptr;
};

QTEST_MAIN(StatusBarTest)
#include "test_statusbar.moc"
