// What a report costs the PID page (parsing and recording) with so many samples
// held, and what the parser does beside memchr over
// the same bytes. Adding points to the curves and drawing them is measured apart,
// since it is done once for many reports.

#include "korvexresources.h"
#include "pidexport.h"
#include "pidparser.h"
#include "pidplot.h"
#include "pidrecorder.h"

#include <QApplication>
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

// Points come so close that the window of ten seconds holds the count.
void parseAndFeed(benchmark::State &state)
{
    const qint64 step = PidSamples::windowUs / state.range(0);
    PidRecorder recorder;
    PidPlot plot(&recorder);
    qint64 us = 0;
    for (int64_t i = 0; i < state.range(0); ++i)
        recorder.addActual(0, static_cast<int>(i % 1000), us += step);
    constexpr int perChunk = 64;
    const QByteArray chunk = reports(perChunk);
    PidParser parser;
    PidReport report;
    for (auto _ : state) {
        parser.append(chunk, us);
        while (parser.next(&report) == PidParser::Outcome::Report)
            recorder.addActual(report.channel - 1, report.value, us += step);
    }
    state.SetItemsProcessed(state.iterations() * perChunk);
    state.counters["held"] = recorder.samples()[0].size();
    state.counters["ns_per_report"] =
        benchmark::Counter(double(state.iterations()) * perChunk * 1e-9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(parseAndFeed)->Arg(100)->Arg(10000)->Arg(100000);

// One picture and the reports before it, 33 of each channel: ten curves with so
// many points each, five of them noise over the whole height, which is the worst
// case of drawing.
void fitAndDraw(benchmark::State &state)
{
    PidRecorder recorder;
    PidPlot plot(&recorder);
    plot.resize(750, 320);
    for (int graph = 0; graph < PidPlot::curves; ++graph)
        plot.setCurve(graph, Qt::red, true, QString());
    plot.show();
    const qint64 step = PidSamples::windowUs / state.range(0);
    for (int64_t i = 0; i < state.range(0); ++i)
        for (int channel = 0; channel < PidPlot::channels; ++channel)
            recorder.addActual(channel, static_cast<int>(i * 7 % 5), i * step);
    plot.drawNew();
    int64_t number = state.range(0);
    for (auto _ : state) {
        for (const int64_t end = number + 33; number < end; ++number)
            for (int channel = 0; channel < PidPlot::channels; ++channel)
                recorder.addActual(channel, static_cast<int>(number * 7 % 5), number * step);
        plot.drawNew();
    }
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
            parser.append(QByteArray::fromRawData(bytes.constData() + at, qMin(kChunk, bytes.size() - at)),
                          at);
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
    PidRecorder recorder;
    for (int channel = 0; channel < PidRecorder::channels; ++channel)
        for (int k = 0; k < 10000; ++k)
            recorder.addActual(channel, k * 7 % 1000, k * 1000);
    for (auto _ : state) {
        PidExport tables(recorder.shown());
        while (!tables.advance(500)) {
        }
        benchmark::DoNotOptimize(tables.text().size());
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
