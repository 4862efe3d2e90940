#include "recordingoutput.h"

#include "avifile.h"
#include "filereason.h"
#include "safefile.h"

#include <QBuffer>
#include <QDir>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr int kJpegQuality = 90;
constexpr int kNumberDigits = 6;
constexpr size_t kMaxVideos = 16; // open at a time

using Item = RecordingOutput::Item;
using Result = RecordingOutput::Result;

QString reasonOf(const QFileDevice &file)
{
    const QString reason = FileReason::of(file);
    return reason.isEmpty() ? QStringLiteral("磁盘空间不足或无法写入") : reason;
}

// The file is new: what another recording has made is never written over.
QString create(QFile *file, const QString &fileName)
{
    file->setFileName(fileName);
    if (file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return {};
    return QFile::exists(fileName) ? QStringLiteral("文件已存在") : reasonOf(*file);
}

QString reasonIfGone(const QFile &file)
{
    return !file.isOpen() || QFile::exists(file.fileName()) ? QString()
                                                            : QStringLiteral("文件已被删除或移走");
}

// ---- the bytes as they came

class StreamOutput : public RecordingOutput
{
public:
    explicit StreamOutput(const QString &fileName) { m_lastFile = fileName; }

    Result add(const Item &item) override
    {
        if (!m_file.isOpen()) {
            const QString reason = create(&m_file, m_lastFile);
            if (!reason.isEmpty())
                return {0, true, reason};
        }
        if (!write(item.record))
            return {0, true, reasonOf(m_file)};
        return {item.record.size(), true, {}};
    }

    QString secure() override { return reasonIfGone(m_file); }
    QString finish() override { return reasonIfGone(m_file); }

private:
    bool write(const QByteArray &bytes)
    {
        const qint64 end = m_file.pos();
        if (m_file.write(bytes) == bytes.size())
            return true;
        m_file.resize(end); // no half record
        m_file.seek(end);
        return false;
    }

    QFile m_file;
};

// ---- videos

QByteArray encoded(const QImage &picture, const char *format)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    if (format == QByteArray("jpg"))
        writer.setQuality(kJpegQuality);
    return writer.write(picture) ? buffer.data() : QByteArray();
}

struct Jpeg
{
    QByteArray file;
    QSize size;
};

// A JPEG goes into the video as it came.
Jpeg jpegOf(const CameraFrameData &frame)
{
    if (frame.data.startsWith("\xFF\xD8\xFF")) {
        QBuffer buffer;
        buffer.setData(frame.data);
        const QSize size = QImageReader(&buffer, "jpg").size();
        if (size.isValid())
            return {frame.data, size};
    }
    const QImage picture = FrameShow::decode(frame);
    return {picture.isNull() ? QByteArray() : encoded(picture, "jpg"), picture.size()};
}

class VideoOutput : public RecordingOutput
{
public:
    explicit VideoOutput(const QString &stem)
        : m_stem(stem)
    {
    }

    Result add(const Item &item) override
    {
        const Jpeg jpeg = jpegOf(item.frame);
        if (jpeg.file.isEmpty())
            return {0, false, {}};
        QString reason = choose(item.device == 1 ? 1 : 0, item.frame.sender);
        Video &video = m_videos.back();
        // Another size, or the file is full: in the next one.
        if (video.avi && (video.avi->size() != jpeg.size || !video.avi->hasRoomFor(jpeg.file.size())))
            reason = close(&video);
        if (reason.isEmpty() && !video.avi)
            reason = open(&video, jpeg.size);
        if (reason.isEmpty() && !video.avi->add(jpeg.file, item.timeUs))
            reason = reasonOf(*video.file);
        return {reason.isEmpty() ? jpeg.file.size() : 0, true, reason};
    }

    QString secure() override
    {
        QString reason;
        for (const Video &video : m_videos) {
            if (!video.avi)
                continue;
            video.avi->writeHead();
            if (reason.isEmpty())
                reason = reasonIfGone(*video.file);
        }
        return reason;
    }

    QString finish() override
    {
        QString reason;
        for (Video &video : m_videos) {
            const QString failed = close(&video);
            if (reason.isEmpty())
                reason = failed;
        }
        return reason;
    }

private:
    struct Video
    {
        int device = 0;
        QString sender;
        std::unique_ptr<QFile> file;
        std::unique_ptr<AviFile> avi;
    };

    // Makes it the last one. A board that connects again may be another sender.
    QString choose(int device, const QString &sender)
    {
        const auto video = std::find_if(m_videos.begin(), m_videos.end(), [&](const Video &one) {
            return one.device == device && one.sender == sender;
        });
        if (video != m_videos.end())
            std::rotate(video, video + 1, m_videos.end());
        else
            m_videos.push_back({device, sender, nullptr, nullptr});
        if (m_videos.size() <= kMaxVideos)
            return {};
        const QString reason = close(&m_videos.front());
        m_videos.erase(m_videos.begin());
        return reason;
    }

    QString open(Video *video, QSize size)
    {
        const int number = ++m_files.at(static_cast<size_t>(video->device));
        const QString part = number > 1 ? QStringLiteral("_%1").arg(number) : QString();
        m_lastFile = QStringLiteral("%1_%2%3.avi").arg(m_stem).arg(video->device + 1).arg(part);
        video->file = std::make_unique<QFile>();
        const QString reason = create(video->file.get(), m_lastFile);
        if (reason.isEmpty())
            video->avi = std::make_unique<AviFile>(video->file.get(), size);
        return reason;
    }

    static QString close(Video *video)
    {
        QString reason;
        if (video->avi) {
            const bool isFinished = video->avi->finish();
            if (video->avi->frames() == 0)
                video->file->remove();
            else
                reason = isFinished ? reasonIfGone(*video->file) : reasonOf(*video->file);
        }
        video->avi.reset();
        video->file.reset();
        return reason;
    }

    QString m_stem;
    std::vector<Video> m_videos;  // open; the one written last at the end
    std::array<int, 2> m_files{}; // of each device
};

// ---- single pictures

class PictureOutput : public RecordingOutput
{
public:
    explicit PictureOutput(const QString &stem)
        : m_stem(stem)
    {
    }

    Result add(const Item &item) override
    {
        const QImage picture = FrameShow::decode(item.frame);
        const QByteArray file = picture.isNull() ? QByteArray() : encoded(picture, "png");
        if (file.isEmpty())
            return {0, false, {}};
        if (!QFileInfo::exists(QFileInfo(m_stem).path())) // pulled: not made again on another disk
            return {0, true, QStringLiteral("文件夹已不存在")};
        QString name;
        do {
            name = QStringLiteral("%1_%2_%3.png")
                       .arg(m_stem)
                       .arg(item.device + 1)
                       .arg(++m_number, kNumberDigits, 10, QLatin1Char('0'));
        } while (QFileInfo::exists(name));
        QString reason;
        if (!SafeFile::write(name, file, &reason))
            return {0, true, reason.isEmpty() ? QStringLiteral("磁盘空间不足或无法写入") : reason};
        m_lastFile = name;
        return {file.size(), true, {}};
    }

private:
    QString m_stem;
    int m_number = 0;
};

} // namespace

std::unique_ptr<RecordingOutput> RecordingOutput::make(Kind kind, const QString &folder, const QString &stem)
{
    const QString path = QDir(folder).filePath(stem);
    switch (kind) {
    case Kind::Stream:
        return std::make_unique<StreamOutput>(path + QStringLiteral(".kvcam"));
    case Kind::Video:
        return std::make_unique<VideoOutput>(path);
    default:
        return std::make_unique<PictureOutput>(path);
    }
}
