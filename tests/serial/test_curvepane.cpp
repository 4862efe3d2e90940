// The curves beside a receive display: what they read of the log and when, what
// the chart shows of it, and what becomes of an export.

#include "answers.h"
#include "apppaths.h"
#include "contrast.h"
#include "curvecolors.h"
#include "curvefeed.h"
#include "curvepane.h"
#include "curvesplit.h"
#include "halograph.h"
#include "korvexresources.h"
#include "logcurvelist.h"
#include "logplot.h"
#include "qtterminalwidget.h"
#include "settings.h"
#include "testfiles.h"

#include <QtTest>
#include <QtWidgets>

class TestCurvePane : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        initKorvexResources();
        m_root = std::make_unique<QTemporaryDir>();
        AppPaths::setRoot(m_root->path());
        AppPaths::makeFolders();
        Settings::instance() = Settings();
        Settings::instance().textCodec.set(0);
        Settings::instance().view.curves.set(true);
        m_terminal = new QtTerminalWidget;
        m_split = std::make_unique<CurveSplit>(m_terminal, m_terminal);
        m_split->resize(700, 400);
        m_split->show();
    }
    void cleanup()
    {
        m_split.reset();
        DialogAnswers::instance() = DialogAnswers();
    }

    void readsWhatIsThereAndFollows()
    {
        receive("boot\na=1\na=2 ");
        open();
        QTRY_COMPARE(feed()->lines().skipped(), 2);
        receive("\nb=5\n");
        QTRY_COMPARE(points(0), (QVector<double>{1, 2}));
        QTRY_COMPARE(plot()->graph(0)->dataCount(), 2);
        click("btnCurvePause");
        receive("a=3\n");
        click("btnCurvePause");
        QTRY_COMPARE(points(0), (QVector<double>{1, 2, 3}));
        m_terminal->clearTerminal(); // clears no curve, and lines are counted on
        receive("a=4\n");
        QTRY_COMPARE(points(0), (QVector<double>{1, 2, 3, 4}));
        QCOMPARE(feed()->curves().at(0).last().line, 6);
        QVERIFY(plot()->readOut(1e12).contains(">4<") && plot()->readOut(0).contains(">1<"));
        choose("清空曲线");
        QVERIFY(feed()->curves().isEmpty() && m_split->findChild<LogCurveList *>()->count() == 0);
        receive("a=5\na=6\n");
        QTRY_COMPARE(points(0), (QVector<double>{5, 6}));
        QTRY_COMPARE(m_split->findChild<QLabel *>("labelCurveCounts")->text(), "已用 2 行，跳过 0 行");
        QCOMPARE(m_split->findChild<LogCurveList *>()->findChild<QLabel *>()->toolTip(), "当前值：6");
        m_split->findChild<QComboBox *>()->setCurrentIndex(4);
        auto *expression = m_split->findChild<QLineEdit *>("editCurveExpression");
        emit m_split->findChild<QComboBox *>()->activated(4);
        QVERIFY(expression->isVisible());
        expression->setText("a=(?<x>.)");
        QTest::keyClick(expression, Qt::Key_Return);
        QTRY_COMPARE(points(0), (QVector<double>{4, 5, 6})); // what is in the log
        QVERIFY(Settings::instance().view.curveExpression == expression->text());
        QVERIFY(m_terminal->showAgain());
        receive("a=7\n");
        QTRY_COMPARE(points(0), (QVector<double>{4, 5, 6, 7})); // not twice
        QTRY_COMPARE(feed()->lines().used(), 4);
        QCOMPARE(m_split->findChild<QCheckBox *>("checkLogCurve0")->text(), QString("x"));
    }

    // Of what piles up while it is paused, and not lines that were sent.
    void readsTheNewestLines()
    {
        LineStore store(m_root->path());
        CurveFeed feed(store);
        feed.start(NumberLines::Form::Pairs, {});
        feed.setPaused(true);
        QString text;
        for (int i = 0; i < 250000; ++i)
            text += QString("a=%1\n").arg(i);
        store.append(text, 1);
        store.append("a=7\n", 2, LineStore::Origin::Sent);
        feed.setPaused(false);
        QTRY_COMPARE_WITH_TIMEOUT(feed.lines().used(), 99999, 60000);
        QCOMPARE(feed.curves().at(0).at(0).value, 150001.0);
        QCOMPARE(feed.curves().at(0).last().value, 249999.0);
        QCOMPARE(feed.passedOver(), 150001);
    }

    void zoomsAndFits()
    {
        QString text;
        for (int i = 0; i < 5000; ++i)
            text += QString("a=%1 b=7 c=nan\n").arg(i);
        receive(text.toUtf8());
        Settings::instance().view.curvesByLine.set(true);
        open();
        QVERIFY(!cursor()->visible() && hint()->visible());
        QTRY_COMPARE(feed()->lines().used(), 5000);
        QTRY_VERIFY(!hint()->visible() && !plot()->graph(0)->antialiased());
        const auto keys = [this] { return plot()->xAxis->range(); };
        QTRY_VERIFY(keys().contains(1) && keys().contains(5000) && keys().size() < 6000);
        QVERIFY(plot()->graph(0)->dataCount() <= 4 * (plot()->width() + 2));
        plot()->xAxis->setRange(4000, 5000); // as the wheel does
        QCOMPARE(plot()->follow(), LogPlot::Live);
        QTRY_VERIFY(keys().contains(5000) && qAbs(keys().size() - 1000) < 100);
        m_split->findChild<QCheckBox *>("checkLogCurve0")->click();
        QTRY_VERIFY(plot()->yAxis->range().contains(7) && plot()->yAxis->range().size() < 10); // level
        plot()->xAxis->setRange(100, 100 + keys().size()); // as dragging does
        QCOMPARE(plot()->follow(), LogPlot::Held);
        QCOMPARE(m_split->findChild<QPushButton *>("btnCurvePause")->text(), "继续");
        QTest::mouseMove(plot(), plot()->axisRect()->rect().center());
        QTRY_VERIFY(QToolTip::text().contains(">7<") && cursor()->visible());
        const QPoint axis(plot()->axisRect()->left() - 5, plot()->height() / 2);
        QTest::mouseMove(plot(), axis);
        QTRY_VERIFY(!cursor()->visible());
        QVERIFY(plot()->readOut(200).contains(">7<") && !plot()->readOut(200).contains(">199<"));
        int pictures = plot()->pictures();
        click("btnCurveFit");
        QVERIFY(keys().contains(1) && keys().contains(5000));
        QCOMPARE(plot()->follow(), LogPlot::Held);
        QTRY_VERIFY(plot()->pictures() > pictures);
        pictures = plot()->pictures();
        plot()->xAxis->setRange(1234560, 1234570);
        plot()->replot();
        QCOMPARE(plot()->xAxis->tickVectorLabels().value(0), "1234560");
        click("btnCurvePause");
        QTRY_VERIFY(keys().contains(5000));
        plot()->xAxis->setRange(4990, 5000);
        choose("横轴为行号"); // by time, all of it
        QTRY_VERIFY(keys().lower > 1e9 && plot()->xAxis->tickVectorLabels().value(0).contains(':'));
        choose("横轴为行号");
        QTRY_VERIFY(keys().contains(1) && keys().contains(5000));
        plot()->xAxis->setRange(4990, 5000);
        pictures = plot()->pictures();
        choose("清空曲线");
        QTRY_VERIFY(hint()->visible() && plot()->pictures() > pictures);
        receive("b=1\nb=2\n");
        QTRY_VERIFY(keys().size() < 3 && plot()->graph(0)->antialiased());
    }

    // And what it says instead of curves.
    void listsCurves()
    {
        open();
        receive("a=1 b=2\na=1 b=2\n");
        auto *list = m_split->findChild<LogCurveList *>();
        QTRY_COMPARE(list->count(), 2);
        const auto swatches = list->findChildren<QToolButton *>();
        const auto *shown = list->findChild<QCheckBox *>("checkLogCurve1");
        const auto *value = list->findChildren<QLabel *>().at(1);
        QTRY_COMPARE(value->toolTip(), "当前值：2");
        QVERIFY(swatches.at(1)->x() < shown->x() && shown->x() + shown->width() <= value->x());
        QVERIFY(value->geometry().right() <= list->widget()->rect().right());
        const auto colorOf = [&](int i) { return swatches.at(i)->icon().pixmap(16).toImage().pixel(8, 8); };
        QVERIFY(colorOf(0) == CurveColors::ofCurve(0).rgb() && colorOf(1) == CurveColors::ofCurve(1).rgb());
        QVERIFY(plot()->graph(1)->pen().color() == CurveColors::ofCurve(1) &&
                plot()->graph(1)->name() == "b");
        QTimer::singleShot(0, this, [] {
            for (const auto key : {Qt::Key_Up, Qt::Key_Return})
                QTest::keyClick(QApplication::activePopupWidget(), key);
        });
        swatches.at(0)->click();
        const QRgb chosen = plot()->graph(0)->pen().color().rgb();
        QVERIFY(chosen != CurveColors::ofCurve(0).rgb() && colorOf(0) == chosen);
        Settings::instance().view.curveForm.set(4);
        const auto saysFor = [&](const QString &expression, const QString &text) {
            Settings::instance().view.curveExpression.set(expression);
            m_split->load();
            return hint()->text().startsWith(text);
        };
        QVERIFY(saysFor("(", "表达式") && list->count() == 0);
        const auto *edit = m_split->findChild<QLineEdit *>("editCurveExpression");
        QVERIFY(edit->property("kind") == "error" && edit->toolTip() == hint()->text());
        QVERIFY(saysFor("(x)", "收到含数值的行后"));
        QVERIFY(edit->property("kind") == "" && edit->toolTip().startsWith("每个括号"));
        receive(QByteArray("no\n").repeated(30));
        QTRY_VERIFY(hint()->text().startsWith("没有识别出数值"));
        m_terminal->showReceived("12\n", "\n[12:00:01.124] HEX >\n", true);
        QTRY_VERIFY(hint()->text().startsWith("十六进制"));
    }

    void drawsNothingWhileHidden()
    {
        open();
        receive("a=1\na=2\n");
        QTRY_VERIFY(plot()->graphCount() == 1 && plot()->graph(0)->dataCount() == 2);
        QCoreApplication::processEvents(); // a queued picture
        m_split->hide();
        const int pictures = plot()->pictures();
        receive("a=3\n");
        QTRY_COMPARE(points(0).size(), 3);
        QCoreApplication::processEvents();
        QCOMPARE(plot()->pictures(), pictures);
        m_split->show();
        QTRY_COMPARE(plot()->graph(0)->dataCount(), 3);
    }

    void saysThatHexadecimalHasNoCurves()
    {
        open();
        m_terminal->showReceived("a=1\n", {}, true); // a line without end
        QTRY_VERIFY(m_split->findChild<QLabel *>("labelCurveCounts")->text().startsWith("十六进制"));
        m_terminal->showReceived("a=1\n", "\n[12:00:01.123] HEX >\n", true);
        m_terminal->showReceived("12\n", "\n[12:00:01.124] HEX >\n", true);
        m_terminal->showReceived("12\n", "\n[12:00:01.125] HEX >\n", true);
        m_terminal->showReceived("\nend\n", {}, false);
        QTRY_COMPARE(feed()->lines().skipped(), 5);
        QVERIFY(feed()->curves().isEmpty());
    }

    void hasColorsForEverySkin()
    {
        open();
        plot()->setStyleOf(0, Qt::white, true, "a");
        QSet<QRgb> colors;
        for (const QString &style : {QString("black"), QString("white"), QString("yellow")}) {
            plot()->setPlotStyle(style);
            const auto *white = qobject_cast<HaloGraph *>(plot()->graph(0)); // of an earlier style
            QCOMPARE(white->hasHalo(), style == "white");
            for (int curve = 0; curve < NumberLines::maxCurves; ++curve) {
                colors += CurveColors::ofCurve(curve).rgb();
                QVERIFY(Contrast::ratio(CurveColors::ofCurve(curve), plot()->ground()) >= 3);
            }
        }
        QCOMPARE(colors.size(), NumberLines::maxCurves);
    }

    void exportsAndQuits()
    {
        open();
        receive("a=1\na=2\n");
        QTRY_COMPARE(points(0).size(), 2);
        const QSignalSpy notices(m_split.get(), &CurveSplit::notify);
        chooseFile(m_root->filePath("curves.csv"));
        choose("导出CSV…");
        QVERIFY(m_split->completeExport());
        const QByteArray table = contentOf(m_root->filePath("curves.csv"));
        QVERIFY(table.endsWith(",2\r\n") && table.contains(",a\r\n"));
        chooseFile(m_root->filePath("curves.pdf"));
        choose("保存图片…");
        const QByteArray page = contentOf(m_root->filePath("curves.pdf"));
        QVERIFY(page.startsWith("%PDF"));
        const QByteArray box =
            page.mid(page.indexOf("/MediaBox [")).left(page.indexOf(']', page.indexOf("/MediaBox [")));
        const double ratio = double(plot()->width()) / plot()->height();
        const QList<QByteArray> sides = box.mid(box.indexOf('[') + 1).split(' ');
        QVERIFY(qAbs(sides.at(2).toDouble() / sides.at(3).split(']').first().toDouble() - ratio) < 0.02);
        QCOMPARE(plot()->plotLayout()->rowCount(), 1); // the picture's legend has gone
        QCOMPARE(notices.count(), 2);
        const Questions questions(1);
        chooseFile(m_root->filePath("none/curves.csv"));
        choose("导出CSV…");
        QCOMPARE(questions.asked.size(), 1);
        QVERIFY(notices.last().at(0).value<Notice>().isError());
        QVERIFY(m_split->completeExport()); // nothing is left to fail

        const auto *list = m_split->findChild<LogCurveList *>();
        const auto *counts = m_split->findChild<QLabel *>("labelCurveCounts");
        const auto top = [this](const QWidget *part) { return part->mapTo(m_split.get(), {}).y(); };
        QVERIFY(top(counts) < top(plot()) && top(list) == top(plot()) && list->width() < plot()->width());
        QVERIFY(qAbs(m_split->sizes().at(0) - m_split->sizes().at(1)) <= 2);
        receive(QByteArray("a=3\n").repeated(5000));
        QTRY_COMPARE(points(0).size(), 5002);
        chooseFile(m_root->filePath("all.csv"));
        choose("导出CSV…"); // in slices
        QTRY_COMPARE(notices.last().at(0).value<Notice>().text.section('/', -1), "all.csv");
        choose("导出CSV…");
        Settings::instance().view.curvesBeside.set(true);
        m_split->load();
        QCOMPARE(m_split->orientation(), Qt::Horizontal);
        QTRY_VERIFY(top(plot()) < top(list) && top(list) + list->height() <= top(counts));
        click("btnCurveClose");
        QVERIFY(!Settings::instance().view.curves);
        m_split->load();
        QCOMPARE(contentOf(m_root->filePath("all.csv")).count("\r\n"), 5003);
        QTRY_VERIFY(!m_split->findChild<CurvePane *>());
    }

