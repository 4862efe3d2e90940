// Curves of a log: reading lines, the longest slice, memory and a picture with all
// curves full.
//   curvesbench

#include "curvefeed.h"
#include "curvetable.h"
#include "korvexresources.h"
#include "logplot.h"
#include "processfigures.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

// One value of a line, with its separator.
using Field = QString (*)(int curve, double value);

QString lineOf(Field field, int number, int curves)
{
    QString text;
    for (int curve = 0; curve < curves; ++curve)
        text += field(curve, std::sin(number * 0.01 + curve) * 100);
    return text + QLatin1Char('\n');
}

void fill(LineStore *store, Field field, int curves)
{
    for (int number = 0; number < CurveFeed::maxOldLines; ++number)
        store->append(lineOf(field, number, curves), 1'700'000'000'000 + number);
}

double readAll(CurveFeed *feed)
{
    double worst = 0;
    while (feed->lines().used() + feed->lines().skipped() < CurveFeed::maxOldLines) {
        QElapsedTimer slice;
        slice.start();
        feed->readSlice();
        worst = std::max(worst, milliseconds(slice));
    }
    return worst;
}

void measureReading(const char *title, Field field, int curves)
{
    const QTemporaryDir folder;
    LineStore store(folder.path());
    fill(&store, field, curves);
    CurveFeed feed(store);
    feed.start(NumberLines::Form::Automatic, {});
    QElapsedTimer total;
    total.start();
    const double worst = readAll(&feed);
    const double spent = milliseconds(total);
    const double values = double(feed.lines().used()) * curves;
    std::printf("%-22s %8.0f values in %5.0f ms: %8.0f values/s, longest slice %.1f ms\n", title, values,
                spent, values / spent * 1000, worst);
}

QString named(int curve, double value)
{
    return QString::asprintf("v%d=%.3f ", curve, value);
}

void draw(const char *title, LogPlot *plot)
{
    std::vector<double> pictures(21);
    const double cpu = ProcessFigures::cpuSeconds();
    for (double &picture : pictures) {
        QElapsedTimer timer;
        timer.start();
        plot->drawNew();
        picture = milliseconds(timer);
    }
    const double spent = (ProcessFigures::cpuSeconds() - cpu) * 1000 / double(pictures.size());
    std::sort(pictures.begin(), pictures.end());
    std::printf("%-22s %.1f ms a picture, the middle one of 21; %.1f ms of processor time\n", title,
                pictures[pictures.size() / 2], spent);
}

// All curves with all points.
void measurePictures()
{
    const QTemporaryDir folder;
    LineStore store(folder.path());
    fill(&store, named, NumberLines::maxCurves);
    const double before = ProcessFigures::residentMegabytes();
    CurveFeed feed(store);
    feed.start(NumberLines::Form::Pairs, {});
    const double worst = readAll(&feed);
    std::printf("%d curves with %d points: %.0f MB, longest slice %.1f ms\n", feed.curves().size(),
                feed.curves().last().size(), ProcessFigures::residentMegabytes() - before, worst);
    LogPlot plot(&feed);
    plot.resize(900, 400);
    plot.show();
    plot.setStyleOf(0, Qt::red, true, QString());
    draw("1 curve", &plot);
    for (int curve = 1; curve < feed.curves().size(); ++curve)
        plot.setStyleOf(curve, Qt::red, true, QString());
    draw("32 curves", &plot);
    plot.setAxis(LogPlot::Axis::Line);
    draw("32 curves, by line", &plot);
    QElapsedTimer timer;
    timer.start();
    CurveTable table(feed.lines().names(), feed.curves());
    qint64 bytes = 0;
    double longest = 0;
    for (bool isComplete = false; !isComplete;) {
        QElapsedTimer piece;
        piece.start();
        isComplete = table.advance(100);
        bytes += table.takePiece().size();
        longest = std::max(longest, milliseconds(piece));
    }
    std::printf("exported table: %lld bytes in %.0f ms, longest piece %.1f ms\n",
                static_cast<long long>(bytes), milliseconds(timer), longest);
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    initKorvexResources();
    measureReading("name=value, 4 a line", named, 4);
    measureReading(
        "name: value, 1 a line",
        [](int, double value) { return QString::asprintf("temperature: %.2f C", value); }, 1);
    measureReading(
        "name value, 4 a line",
        [](int curve, double value) { return QString::asprintf("v%d %.3f ", curve, value); }, 4);
    measureReading(
        "comma, 8 a line", [](int, double value) { return QString::asprintf("%.3f,", value); }, 8);
    measurePictures();
    return 0;
}
