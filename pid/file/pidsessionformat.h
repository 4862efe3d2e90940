#pragma once

// The bytes of a session file (docs/protocols/pid-session.md): a head, then chunks with
// a type, a length and a checksum each. Here are the payloads of the chunks; the writer
// and the reader put them into a file. What is read is within the limits below, or the
// payload counts as damaged.

#include "pidrecorder.h"
#include "pidsessioninfo.h"

#include <QByteArray>
#include <QVector>

namespace PidSessionFormat {

constexpr int version = 1;
constexpr int headBytes = 12;
constexpr int chunkHeadBytes = 8;                     // type and length
constexpr int chunkTailBytes = 4;                     // checksum
constexpr int maxPayload = 262144;                    // bytes
constexpr int maxSamples = SampleStore::blockSamples; // of a chunk
constexpr int maxEvents = 4096;
constexpr int maxRuns = 64;
constexpr int maxText = 200;                  // characters of a name
constexpr qint64 maxUs = 253402300799999999;  // times: 1970 to the end of 9999
constexpr qint64 maxNumber = qint64(1) << 60; // of a sample

using Counts = std::array<qint64, PidFrame::channels>;

enum class Chunk { Info, Runs, Events, Samples, End, Unknown };
QByteArray typeOf(Chunk chunk); // four characters
Chunk chunkOf(const QByteArray &type);

QByteArray head();
// The version of a head; 0 where it is none.
int versionOf(const QByteArray &head);
// All bytes of a chunk.
QByteArray chunk(Chunk type, const QByteArray &payload);
// Of a payload, from the first bytes of a chunk; not checked.
quint32 lengthOf(const QByteArray &chunkHead);
// Whether the checksum at the end of a chunk is right.
bool isIntact(const QByteArray &chunk);

// A name from outside: one line of at most maxText visible characters.
QString cleaned(const QString &text);

// ---- payloads. The functions that read return false for a damaged one.

// With the number of samples that each channel is going to have.
QByteArray infoPayload(const PidSessionInfo &info, const Counts &samples);
bool readInfo(const QByteArray &payload, PidSessionInfo *info, Counts *samples);

// Samples with the number of the first, counted from the first of the channel in the file.
struct Samples
{
    int channel = 0;
    qint64 first = 0;
    QVector<PidSample> samples; // times do not decrease
};
QByteArray samplesPayload(const Samples &samples);
bool readSamples(const QByteArray &payload, Samples *samples);

// Events without a channel or with gains that are not finite numbers are left out and
// counted.
QByteArray eventsPayload(const QVector<PidEvent> &events);
bool readEvents(const QByteArray &payload, QVector<PidEvent> *events, int *leftOut);

// Runs that have ended, without identities; their samples numbered as above. Runs without
// a channel are left out and counted; gains that are no finite numbers become 0.
QByteArray runsPayload(const QVector<PidRun> &runs);
bool readRuns(const QByteArray &payload, QVector<PidRun> *runs, int *leftOut);

// How many samples were written, and how many were gone before that.
QByteArray endPayload(qint64 samples, qint64 leftOut);
bool readEnd(const QByteArray &payload, qint64 *samples, qint64 *leftOut);

} // namespace PidSessionFormat