private:
    void open()
    {
        m_split->load();
        QVERIFY(m_split->findChild<CurvePane *>());
    }
    void receive(const QByteArray &bytes) { m_terminal->showReceived(bytes, {}, false); }
    CurveFeed *feed() const { return m_split->findChild<CurveFeed *>(); }
    const QCPItemText *hint() const { return qobject_cast<QCPItemText *>(plot()->item(1)); }
    const QCPAbstractItem *cursor() const { return plot()->item(0); }
    LogPlot *plot() const { return m_split->findChild<LogPlot *>(); }
    void click(const char *button) const { m_split->findChild<QAbstractButton *>(button)->click(); }
    void choose(const QString &entry) const
    {
        for (QAction *action : m_split->findChild<CurvePane *>()->menu()->actions())
            if (action->text() == entry)
                return action->trigger();
        QFAIL("no such entry");
    }
    QVector<double> points(int curve) const
    {
        QVector<double> values;
        for (int i = 0; curve < feed()->curves().size() && i < feed()->curves().at(curve).size(); ++i)
            values.append(feed()->curves().at(curve).at(i).value);
        return values;
    }

    std::unique_ptr<QTemporaryDir> m_root;
    std::unique_ptr<CurveSplit> m_split;
    QtTerminalWidget *m_terminal = nullptr;
};

QTEST_MAIN(TestCurvePane)
#include "test_curvepane.moc"
