#include "logfiles.h"

#include "filereason.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <tuple>

namespace {

constexpr qint64 kCheckPeriodMs = 1000;

} // namespace

LogFiles::LogFiles(const Target &target)
    : m_target(target)
{
    const QFileInfo info(target.fileName);
    m_suffix = info.suffix().isEmpty() ? QString() : QLatin1Char('.') + info.suffix();
    m_stem = target.fileName.left(target.fileName.size() - m_suffix.size());
    // A total without a limit for one file could only be kept by removing that.
    if (target.maxTotalBytes > 0)
        m_target.maxBytes =
            target.maxBytes > 0 ? qMin(target.maxBytes, target.maxTotalBytes / 2) : target.maxTotalBytes / 4;
}

QString LogFiles::nameOf(int number) const
{
    return number == 1 ? m_stem + m_suffix : QStringLiteral("%1_%2%3").arg(m_stem).arg(number).arg(m_suffix);
}

bool LogFiles::isFull(qint64 bytes, qint64 nowMs) const
{
    return m_size > 0 && ((m_target.maxBytes > 0 && m_size + qMax<qint64>(1, bytes) > m_target.maxBytes) ||
                          (m_target.maxMs > 0 && nowMs - m_beganMs >= m_target.maxMs));
}

QString LogFiles::prepare(qint64 bytes, qint64 nowMs)
{
    if (m_file && isFull(bytes, nowMs)) {
        m_parts.append({m_file->fileName(), m_size});
        m_file.reset();
    }
    // Where someone removes the file, some systems go on writing into nothing.
    if (m_file && qAbs(nowMs - m_checkedMs) >= kCheckPeriodMs) {
        m_checkedMs = nowMs;
        if (!QFileInfo::exists(m_file->fileName()))
            m_file.reset();
    }
    if (m_file)
        return {};
    const QString reason = open(bytes, nowMs);
    if (reason.isEmpty())
        removeOldest();
    return reason;
}

QString LogFiles::open(qint64 bytes, qint64 nowMs)
{
    m_size = 0;
    m_beganMs = nowMs;
    m_checkedMs = nowMs;
    if (m_number == 0) {
        findParts();
        if (!m_target.isAppended)
            m_stem += QDateTime::fromMSecsSinceEpoch(nowMs).toString(QStringLiteral("_yyyyMMdd_hhmmss"));
        else if (m_number > 0 && openLastPart(bytes))
            return {};
    }
    // Another copy of the program may write to the same name.
    for (int number = m_number + 1;; ++number) {
        auto file = std::make_unique<QFile>(nameOf(number));
        if (file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
            m_number = number;
            m_file = std::move(file);
            return {};
        }
        if (!file->exists()) {
            const QString reason = FileReason::of(*file);
            return reason.isEmpty() ? QStringLiteral("无法创建文件") : reason;
        }
    }
}

// Unless it is full.
bool LogFiles::openLastPart(qint64 bytes)
{
    auto file = std::make_unique<QFile>(m_parts.last().fileName);
    m_size = m_parts.last().bytes;
    if (isFull(bytes, m_beganMs) || !file->open(QIODevice::Append | QIODevice::Unbuffered)) {
        m_size = 0;
        return false;
    }
    m_parts.removeLast();
    m_file = std::move(file);
    return true;
}

// Those of earlier sessions, and the number of the last one.
void LogFiles::findParts()
{
    const QFileInfo named(m_stem + m_suffix);
    const QString session = m_target.isAppended ? QString() : QStringLiteral("_\\d{8}_\\d{6}");
    const QRegularExpression pattern(QStringLiteral("^%1(%2)(?:_([1-9]\\d{0,8}))?%3$")
                                         .arg(QRegularExpression::escape(QFileInfo(m_stem).fileName()),
                                              session, QRegularExpression::escape(m_suffix)));
    using Found = std::tuple<QString, int, QString, qint64>; // session, number, name, bytes
    QVector<Found> found;
    const QFileInfoList files = named.dir().entryInfoList(QDir::Files);
    for (const QFileInfo &file : files) {
        const QRegularExpressionMatch match = pattern.match(file.fileName());
        if (match.hasMatch())
            found.append(
                Found(match.captured(1), qMax(1, match.captured(2).toInt()), file.filePath(), file.size()));
    }
    std::sort(found.begin(), found.end());
    m_parts.clear();
    for (const auto &[time, number, name, bytes] : qAsConst(found)) {
        m_parts.append({name, bytes});
        m_number = m_target.isAppended ? number : 0;
    }
}

void LogFiles::removeOldest()
{
    if (m_target.maxTotalBytes <= 0)
        return;
    qint64 total = m_size + m_target.maxBytes;
    for (const Part &part : qAsConst(m_parts))
        total += part.bytes;
    while (total > m_target.maxTotalBytes && !m_parts.isEmpty()) {
        const Part part = m_parts.takeFirst();
        QFile::remove(part.fileName); // where that fails, it stays
        total -= part.bytes;
    }
}

qint64 LogFiles::write(const char *bytes, qint64 size)
{
    qint64 written = 0;
    while (written < size) {
        const qint64 count = m_file->write(bytes + written, size - written);
        if (count <= 0)
            break;
        written += count;
    }
    m_size += written;
    return written;
}

QString LogFiles::reason() const
{
    const QString reason = m_file ? FileReason::of(*m_file) : QString();
    return reason.isEmpty() ? QStringLiteral("写入失败") : reason;
}
