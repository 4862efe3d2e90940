// The chart of the PID page and its list of curves.

#include "contrast.h"
#include "korvexresources.h"
#include "pidcurvelist.h"
#include "piddebugwidget.h"
#include "pidplot.h"
#include "pidrecorder.h"

#include <QtTest>
#include <QtWidgets>

class TestPidPlot : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void init()
    {
        m_plot.reset();
        m_recorder = std::make_unique<PidRecorder>();
        m_plot = std::make_unique<PidPlot>(m_recorder.get());
    }

    void showsWhatIsRecorded()
    {
        const QCPLayerable *hint = m_plot->item(1);
        QVERIFY(hint->visible() && !m_plot->item(0)->visible()); // no cursor
        QVERIFY(qobject_cast<const QCPItemText *>(hint)->text().startsWith("打开串口"));
        QCOMPARE(m_plot->xAxis->label() + m_plot->yAxis->label(), QString("时间幅度值"));
        QCOMPARE(m_plot->yAxis2->range(), QCPRange(-700, 700));
        QVERIFY(m_plot->yAxis2->visible());
        QVERIFY(m_plot->xAxis->ticker()->tickCount() == 5 && m_plot->yAxis2->ticker()->tickCount() == 15);
        for (int i = 0; i <= 30; ++i) {
            add(1, i, i, -i);
            QVERIFY(!hint->visible());
            if (i % 7 == 0)
                m_plot->drawNew();
        }
        m_plot->drawNew();
        for (const int graph : {1, 6}) {
            QCOMPARE(points(graph)->size(), 11); // 20 s to 30 s
            QCOMPARE(points(graph)->at(0)->key, 20.0);
            QCOMPARE(points(graph)->at(9)->value, graph == 1 ? 29.0 : -29.0);
        }
        QCOMPARE(m_plot->xAxis->range(), QCPRange(20.25, 30.25));
        add(1, 100, 5, 6); // no picture while all others were dropped
        add(1, 101, 5, 7);
        m_plot->drawNew();
        add(1, 101, 5, 8); // read at the same time
        m_plot->drawNew();
        QCOMPARE(points(6)->size(), 3);
        QCOMPARE(points(6)->at(2)->value, 8.0);
        m_recorder->setOrigin(200000000);
        m_recorder->clear();
        QVERIFY(points(6)->isEmpty() && hint->visible());
        add(1, 201, 5, 7);
        m_plot->drawNew();
        QCOMPARE(points(6)->at(0)->key, 1.0);
    }

    void fitsToTheCurveThatReported()
    {
        const QCPAxis *values = m_plot->yAxis;
        add(0, 1.0, 1000, -5);
        add(0, 1.1, 1000, 25);
        QTRY_COMPARE(values->range(), QCPRange(-5, 25)); // not to the target
        add(2, 1.2, 0, 7000);
        add(2, 1.3, 0, 8000);
        QTRY_COMPARE(values->range(), QCPRange(7000, 8000));
        QCOMPARE(m_plot->yAxis2->range(), QCPRange(7000, 8000)); // its ticks are where the grid is
        add(0, 1.4, 1000, 20);
        QTRY_COMPARE(values->range(), QCPRange(-5, 25)); // smaller again
        m_plot->graph(7)->setVisible(false);
        add(2, 1.5, 0, 9000);
        QTRY_COMPARE(m_plot->xAxis->range().upper, 1.75);
        QCOMPARE(values->range(), QCPRange(-5, 25));
        m_plot->setFitAll(true); // with a little room above and below -5 and 1000
        QTRY_VERIFY(values->range().contains(1000) && qAbs(values->range().size() - 1105) < 50);
    }

    // Around a constant, and without points, no picture adds room; a reference goes with its curve.
    void keepsItsAxes()
    {
        m_plot->setFitAll(true);
        m_plot->setUnits({"A", "B"}); // the others have none
        add(0, 1, 5, 5);
        const auto sizes = [this] {
            m_plot->drawNew();
            QStringList text;
            for (int graph = 5; graph < 10; ++graph)
                text << QString::number(m_plot->graph(graph)->valueAxis()->range().size());
            return text;
        };
        const QStringList split = sizes();
        QCOMPARE(sizes(), split);
        m_plot->setUnits({});
        const QStringList joined = sizes();
        QCOMPARE(sizes(), joined);
        m_plot->setOverlays({{0, 0, 1000000, 0, "a"}});
        m_plot->graph(5)->setVisible(false);
        m_plot->replot();
        QVERIFY(!m_plot->graph(10)->visible());
    }

    void holds()
    {
        const QSignalSpy drawn(m_plot.get(), &PidPlot::drawn);
        add(0, 1, 0, 10);
        QTRY_COMPARE(drawn.count(), 1);
        QCOMPARE(m_plot->follow(), PidPlot::Live); // fitting is not the user
        m_plot->yAxis->setRange(-50, 50);          // as the wheel does
        QCOMPARE(m_plot->follow(), PidPlot::ValueFixed);
        add(0, 2, 0, 99);
        QTRY_COMPARE(m_plot->xAxis->range().upper, 2.25);
        QCOMPARE(m_plot->yAxis->range(), QCPRange(-50, 50));

        add(0, 2.5, 0, 98);
        m_plot->xAxis->setRange(0, 3); // as dragging does
        QCOMPARE(m_plot->follow(), PidPlot::Held);
        add(0, 20, 0, 7);
        QTRY_COMPARE(drawn.count(), 3);
        QCOMPARE(m_plot->xAxis->range(), QCPRange(0, 3));
        QCOMPARE(points(5)->size(), 3);
        QCOMPARE(m_recorder->shown()[0].size(), 3); // what is exported meanwhile

        QTest::mouseDClick(m_plot.get(), Qt::LeftButton);
        QTRY_COMPARE(m_plot->xAxis->range().upper, 20.25);
        QCOMPARE(points(5)->size(), 1);
        QCOMPARE(m_recorder->shown()[0].size(), 1);
        m_plot->xAxis->setRange(0, 3);
        m_recorder->clear();
        QVERIFY(m_plot->follow() == PidPlot::Live && m_recorder->shown()[0].isEmpty());
    }

    void readsOut()
    {
        m_recorder->setOrigin(0);
        m_recorder->clear();
        QCOMPARE(m_plot->readOut(0), QString());
        for (int graph = 0; graph < 10; ++graph)
            m_plot->setCurve(graph, Qt::red, graph != 1, QString("<%1>").arg(graph));
        add(1, 61.000, 300, 10);
        add(1, 61.500, 300, -2147483647);
        m_plot->drawNew();
        const auto at = [this](double key) { return m_plot->readOut(key); };
        QVERIFY(at(61.2).contains("01:01:000"));
        QVERIFY(at(61.3).contains("01:01:500"));
        QVERIFY(at(99).contains("&lt;6&gt;") && at(99).contains("-2147483647"));
        QVERIFY(!at(99).contains("&lt;1&gt;") && !at(99).contains("&lt;0&gt;")); // hidden, empty
        QVERIFY(at(-99).contains(">10<"));
        // A channel that has no points at that time has no value, and sets no time.
        add(3, 65.000, 300, 8);
        m_plot->drawNew();
        QVERIFY(at(61.2).contains("01:01:000") && !at(61.2).contains("&lt;8&gt;"));
        QVERIFY(at(64.9).contains("&lt;8&gt;") && !at(64.9).contains("&lt;6&gt;"));
    }

    void isReadableInEveryStyle()
    {
        PidDebugWidget page;
        QCOMPARE(page.plotStyle(), QString("black"));
        auto *plot = page.findChild<PidPlot *>();
        plot->resize(300, 200);
        for (const QString &style : {QString("black"), QString("white"), QString("yellow")}) {
            page.setStyleSheet(QString("PidDebugWidget { qproperty-plotStyle: \"%1\"; }").arg(style));
            page.ensurePolished();
            QCOMPARE(page.plotStyle(), style);
            const QColor ground = plot->toPixmap().toImage().pixelColor(1, 1);
            const auto contrast = [&ground](const QColor &color) { return Contrast::ratio(color, ground); };
            const QCPAxis *axis = plot->yAxis;
            QVERIFY(contrast(axis->tickLabelColor()) >= 4.5 && contrast(axis->labelColor()) >= 4.5);
            QVERIFY(contrast(qobject_cast<QCPItemText *>(plot->item(1))->color()) >= 4.5);
            for (const QPen &pen :
                 {axis->basePen(), axis->tickPen(), axis->subTickPen(), axis->grid()->zeroLinePen(),
                  qobject_cast<QCPItemStraightLine *>(plot->item(0))->pen()})
                QVERIFY(contrast(pen.color()) >= 3);
            const double grid = contrast(axis->grid()->pen().color());
            QVERIFY(grid >= 1.3 && grid < 3); // visible, but behind
            QVERIFY(contrast(axis->grid()->subGridPen().color()) < grid);
            QBuffer file;
            QVERIFY(file.open(QIODevice::WriteOnly) && plot->writePicture(&file, PidPlot::Png));
            const QImage picture = QImage::fromData(file.data());
            QCOMPARE(picture.pixelColor(picture.width() / 2, picture.height() - 5), ground); // the legend's
        }
    }

    // And beside a level curve of the background's own color the pixels of a halo.
    void paintsEveryPixel()
    {
        PidPlot &plot = *m_plot;
        plot.setPlotStyle(QString("black"));
        plot.resize(301, 203);
        for (const double ratio : {1.25, 1.5}) {
            QImage screen((QSizeF(plot.size()) * ratio).toSize(), QImage::Format_RGB32);
            screen.setDevicePixelRatio(ratio);
            screen.fill(Qt::white);
            plot.render(&screen, QPoint(), QRegion(), {});
            const QRgb ground = QColor("#302f2f").rgb();
            for (int y = 0; y < screen.height(); ++y)
                QCOMPARE(screen.pixel(screen.width() - 1, y), ground);
            for (int x = 0; x < screen.width(); ++x)
                QCOMPARE(screen.pixel(x, screen.height() - 1), ground);
        }
        m_recorder->clear(); // makes new curves
        plot.setCurve(5, QColor("#302f2f"), true, "dark");
        plot.setCurve(6, QColor("#00ffff"), true, "bright");
        for (int i = 0; i < 10; ++i)
            add(0, i, 0, i % 2);
        plot.drawNew();
        const QImage picture = plot.toPixmap().toImage();
        const int x = int(plot.xAxis->coordToPixel(4.5));
        const int y = int(plot.yAxis->coordToPixel(0.5));
        double contrast = 1;
        for (int k = -3; k <= 3; ++k)
            contrast = qMax(contrast, Contrast::ratio(picture.pixelColor(x + k, y), QColor("#302f2f")));
        QVERIFY(contrast >= 3);
        QVERIFY(!qobject_cast<HaloGraph *>(plot.graph(6))->hasHalo());
    }

    void knowsTheCurves()
    {
        PidCurveList list;
        const QString colors(
            "#d9001b #bfbf00 #00ffff #015478 #c280ff #b8741a #70b603 #02a7f0 #0000bf #420080");
        for (int graph = 0; graph < 10; ++graph) {
            const int key = graph < 5 ? 0x101 + graph : 0x201 + graph - 5;
            QCOMPARE(PidCurveList::keyOf(graph), key);
            QCOMPARE(list.color(key).name(), colors.section(' ', graph, graph));
        }
        QCOMPARE(list.color(0x106).name(), "#ff0000");
        const QSignalSpy clicks(&list, &PidCurveList::signalGraphClicked);
        list.findChild<QAbstractButton *>(QString("checkCurve8"))->click();
        QCOMPARE(clicks.value(0), (QVariantList{8, false}));
        QVERIFY(!list.isShown(0x204) && list.isShown(0x203));
        QTimer::singleShot(0, this, [] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            menu->setActiveAction(menu->actions().last());
            QTest::keyClick(menu, Qt::Key_Return);
        });
        auto *swatch = list.findChild<QToolButton *>(QString("curveColor5"));
        swatch->click();
        QCOMPARE(list.color(0x201).name(), "#8a8a8a");
        const QImage picture = swatch->icon().pixmap(14).toImage();
        QVERIFY(picture.pixelColor(7, 7).name() == "#8a8a8a" && picture.pixelColor(7, 0).alpha() == 0);
    }

    void flipsTheZoom()
    {
        PidDebugWidget page;
        page.resize(900, 460);
        auto *plot = page.findChild<PidPlot *>();
        auto *box = page.findChild<QComboBox *>(QString("comboPidZoom"));
        // As numbers: the names of flags are not exported by every build of the library.
        QCOMPARE(int(plot->interactions()), int(QCP::iRangeDrag | QCP::iRangeZoom));
        for (const Qt::Orientation expected : {Qt::Horizontal, Qt::Vertical, Qt::Horizontal}) {
            QCOMPARE(plot->axisRect()->rangeZoom(), expected);
            QCOMPARE(box->currentText(), expected == Qt::Horizontal ? "X轴缩放" : "Y轴缩放");
            QTest::mouseClick(plot, Qt::LeftButton, {}, plot->rect().center());
            QCOMPARE(plot->axisRect()->rangeZoom(), expected);
            QTest::mouseClick(plot, Qt::RightButton, {}, plot->rect().center());
        }
    }

private:
    // At a time in seconds.
    void add(int channel, double t, int target, int actual)
    {
        m_recorder->params(channel).target = target;
        m_recorder->addActual(channel, actual, qRound64(t * 1e6));
    }
    QSharedPointer<QCPGraphDataContainer> points(int graph) const { return m_plot->graph(graph)->data(); }

    std::unique_ptr<PidRecorder> m_recorder;
    std::unique_ptr<PidPlot> m_plot;
};

QTEST_MAIN(TestPidPlot)
#include "test_pid_plot.moc"
