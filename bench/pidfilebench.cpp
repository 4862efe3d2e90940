// What a PID session costs in a file, of five loops of a simulated board that report at
// 1 kHz with noise:
//   pidfilebench [MILLIONS_OF_SAMPLES [LIMIT]]
// Bytes of a sample, samples a second of saving, opening and exporting, and the longest
// step between two looks at the clock. With more than the limit (50, in millions), the
// file is longer than what is recorded and kept.

#include "pidboard.h"
#include "pidsession.h"
#include "pidsessionreader.h"
#include "pidsessionwriter.h"
#include "pidtimetable.h"
#include "processfigures.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryFile>

#include <cstdio>

namespace {

constexpr int kRecorded = 2000000;

// Read up to 0.2 ms after each millisecond.
void record(PidRecorder *recorder)
{
    Boardsim::PidBoard board(1000, 2, 1);
    PidSession session(recorder);
    session.setOpen(true);
    QObject::connect(&session, &PidSession::command, &session,
                     [&board](PidFrame::Command command, int channel, const QByteArray &payload) {
                         board.receive(PidFrame::build(command, quint8(channel + 1), payload));
                     });
    qint64 us = 1700000000000000;
    recorder->setOrigin(us);
    for (int channel = 0; channel < PidRecorder::channels; ++channel)
        session.start(channel, us);
    quint32 random = 1;
    for (int ms = 0; recorder->held() < kRecorded; ++ms) {
        random = random * 1664525 + 1013904223;
        us += 1000;
        if (ms % 2000 == 0)
            session.sendTarget(ms / 2000 % 5, ms / 10000 % 2 == 0 ? 800 : 200, us);
        board.advance(1);
        session.receive(board.takeOutput(), us + (random >> 24) * 200 / 256);
    }
}

template <class Worker> void measure(const char *name, qint64 samples, Worker *worker)
{
    QElapsedTimer all, step;
    all.start();
    qint64 longest = 0;
    bool isComplete = false;
    while (!isComplete) {
        step.start();
        isComplete = worker->advance(SampleStore::blockSamples);
        longest = qMax(longest, step.nsecsElapsed());
    }
    const auto ns = double(all.nsecsElapsed());
    std::printf("%s: %.2f million samples a second, longest step %.2f ms%s\n", name,
                double(samples) * 1e3 / ns, double(longest) / 1e6,
                worker->error().isEmpty() ? "" : ", FAILED");
}

// The same samples again and again, later each time.
void writeLong(const PidRecorder &recorder, qint64 samples, QIODevice *file)
{
    using namespace PidSessionFormat;
    file->write(head());
    const qint64 rounds = samples / recorder.held();
    const qint64 length = recorder.record(0).last().us - recorder.record(0).firstUs() + 1000;
    for (qint64 round = 0; round < rounds; ++round) {
        PidRecordRange range(&recorder);
        Samples piece;
        while ((piece.channel = range.earliest()) >= 0) {
            piece.samples = range.takeBlock(piece.channel, &piece.first);
            piece.first += round * range.count(piece.channel);
            for (PidSample &sample : piece.samples)
                sample.us += round * length;
            file->write(chunk(Chunk::Samples, samplesPayload(piece)));
        }
    }
    file->write(chunk(Chunk::End, endPayload(rounds * recorder.held(), 0)));
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const qint64 million = 1000000;
    const qint64 wanted = argc > 1 ? atoll(argv[1]) * million : 0;
    PidRecorder recorder, opened;
    opened.setLimit(argc > 2 ? atoll(argv[2]) * million : 50 * million);
    record(&recorder);
    QTemporaryFile file, table;
    if (!file.open() || !table.open())
        return 1;
    if (wanted > 0) {
        writeLong(recorder, wanted, &file);
    } else {
        PidSessionWriter writer(&recorder, {}, &file);
        measure("saving", recorder.held(), &writer);
        file.flush();
        std::printf("%.2f bytes a sample\n", double(file.size()) / double(recorder.held()));
        PidTimeTable rows(&recorder, {}, &table);
        measure("table", recorder.held(), &rows);
        table.flush();
        std::printf("%.1f bytes a row\n", double(table.size()) / double(recorder.held()));
    }
    file.seek(0);
    PidSessionReader reader(&file, &opened);
    measure("opening", qMax(wanted, recorder.held()), &reader);
    std::printf("file of %.1f MB; kept %lld of %lld samples\n", double(file.size()) / 1e6,
                static_cast<long long>(opened.held()),
                static_cast<long long>(opened.held() + opened.dropped()));
    std::printf("resident memory %.0f MB\n", ProcessFigures::residentMegabytes());
    return 0;
}
