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

void HexNotesKeeper::open(const QString &fileName)
{
    m_fileName = fileName;
    m_notes = HexNotes();
    m_isBeside = Settings::instance().hexEditPage.notesBeside;
    m_isForeign = false;
    if (hasFile()) {
        QString reason;
        const QByteArray content = fileOf(fileName).read(&reason);
        m_isBeside = content.isEmpty() ? m_isBeside : fileOf(fileName).isBeside();
        m_isForeign = !reason.isEmpty() || (!content.isEmpty() && !m_notes.fromJson(content));
        if (m_isForeign)
            emit notify(Notice::error(QStringLiteral("书签和校验规则无法读取：%1")
                                          .arg(reason.isEmpty() ? QStringLiteral("文件已损坏") : reason)));
    }
    emit changed();
    emit opened();
}

void HexNotesKeeper::rename(const QString &fileName)
{
    if (m_fileName == fileName)
        return;
    m_fileName = fileName;
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

// What could not be read is not written over.
void HexNotesKeeper::write()
{
    QString reason = QStringLiteral("原有的文件无法读取");
    const QByteArray content = m_notes.isEmpty() ? QByteArray() : m_notes.toJson();
    if (m_isForeign || !fileOf(m_fileName).write(content, m_isBeside, &reason))
        emit notify(Notice::error(QStringLiteral("书签和校验规则无法保存：%1").arg(reason)));
}
