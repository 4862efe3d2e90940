#include "pidexporter.h"

#include "safefile.h"

#include <QElapsedTimer>

namespace {

constexpr int kFirstSliceMs = 20;
constexpr int kSliceMs = 8;
constexpr int kRows = 500; // between two looks at the clock

} // namespace

PidExporter::PidExporter(QObject *parent)
    : QObject(parent)
    , m_next(this)
{
    connect(&m_next, &QTimer::timeout, this, [this] { runSlice(kSliceMs); });
}

void PidExporter::start(const QString &fileName, const PidRecorder::Channels &channels)
{
    m_fileName = fileName;
    m_export = std::make_unique<PidExport>(channels);
    m_next.start();
    runSlice(kFirstSliceMs);
}

void PidExporter::runSlice(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    do {
        if (m_export->advance(kRows)) {
            write();
            return;
        }
    } while (clock.elapsed() < milliseconds);
}

void PidExporter::complete()
{
    if (!m_export)
        return;
    while (!m_export->advance(kRows)) {
    }
    write();
}

void PidExporter::write()
{
    m_next.stop();
    const std::unique_ptr<PidExport> done = std::move(m_export);
    QString error;
    if (!SafeFile::write(m_fileName, done->text(), &error) && error.isEmpty())
        error = QStringLiteral("未知错误");
    emit finished(m_fileName, error);
}
