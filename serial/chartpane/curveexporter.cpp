#include "curveexporter.h"

#include "filereason.h"
#include "safefile.h"

#include <QElapsedTimer>
#include <QSaveFile>
#include <utility>

namespace {

constexpr int kSliceMs = 8;
constexpr int kRows = 100; // between two looks at the clock

} // namespace

CurveExporter::CurveExporter(QObject *parent)
    : QObject(parent)
    , m_next(this)
{
    connect(&m_next, &QTimer::timeout, this, &CurveExporter::runSlice);
}

CurveExporter::~CurveExporter() = default;

void CurveExporter::start(const QString &fileName, const QStringList &names,
                          const QVector<CurvePoints> &curves)
{
    m_table = std::make_unique<CurveTable>(names, curves);
    m_file = std::make_unique<QSaveFile>(fileName);
    if (!m_file->open(QIODevice::WriteOnly)) {
        end(FileReason::of(*m_file));
        return;
    }
    m_next.start();
    runSlice();
}

void CurveExporter::runSlice()
{
    QElapsedTimer clock;
    clock.start();
    while (m_table && clock.elapsed() < kSliceMs)
        advance();
}

void CurveExporter::complete()
{
    while (m_table)
        advance();
}

void CurveExporter::advance()
{
    const bool isComplete = m_table->advance(kRows);
    const QByteArray piece = m_table->takePiece();
    if (m_file->write(piece) != piece.size()) {
        end(FileReason::of(*m_file));
    } else if (isComplete) {
        QString error;
        const bool isWritten = SafeFile::commit(*m_file, &error);
        end(isWritten || !error.isEmpty() ? error : QStringLiteral("未知错误"));
    }
}

void CurveExporter::end(const QString &error)
{
    m_next.stop();
    m_table.reset();
    const QString fileName = std::exchange(m_file, nullptr)->fileName();
    emit finished(fileName, error);
}
