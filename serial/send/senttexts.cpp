#include "senttexts.h"

#include "safefile.h"

namespace {

constexpr int kSaveDelayMs = 500;
constexpr qint64 kMaxBytes = 16LL * 1024 * 1024; // all entries at their longest

} // namespace

SentTexts::SentTexts(const QString &fileName, QObject *parent)
    : QObject(parent)
    , m_fileName(fileName)
{
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(kSaveDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, &SentTexts::save);
    read();
}

SentTexts::~SentTexts()
{
    if (m_history.isChanged())
        save();
}

void SentTexts::read()
{
    QByteArray content;
    QString error;
    if (SafeFile::read(m_fileName, kMaxBytes, &content, &error))
        m_history.merge(content);
}

void SentTexts::save()
{
    m_saveTimer.stop();
    QByteArray content;
    QString error;
    bool isSaved = SafeFile::read(m_fileName, kMaxBytes, &content, &error);
    if (isSaved) {
        m_history.merge(content);
        isSaved = SafeFile::write(m_fileName, m_history.write(), &error);
    }
    if (isSaved)
        m_history.setWritten();
    else
        emit notify(Notice::error(QStringLiteral("发送历史保存失败：%1").arg(error)));
}

void SentTexts::add(const SendHistory::Entry &entry)
{
    m_position = -1;
    if (m_history.add(entry) && !m_saveTimer.isActive())
        m_saveTimer.start();
}

void SentTexts::remove(const SendHistory::Entry &entry)
{
    m_position = -1;
    m_history.remove(entry);
    m_saveTimer.start();
}

void SentTexts::clear()
{
    m_position = -1;
    m_history.clear();
    m_saveTimer.start();
}

bool SentTexts::step(int direction, bool isHex, QString *text)
{
    const QVector<SendHistory::Entry> &all = entries();
    int at = m_position + direction;
    // What stands there already is no step.
    while (at >= 0 && at < all.size() &&
           (all.at(at).isHex != isHex || (m_position < 0 && all.at(at).text == *text)))
        at += direction;
    if (at >= all.size() || (at < 0 && m_position < 0))
        return false;
    if (m_position < 0)
        m_draft = *text;
    m_position = qMax(at, -1);
    *text = m_position < 0 ? m_draft : all.at(m_position).text;
    return true;
}
