// The chart of the PID page and its list of curves.

#include "contrast.h"
#include "halograph.h"
#include "korvexresources.h"
#include "pidcurvelist.h"
#include "piddebugwidget.h"
#include "pidplot.h"

#include <QComboBox>
#include <QtTest>

class TestPidPlot : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initKorvexResources(); }
    void isSetUp();
    void keepsTenSeconds();
    void boundsAFlood();
    void fitsToTheCurveThatReported();
    void drawsOnceForManyPoints();
    void holds();
    void readsOut();
    void isReadableInEveryStyle_data();
    void isReadableInEveryStyle();
    void paintsEveryPixel();
    void tellsCurvesFromTheGround();
    void knowsTheCurves();
    void flipsTheZoom();
};

void TestPidPlot::isSetUp()
{
    const PidPlot plot;
    QCOMPARE(plot.graphCount(), 10);
    QCOMPARE(plot.yAxis->range(), QCPRange(-700, 700));
    QCOMPARE(plot.yAxis->ticker()->tickCount(), 15);
    QCOMPARE(plot.xAxis->ticker()->tickCount(), 5);
    QCOMPARE(qSharedPointerDynamicCast<QCPAxisTickerDateTime>(plot.xAxis->ticker())->dateTimeFormat(),
             QStringLiteral("mm:ss:zzz"));
    QCOMPARE(plot.xAxis->label() + plot.yAxis->label(), QStringLiteral("时间幅度值"));
    QVERIFY(plot.xAxis->grid()->subGridVisible() && plot.yAxis->grid()->subGridVisible());
    // As numbers: the names of flags are not exported by every build of the library.
    QCOMPARE(int(plot.interactions()), int(QCP::iRangeDrag | QCP::iRangeZoom));
    QCOMPARE(plot.axisRect()->rangeZoom(), Qt::Horizontal);
    plot.yAxis->setRange(1, 2);
    QCOMPARE(plot.yAxis2->range(), QCPRange(1, 2));
    QCOMPARE(plot.yAxis2->ticker()->tickCount(), 15); // where the grid is
}

void TestPidPlot::keepsTenSeconds()
{
    PidPlot plot;
    for (int i = 0; i <= 30; ++i)
        plot.addPoint(1, i, i, -i);
    for (int graph : {1, 6}) {
        QCOMPARE(plot.graph(graph)->dataCount(), 11); // 20 s to 30 s
        QCOMPARE(plot.graph(graph)->data()->constBegin()->key, 20.0);
    }
    QTRY_COMPARE(plot.xAxis->range(), QCPRange(20.25, 30.25));
}

void TestPidPlot::boundsAFlood()
{
    PidPlot plot;
    for (int i = 0; i < 500000; ++i)
        plot.addPoint(0, i * 1e-6, 0, i);
    QVERIFY(plot.graph(5)->dataCount() <= 200000);
    QCOMPARE((plot.graph(5)->data()->constEnd() - 1)->value, 499999.0);
}

void TestPidPlot::fitsToTheCurveThatReported()
{
    PidPlot plot;
    plot.addPoint(0, 1.0, 1000, -5);
    plot.addPoint(0, 1.1, 1000, 25);
    QTRY_COMPARE(plot.yAxis->range(), QCPRange(-5, 25)); // not to the target
    plot.addPoint(2, 1.2, 0, 7000);
    plot.addPoint(2, 1.3, 0, 8000);
    QTRY_COMPARE(plot.yAxis->range(), QCPRange(7000, 8000));
    plot.addPoint(0, 1.4, 1000, 20);
    QTRY_COMPARE(plot.yAxis->range(), QCPRange(-5, 25)); // smaller again
    plot.graph(7)->setVisible(false);
    plot.addPoint(2, 1.5, 0, 9000); // out of sight
    QTRY_COMPARE(plot.xAxis->range().upper, 1.75);
    QCOMPARE(plot.yAxis->range(), QCPRange(-5, 25));
    plot.setFitAll(true); // with a little room above and below -5 and 1000
    QTRY_VERIFY(plot.yAxis->range().contains(1000) && plot.yAxis->range().size() < 1200);
}

