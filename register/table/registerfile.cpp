#include "registerfile.h"

#include "registertablemodel.h"
#include "safefile.h"

#include <QFileInfo>

namespace {

constexpr int kLinesPerSlice = 5000;       // a few milliseconds
constexpr qint64 kMaxFileBytes = 64 << 20; // read in one go; far more than a full table has

} // namespace

bool RegisterFile::save(const QString &fileName, QString *reason) const
{
    if (!SafeFile::write(fileName, RegisterCsv::write(m_table->rowsToSave()), reason))
        return false;
    m_table->setSaved();
    return true;
}

bool RegisterFile::open(const QString &fileName, QString *reason)
{
    // A file without a size may be a pipe or a device, which is never read to its end.
    const QFileInfo info(fileName);
    reason->clear();
    if (!info.exists())
        *reason = QStringLiteral("文件不存在");
    else if (info.size() == 0)
        *reason = QStringLiteral("文件为空");
    else if (info.size() > kMaxFileBytes)
        *reason = QStringLiteral("文件过大");
    QByteArray content;
    if (!reason->isEmpty() || !SafeFile::read(fileName, kMaxFileBytes, &content, reason))
        return false;
    const int room = RegisterTableModel::maxRows - m_table->usedRows();
    m_reader = std::make_unique<RegisterCsv::Reader>(content, room);
    return true;
}

bool RegisterFile::readSlice()
{
    if (m_reader->read(kLinesPerSlice))
        return true;
    m_table->append(m_reader->rows(), beyondLimit() == 0);
    return false;
}
