// What a chunk of 64 bytes costs the log view when its buffer is full, beside
// replacing the whole text of a text browser, as codec 0 (UTF-8) or 1
// (GB18030), for log lines, random bytes and Chinese without a line end; and
// what it costs the display without that bound.

#include "apppaths.h"
#include "korvexresources.h"
#include "qtterminalwidget.h"
#include "rulecoloring.h"
#include "settings.h"
#include "sharedrules.h"
#include "textcodec.h"

#include <QApplication>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QWheelEvent>
#include <benchmark/benchmark.h>

namespace {

constexpr int kChunk = 64;
constexpr int kBuffer = 20480;

QByteArray stream(int codec, int kind)
{
    QRandomGenerator random(1);
    QByteArray bytes;
    for (int i = 0; bytes.size() < 1000 * 1000; ++i) {
        if (kind == 0)
            bytes += TextCodec::encode(QStringLiteral("%1 温度 25.3 转速 1500\r\n").arg(i), codec);
        else if (kind == 1)
            bytes += static_cast<char>(random.bounded(256));
        else
            bytes += TextCodec::encode(QString(QChar(0x4E00 + random.bounded(2000))), codec);
    }
    return bytes;
}

// Hands out the stream in chunks, from the start again at its end.
class Feed
{
public:
    explicit Feed(const benchmark::State &state)
        : m_bytes(stream(static_cast<int>(state.range(0)), static_cast<int>(state.range(1))))
    {
        Settings::instance().textCodec = static_cast<int>(state.range(0));
    }
    QByteArray full() { return m_bytes.left(m_at = kBuffer); }
    QByteArray next()
    {
        m_at = m_at + kChunk > m_bytes.size() ? 0 : m_at;
        m_at += kChunk;
        return m_bytes.mid(m_at - kChunk, kChunk);
    }

private:
    QByteArray m_bytes;
    int m_at = 0;
};

void replaceWholeText(benchmark::State &state)
{
    Feed feed(state);
    QTextBrowser browser;
    browser.resize(760, 300);
    browser.show();
    QByteArray held = feed.full();
    for (auto _ : state) {
        held = (held + feed.next()).right(kBuffer);
        browser.setPlainText(TextCodec::decode(held, Settings::instance().textCodec));
        browser.moveCursor(QTextCursor::End);
    }
}

void insertRecvData(benchmark::State &state)
{
    Feed feed(state);
    QtTerminalWidget terminal;
    terminal.resize(760, 300);
    terminal.show();
    terminal.insertRecvData(feed.full(), false, false);
    for (auto _ : state)
        terminal.insertRecvData(feed.next(), false, false);
}

// Text without the bound of the log view; kind 3 is hexadecimal.
void showReceived(benchmark::State &state)
{
    Feed feed(state);
    QtTerminalWidget terminal;
    terminal.resize(760, 300);
    terminal.show();
    for (auto _ : state) {
        terminal.showReceived(feed.next(), QString(), state.range(1) == 3);
        terminal.flushSlice();
    }
}

QByteArray logLines(int first, int count)
{
    const char *const levels[] = {"I", "D", "W", "E", "I"};
    QByteArray lines;
    for (int i = first; i < first + count; ++i)
        lines += QByteArray(levels[i % 5]) + " (" + QByteArray::number(i) +
                 ") sensor: temperature 25.3, speed 1500 rpm, voltage 3.31 V, state running, queue 17\n";
    return lines;
}

ColorRules rulesForBench(int count)
{
    ColorRules rules = commonColorRules();
    for (int i = 0; rules.size() < count; ++i)
        rules.append({{QStringLiteral("speed %1|v\\w+ge %1").arg(i), false, false, true}, 0x40A0FF, false});
    return rules.mid(0, count);
}

void drawColored(benchmark::State &state)
{
    constexpr int kRows = 60;
    SharedRules::instance().store(rulesForBench(static_cast<int>(state.range(0))), true);
    QtTerminalWidget terminal;
    terminal.resize(900, 1000);
    terminal.show();
    QImage image(terminal.size(), QImage::Format_ARGB32_Premultiplied);
    int line = 0;
    terminal.showReceived(logLines(line, kRows), QString(), false);
    terminal.flushSlice();
    for (auto _ : state) {
        if (state.range(1) == 1) {
            state.PauseTiming();
            terminal.clearTerminal();
            terminal.showReceived(logLines(line += kRows, kRows), QString(), false);
            terminal.flushSlice();
            state.ResumeTiming();
        }
        terminal.viewport()->render(&image);
    }
}

// A notch of the wheel with Ctrl at 200,000 lines, and the picture after it; with 1,
// half of the lines take two rows or three; with 2, all lines two.
void zoom(benchmark::State &state)
{
    constexpr int kLines = 199'000;
    QtTerminalWidget terminal;
    terminal.resize(state.range(0) == 2 ? 240 : 900, 600);
    terminal.show();
    QString text;
    for (int i = 0; i < kLines; ++i)
        text +=
            QStringLiteral("%1 temperature 25.3 speed 1500 rpm\n").arg(i) +
            (state.range(0) == 1 && i % 2 == 0 ? QStringLiteral("speed 1500 rpm ").repeated(11) : QString());
    terminal.setTerminalText(text.left(8'000'000));
    QImage image(terminal.size(), QImage::Format_ARGB32_Premultiplied);
    int notch = 1;
    for (auto _ : state) {
        const QPointF at(50, 50);
        QWheelEvent turn(at, at, QPoint(), QPoint(0, 120 * notch), Qt::NoButton, Qt::ControlModifier,
                         Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(terminal.viewport(), &turn);
        terminal.viewport()->render(&image);
        notch = -notch;
    }
    state.counters["lines"] = terminal.document()->blockCount();
}

// Twenty megabytes again, with nothing interpreted, sequences, or symbols.
void showAgain(benchmark::State &state)
{
    QtTerminalWidget terminal;
    terminal.resize(900, 600);
    terminal.show();
    const QByteArray lines = logLines(0, 10'000).replace("\n", "\r\n");
    qint64 bytes = 0;
    for (; bytes < 20'000'000; bytes += lines.size()) {
        terminal.showReceived(lines, QString(), false);
        while (terminal.queuedBytes() > 0)
            terminal.flushSlice();
    }
    ViewOptions view;
    view.text.sequences = state.range(0) == 1;
    view.text.symbols = state.range(0) == 2;
    terminal.setView(view);
    for (auto _ : state) {
        terminal.showAgain();
        while (terminal.received().isMadeAgain())
            terminal.flushSlice();
    }
    state.SetBytesProcessed(state.iterations() * bytes);
}

void cases(benchmark::internal::Benchmark *benchmark)
{
    benchmark->ArgNames({"codec", "kind"})->ArgsProduct({{0, 1}, {0, 1, 2}})->Unit(benchmark::kMicrosecond);
}

BENCHMARK(replaceWholeText)->Apply(cases);
BENCHMARK(insertRecvData)->Apply(cases);
BENCHMARK(showAgain)->ArgName("interpreted")->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(zoom)->ArgNames({"long"})->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(showReceived)
    ->ArgNames({"codec", "kind"})
    ->ArgsProduct({{1}, {0, 1, 2, 3}})
    ->Unit(benchmark::kMicrosecond);

BENCHMARK(drawColored)
    ->ArgNames({"rules", "new"})
    ->ArgsProduct({{0, 1, 9, 20}, {0, 1}})
    ->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    initKorvexResources();
    const QTemporaryDir root;
    AppPaths::setRoot(root.path());
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