void TestPidPlot::drawsOnceForManyPoints()
{
    PidPlot plot;
    plot.resize(400, 300);
    plot.show();
    QVERIFY(QTest::qWaitForWindowExposed(&plot));
    const int before = plot.pictures();
    for (int i = 0; i < 10000; ++i)
        plot.addPoint(0, i * 0.0001, 0, i);
    QTRY_COMPARE(plot.yAxis->range(), QCPRange(0, 9999));
    QTRY_VERIFY(plot.pictures() > before);
    QVERIFY(plot.pictures() < before + 5);
}

void TestPidPlot::holds()
{
    PidPlot plot;
    const QSignalSpy changes(&plot, &PidPlot::followChanged);
    const QSignalSpy drawn(&plot, &PidPlot::drawn);
    plot.addPoint(0, 1, 0, 10);
    QTRY_COMPARE(drawn.count(), 1);
    QCOMPARE(changes.count(), 0); // its own doing

    plot.yAxis->setRange(-50, 50); // as the wheel does
    QCOMPARE(plot.follow(), PidPlot::ValueFixed);
    plot.addPoint(0, 2, 0, 99);
    QTRY_COMPARE(plot.xAxis->range().upper, 2.25);
    QCOMPARE(plot.yAxis->range(), QCPRange(-50, 50));

    plot.xAxis->setRange(0, 3); // as dragging does
    QCOMPARE(plot.follow(), PidPlot::Held);
    plot.addPoint(0, 20, 0, 7);
    QTRY_COMPARE(drawn.count(), 3);
    QCOMPARE(plot.xAxis->range(), QCPRange(0, 3));
    QCOMPARE(plot.graph(5)->dataCount(), 2); // what was to be seen is still there

    plot.returnToLive();
    QTRY_COMPARE(plot.xAxis->range().upper, 20.25);
    QCOMPARE(plot.graph(5)->dataCount(), 1); // and what came since, too
    plot.xAxis->setRange(0, 3);
    plot.recreateCurves();
    QCOMPARE(plot.follow(), PidPlot::Live);
}

void TestPidPlot::readsOut()
{
    PidPlot plot;
    plot.setTimeAbsolute(false);
    QCOMPARE(plot.readOut(0), QString());
    for (int graph = 0; graph < 10; ++graph)
        plot.setCurve(graph, Qt::red, graph != 1, QStringLiteral("<%1>").arg(graph));
    plot.addPoint(1, 61.000, 300, 10);
    plot.addPoint(1, 61.500, 300, -2147483647);
    QVERIFY(plot.readOut(61.2).contains("01:01:000"));
    QVERIFY(plot.readOut(61.3).contains("01:01:500"));
    QVERIFY(plot.readOut(99).contains("<6>") && plot.readOut(99).contains("-2147483647"));
    QVERIFY(!plot.readOut(99).contains("<1>") && !plot.readOut(99).contains("<0>")); // hidden, empty
    QVERIFY(plot.readOut(-99).contains(">10<"));
    // A channel that is not there at that time has no value, and sets no time.
    plot.addPoint(3, 65.000, 300, 8);
    QVERIFY(plot.readOut(61.2).contains("01:01:000") && !plot.readOut(61.2).contains("<8>"));
    QVERIFY(plot.readOut(64.9).contains("<8>") && !plot.readOut(64.9).contains("<6>"));
}

void TestPidPlot::isReadableInEveryStyle_data()
{
    QTest::addColumn<QString>("style");
    for (const char *style : {"black", "white", "yellow"})
        QTest::newRow(style) << QString::fromLatin1(style);
}

void TestPidPlot::isReadableInEveryStyle()
{
    QFETCH(QString, style);
    PidDebugWidget page;
    page.setStyleSheet(QStringLiteral("PidDebugWidget { qproperty-plotStyle: \"%1\"; }").arg(style));
    page.ensurePolished();
    QCOMPARE(page.plotStyle(), style);
    auto *plot = page.findChild<PidPlot *>();
    plot->resize(300, 200);
    const QColor ground = plot->toPixmap().toImage().pixelColor(1, 1);
    for (const QCPAxis *axis : {plot->xAxis, plot->yAxis}) {
        QVERIFY(Contrast::ratio(axis->tickLabelColor(), ground) >= 4.5);
        QVERIFY(Contrast::ratio(axis->labelColor(), ground) >= 4.5);
        QVERIFY(Contrast::ratio(axis->basePen().color(), ground) >= 3);
        QVERIFY(Contrast::ratio(axis->grid()->pen().color(), ground) >= 1.3); // seen, but behind
        QVERIFY(Contrast::ratio(axis->grid()->pen().color(), ground) < 3);
    }
}

