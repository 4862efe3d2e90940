// What a report costs the PID page (parsing, and feeding the chart) with so
// many points held in its curve, and what the parser does beside memchr over
// the same bytes. Every frame's worth of time a picture is due and is drawn;
// its fitting and drawing is measured apart, for it does not come with every
// report.

#include "korvexresources.h"
#include "pidexport.h"
#include "pidparser.h"
#include "pidplot.h"

#include <QApplication>
#include <QBuffer>
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>

namespace {

// Actual values of channel 1, one after another.
QByteArray reports(int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i) {
        const QByteArray payload = PidFrame::int32ToBytes(i % 100);
        bytes += PidFrame::build(PidFrame::Actual, 1, payload);
    }
    return bytes;
}

// Points come so close that the window of ten seconds holds the count. As on
// the page, time is told in milliseconds.
void parseAndFeed(benchmark::State &state)
{
    const double step = PidPlot::windowSeconds / double(state.range(0));
    PidPlot plot;
    double seconds = 0;
    const auto time = [&seconds, step] { return std::floor((seconds += step) * 1000) / 1000; };
    for (int64_t i = 0; i < state.range(0); ++i)
        plot.addPoint(0, time(), 500, static_cast<int>(i % 1000));
    constexpr int perChunk = 64;
    const QByteArray chunk = reports(perChunk);
    PidParser parser;
    PidReport report;
    for (auto _ : state) {
        parser.append(chunk);
        while (parser.next(&report) == PidParser::Outcome::Report)
            plot.addPoint(report.channel - 1, time(), 500, report.value);
    }
    state.SetItemsProcessed(state.iterations() * perChunk);
    state.counters["held"] = plot.graph(5)->dataCount();
    state.counters["ns_per_report"] =
        benchmark::Counter(double(state.iterations()) * perChunk * 1e-9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(parseAndFeed)->Arg(100)->Arg(10000)->Arg(100000);

// One picture: ten curves with so many points each, five of them noise over the
// whole height, which is the most that there is to draw.
void fitAndDraw(benchmark::State &state)
{
    PidPlot plot;
    plot.resize(750, 320);
    for (int graph = 0; graph < PidPlot::curves; ++graph)
        plot.setCurve(graph, Qt::red, true, QString());
    plot.show();
    const double step = PidPlot::windowSeconds / double(state.range(0));
    for (int64_t i = 0; i < state.range(0); ++i)
        for (int channel = 0; channel < PidPlot::channels; ++channel)
            plot.addPoint(channel, double(i) * step, 2, static_cast<int>(i * 7 % 5));
    for (auto _ : state)
        plot.drawNew();
}
BENCHMARK(fitAndDraw)->Arg(100)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

constexpr int kBytes = 15 * 100000;
constexpr int kChunk = 4096;

void parse(benchmark::State &state)
{
    const QByteArray bytes = reports(kBytes / 15);
    PidParser parser;
    PidReport report;
    for (auto _ : state) {
        for (int at = 0; at < bytes.size(); at += kChunk) {
            parser.append(QByteArray::fromRawData(bytes.constData() + at, qMin(kChunk, bytes.size() - at)));
            while (parser.next(&report) == PidParser::Outcome::Report)
                benchmark::DoNotOptimize(report);
        }
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(parse);

// The same bytes looked through once for a byte that they do not hold.
void memchrOnly(benchmark::State &state)
{
    const QByteArray bytes = reports(kBytes / 15);
    char absent = 0;
    while (bytes.contains(absent))
        ++absent;
    for (auto _ : state)
        benchmark::DoNotOptimize(std::memchr(bytes.constData(), absent, size_t(bytes.size())));
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(memchrOnly);

// From one 'O' to the next, which is the least that finding frames takes.
void memchrHopping(benchmark::State &state)
{
    const QByteArray bytes = reports(kBytes / 15);
    const char *const end = bytes.constData() + bytes.size();
    for (auto _ : state) {
        const char *at = bytes.constData();
        while ((at = static_cast<const char *>(std::memchr(at, 'O', size_t(end - at)))))
            benchmark::DoNotOptimize(++at);
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}
BENCHMARK(memchrHopping);

// All that five channels at 1,000 points a second hold.
void exportTables(benchmark::State &state)
{
    const PidExport::Channel channel{10000, [](int) { return 500.0; }, [](int k) { return k * 7 % 1000; }};
    for (auto _ : state) {
        QBuffer file;
        file.open(QIODevice::WriteOnly);
        benchmark::DoNotOptimize(PidExport::write(&file, QVector<PidExport::Channel>(5, channel)));
    }
}
BENCHMARK(exportTables)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    initKorvexResources();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
