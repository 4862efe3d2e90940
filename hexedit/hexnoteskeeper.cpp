#include "hexnoteskeeper.h"

#include "apppaths.h"
#include "hexnotesfile.h"
#include "settings.h"

namespace {

HexNotesFile fileOf(const QString &fileName)
{
    return HexNotesFile(fileName, AppPaths::confFolder() + QStringLiteral("/notes"));
}

} // namespace

HexNotesKeeper::HexNotesKeeper(QObject *parent)
    : QObject(parent)
{
}

// Nothing where they can't be read.
std::optional<HexNotes> HexNotesKeeper::readKept(QString *reason) const
{
    HexNotes notes;
    const QByteArray content = fileOf(m_fileName).read(reason);
    if (reason->isEmpty() && !content.isEmpty() && !notes.fromJson(content))
        *reason = QStringLiteral("文件已损坏");
    return reason->isEmpty() ? std::optional<HexNotes>(notes) : std::nullopt;
}

void HexNotesKeeper::open(const QString &fileName)
{
    m_fileName = fileName;
    m_notes = m_kept = HexNotes();
    m_isBeside = Settings::instance().hexEditPage.notesBeside;
    if (hasFile()) {
        QString reason;
        const auto kept = readKept(&reason);
        m_notes = m_kept = kept.value_or(HexNotes());
        if (!kept || !m_kept.isEmpty())
            m_isBeside = fileOf(fileName).isBeside();
        if (!kept)
            emit notify(Notice::error(QStringLiteral("书签和校验规则无法读取：%1").arg(reason)));
    }
    emit changed();
    emit opened();
}

void HexNotesKeeper::rename(const QString &fileName)
{
    if (m_fileName == fileName)
        return;
    m_fileName = fileName;
    m_kept = HexNotes();
    if (!m_notes.isEmpty())
        write();
    emit changed();
}

void HexNotesKeeper::change(const HexNotes &notes)
{
    m_notes = notes;
    if (hasFile())
        write();
    emit changed();
}

void HexNotesKeeper::setBeside(bool beside)
{
    Settings::instance().hexEditPage.notesBeside.change(beside);
    if (m_isBeside == beside)
        return;
    m_isBeside = beside;
    if (hasFile() && !m_notes.isEmpty())
        write();
    emit changed();
}

// What can't be read is not written over, and what others have added stays.
void HexNotesKeeper::write()
{
    QString reason;
    const auto kept = readKept(&reason);
    if (kept)
        m_notes.addNew(*kept, m_kept);
    const QByteArray content = m_notes.isEmpty() ? QByteArray() : m_notes.toJson();
    if (kept && fileOf(m_fileName).write(content, m_isBeside, &reason))
        m_kept = m_notes;
    else
        emit notify(Notice::error(QStringLiteral("书签和校验规则无法保存：%1")
                                      .arg(kept ? reason : QStringLiteral("原有的文件无法读取"))));
}