void TestPidPlot::paintsEveryPixel()
{
    PidPlot plot;
    plot.setPlotStyle(QStringLiteral("black"));
    plot.resize(301, 203);
    for (const double ratio : {1.25, 1.5}) {
        QImage screen((QSizeF(plot.size()) * ratio).toSize(), QImage::Format_RGB32);
        screen.setDevicePixelRatio(ratio);
        screen.fill(Qt::white);
        plot.render(&screen, QPoint(), QRegion(), {});
        const QRgb ground = screen.pixel(0, 0);
        for (int y = 0; y < screen.height(); ++y)
            QCOMPARE(screen.pixel(screen.width() - 1, y), ground);
        for (int x = 0; x < screen.width(); ++x)
            QCOMPARE(screen.pixel(x, screen.height() - 1), ground);
    }
}

// Beside a level curve of the ground's own color are the pixels of a halo.
void TestPidPlot::tellsCurvesFromTheGround()
{
    PidPlot plot;
    plot.setPlotStyle(QStringLiteral("black"));
    plot.resize(301, 203);
    plot.setCurve(5, QColor("#302f2f"), true, "dark");
    plot.setCurve(6, QColor("#00ffff"), true, "bright");
    for (int i = 0; i < 10; ++i)
        plot.addPoint(0, i, 0, i % 2);
    plot.drawNew();
    const QImage picture = plot.toPixmap().toImage();
    const int x = int(plot.xAxis->coordToPixel(4.5));
    const int y = int(plot.yAxis->coordToPixel(0.5));
    double most = 1;
    for (int k = -3; k <= 3; ++k)
        most = qMax(most, Contrast::ratio(picture.pixelColor(x + k, y), QColor("#302f2f")));
    QVERIFY(most >= 3);
    QVERIFY(!qobject_cast<HaloGraph *>(plot.graph(6))->hasHalo()); // it needs none
}

void TestPidPlot::knowsTheCurves()
{
    PidCurveList list;
    const QStringList colours{"#d9001b", "#bfbf00", "#00ffff", "#015478", "#c280ff",
                              "#b8741a", "#70b603", "#02a7f0", "#0000bf", "#420080"};
    for (int graph = 0; graph < 10; ++graph) {
        const int key = graph < 5 ? 0x101 + graph : 0x201 + graph - 5;
        QCOMPARE(PidCurveList::keyOf(graph), key);
        QCOMPARE(list.colour(key).name(), colours.at(graph));
        QVERIFY(list.isShown(key));
    }
    QCOMPARE(list.colour(0x106).name(), "#ff0000");
    const QSignalSpy clicks(&list, &PidCurveList::signalGraphClicked);
    list.findChild<QAbstractButton *>(QStringLiteral("checkCurve8"))->click();
    QCOMPARE(clicks.count(), 1);
    QCOMPARE(clicks.first(), (QVariantList{8, false}));
    QVERIFY(!list.isShown(0x204));
}

void TestPidPlot::flipsTheZoom()
{
    PidDebugWidget page;
    page.resize(900, 460);
    auto *plot = page.findChild<PidPlot *>();
    auto *box = page.findChild<QComboBox *>(QStringLiteral("comboPidZoom"));
    QCOMPARE(box->itemText(0) + box->itemText(1), QStringLiteral("X轴缩放Y轴缩放"));
    for (const Qt::Orientation expected : {Qt::Vertical, Qt::Horizontal}) {
        QTest::mouseClick(plot, Qt::RightButton, {}, plot->rect().center());
        QCOMPARE(plot->axisRect()->rangeZoom(), expected);
        QCOMPARE(box->currentIndex(), expected == Qt::Horizontal ? 0 : 1);
    }
    QTest::mouseClick(plot, Qt::LeftButton, {}, plot->rect().center());
    QCOMPARE(box->currentIndex(), 0);
}

QTEST_MAIN(TestPidPlot)
#include "test_pid_plot.moc"
