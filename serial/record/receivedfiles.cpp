#include "receivedfiles.h"

#include "bytespool.h"
#include "eventslices.h"
#include "filereason.h"
#include "lineset.h"
#include "linestamp.h"
#include "receivedtext.h"
#include "safefile.h"
#include "textcodec.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextCodec>

#include <algorithm>
#include <utility>

namespace {

constexpr qint64 kPieceBytes = 256 * 1024;
constexpr int kMaxLines = 4096; // read at a time
constexpr int kFewLines = 64;

bool failed(const QFileDevice &file, QString *error)
{
    *error = FileReason::of(file);
    if (error->isEmpty())
        *error = QStringLiteral("缓存文件无法读取");
    return false;
}

bool cleared(QString *error)
{
    *error = QStringLiteral("保存期间接收区被清空");
    return false;
}

class TextFile : public QSaveFile
{
public:
    TextFile(const QString &fileName, int codecIndex)
        : QSaveFile(fileName)
        , m_encoder(TextCodec::codec(codecIndex)->makeEncoder(QTextCodec::IgnoreHeader))
    {
        open(QIODevice::WriteOnly);
    }

    bool write(const QString &text)
    {
        const QByteArray bytes = m_encoder->fromUnicode(text);
        return isOpen() && QSaveFile::write(bytes) == bytes.size();
    }
    bool commit(QString *error) { return isOpen() ? SafeFile::commit(*this, error) : failed(*this, error); }

private:
    std::unique_ptr<QTextEncoder> m_encoder;
};

// Puts its stamp in front of each line of a text that comes in pieces.
class Stamps
{
public:
    Stamps(const LineStore &store, const LineStamp *stamp)
        : m_store(store)
        , m_stamp(stamp)
    {
    }

    void continueAt(qint64 line) { m_line = line; }
    QString added(const QString &text)
    {
        QString stamped;
        for (int begin = 0; begin < text.size();) {
            if (std::exchange(m_isAtLineStart, false))
                stamped += prefix();
            const int end = text.indexOf(QLatin1Char('\n'), begin);
            const int next = end < 0 ? text.size() : end + 1;
            stamped += text.midRef(begin, next - begin);
            m_isAtLineStart = end >= 0;
            m_line += end >= 0 ? 1 : 0;
            begin = next;
        }
        return stamped;
    }

private:
    QString prefix()
    {
        const qint64 before = qMax<qint64>(0, m_line - 1);
        if (before < m_first || m_line >= m_first + m_read.size()) {
            const bool goesOn = before == m_first + m_read.size() - 1;
            m_read = m_store.lines(before, goesOn ? kMaxLines : kFewLines, 1);
            m_first = before;
        }
        if (m_line >= m_first + m_read.size())
            return QString();
        return m_stamp->prefix(m_read.at(int(m_line - m_first)), m_read.at(int(before - m_first)).arrivalMs);
    }

    const LineStore &m_store;
    const LineStamp *m_stamp;
    qint64 m_line = 0;
    bool m_isAtLineStart = true;
    QVector<LineStore::Line> m_read;
    qint64 m_first = 0;
};

} // namespace

namespace ReceivedFiles {

bool saveText(const ReceivedText &received, const LineStamp *stamp, const QString &fileName, int codecIndex,
              QString *error)
{
    TextFile file(fileName, codecIndex);
    EventSlices events;
    Stamps stamps(received.lines(), stamp);
    const int generation = received.lines().generation();
    ReceivedText::Reader reader(received);
    for (QString text = reader.next(); !text.isEmpty(); text = reader.next()) {
        if (!file.write(stamp ? stamps.added(text) : text))
            return failed(file, error);
        events.runIfDue();
        if (received.lines().generation() != generation)
            return cleared(error);
    }
    return reader.failed() ? failed(file, error) : file.commit(error);
}

bool saveLines(const LineStore &store, const LineSet &lines, const LineStamp *stamp, const QString &fileName,
               int codecIndex, QString *error)
{
    TextFile file(fileName, codecIndex);
    EventSlices events;
    Stamps stamps(store, stamp);
    const int generation = store.generation();
    for (qint64 position = 0; position < lines.count();) {
        const qint64 first = lines.at(position);
        int count = 1; // that follow each other
        while (count < kMaxLines && position + count < lines.count() &&
               lines.at(position + count) == first + count)
            ++count;
        const QVector<LineStore::Line> found =
            store.lines(first, count, LineStore::maxExtractedLine, kPieceBytes);
        if (found.isEmpty())
            return failed(file, error);
        QString text;
        for (const LineStore::Line &line : found)
            text += line.text + QLatin1Char('\n');
        stamps.continueAt(first);
        if (!file.write(stamp ? stamps.added(text) : text))
            return failed(file, error);
        position += found.size();
        events.runIfDue();
        if (store.generation() != generation)
            return cleared(error);
    }
    return file.commit(error);
}

bool saveText(const QString &text, const QString &fileName, int codecIndex, QString *error)
{
    TextFile file(fileName, codecIndex);
    return file.write(text) ? file.commit(error) : failed(file, error);
}

bool saveBytes(const ByteSpool &spool, const QString &fileName, QString *error)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return failed(file, error);
    EventSlices events;
    const qint64 size = spool.size(); // what follows is not part of it
    for (qint64 offset = 0; offset < size;) {
        bool unreadable = false;
        const QByteArray bytes = spool.read(offset, qMin(kPieceBytes, size - offset), &unreadable);
        if (unreadable || bytes.isEmpty() || file.write(bytes) != bytes.size())
            return failed(file, error);
        offset += bytes.size();
        events.runIfDue();
    }
    return SafeFile::commit(file, error);
}

QString reserveDatedName(const QString &folder, const QStringList &suffixes)
{
    const QString base = folder + QStringLiteral("/recv_") +
                         QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_hhmmss"));
    const auto exists = [&suffixes](const QString &name) {
        return std::any_of(suffixes.begin(), suffixes.end(),
                           [&name](const QString &suffix) { return QFileInfo::exists(name + suffix); });
    };
    QString name = base;
    for (int number = 2;; ++number) {
        QFile first(name + suffixes.first());
        // Where no file can be made at all, writing reports why.
        if (!exists(name) && (first.open(QIODevice::WriteOnly | QIODevice::NewOnly) || !first.exists()))
            return name;
        name = QStringLiteral("%1_%2").arg(base).arg(number);
    }
}

} // namespace ReceivedFiles
