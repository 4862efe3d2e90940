#include "registerfile.h"

#include "registercsv.h"
#include "registerlist.h"
#include "registertablemodel.h"
#include "safefile.h"

#include <QFileInfo>

namespace {

constexpr int kLinesPerSlice = 1000;       // a few milliseconds
constexpr qint64 kMaxFileBytes = 64 << 20; // read in one go; far more than a full table has

} // namespace

bool RegisterFile::save(const QString &fileName, QString *reason) const
{
    if (!SafeFile::write(fileName, RegisterCsv::write(m_table->rowsToSave()), reason))
        return false;
    m_table->setSaved();
    return true;
}

bool RegisterFile::isC(const QString &fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    return suffix == QLatin1String("c") || suffix == QLatin1String("h");
}

bool RegisterFile::saveAsC(const QString &fileName, int addressLength, int valueLength, QString *reason) const
{
    const QFileInfo info(fileName);
    const bool isHeader = info.suffix().compare(QLatin1String("h"), Qt::CaseInsensitive) == 0;
    const RegisterList::Written written =
        RegisterList::write(m_table->rowsToSave(), isHeader ? RegisterList::Header : RegisterList::Array,
                            info.completeBaseName(), addressLength, valueLength);
    if (written.pairs == 0) {
        *reason = QStringLiteral("表中没有同时填写地址和值的行");
        return false;
    }
    if (!SafeFile::write(fileName, written.text, reason))
        return false;
    if (written.hasAll)
        m_table->setSaved();
    return true;
}

bool RegisterFile::open(const QString &fileName, bool isList, QString *reason)
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
    const RegisterText text(content);
    m_isList = isList || RegisterList::isList(text);
    if (m_isList) {
        auto list = std::make_unique<RegisterList::Reader>(text, room);
        m_isHexadecimal = list->isHexadecimal();
        m_reader = std::move(list);
    } else {
        m_reader = std::make_unique<RegisterCsv::Reader>(text, room);
    }
    return true;
}

bool RegisterFile::readSlice()
{
    if (m_reader->read(kLinesPerSlice))
        return true;
    m_table->append(m_reader->rows(), m_reader->beyondLimit() == 0);
    return false;
}
