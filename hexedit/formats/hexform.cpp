#include "hexform.h"

#include "hexrecord.h"

#include <QFileInfo>
#include <algorithm>

namespace HexForms {

HexForm ofName(const QString &fileName)
{
    static const QStringList intelHex{QStringLiteral("hex"), QStringLiteral("ihex"), QStringLiteral("ihx")};
    static const QStringList sRecord{QStringLiteral("srec"), QStringLiteral("s19"), QStringLiteral("s28"),
                                     QStringLiteral("s37"),  QStringLiteral("mot"), QStringLiteral("s")};
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    return intelHex.contains(suffix)  ? HexForm::IntelHex
           : sRecord.contains(suffix) ? HexForm::SRecord
                                      : HexForm::Bytes;
}

HexForm ofContent(const QByteArray &beginning, const QString &fileName)
{
    const auto isBlank = [](char character) {
        return character == ' ' || character == '\t' || character == '\r' || character == '\n';
    };
    const auto begin = std::find_if_not(beginning.begin(), beginning.end(), isBlank);
    const auto limit = begin + std::min<std::ptrdiff_t>(beginning.end() - begin, HexRecord::maxLine + 1);
    const auto end = std::find_if(begin, limit, isBlank);
    for (const HexForm form : {HexForm::IntelHex, HexForm::SRecord}) {
        HexRecord record;
        if (HexRecord::parse(form, begin, static_cast<int>(end - begin), &record) ==
                HexRecord::Problem::None &&
            (record.isSumRight || ofName(fileName) == form))
            return form;
    }
    return HexForm::Bytes;
}

QString name(HexForm form)
{
    return form == HexForm::IntelHex  ? QStringLiteral("Intel HEX")
           : form == HexForm::SRecord ? QStringLiteral("S-record")
                                      : QString();
}

} // namespace HexForms
