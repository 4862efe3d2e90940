#include "hexsaveform.h"

#include "hexrecordoutput.h"
#include "settings.h"

#include <QFileInfo>
#include <QStringList>

namespace HexSaveForm {

namespace {

const QString kAll = QStringLiteral("所有文件(*.*)");

QString filterOf(HexForm form)
{
    switch (form) {
    case HexForm::IntelHex:
        return QStringLiteral("Intel HEX(*.hex *.ihex)");
    case HexForm::SRecord:
        return QStringLiteral("S-record(*.s19 *.srec *.mot)");
    default:
        return QStringLiteral("原始数据(*.bin)");
    }
}

bool isBinary(const QString &fileName)
{
    return QFileInfo(fileName).suffix().compare(QLatin1String("bin"), Qt::CaseInsensitive) == 0;
}

} // namespace

QString filters(const HexImage &present)
{
    QStringList all;
    for (const HexForm form : {HexForm::Bytes, HexForm::IntelHex, HexForm::SRecord})
        all += filterOf(form);
    if (present.form == HexForm::Bytes) {
        all.prepend(kAll);
    } else {
        all.removeAll(filterOf(present.form));
        all.prepend(filterOf(present.form));
        all.append(kAll);
    }
    return all.join(QStringLiteral(";;"));
}

HexImage imageFor(const QString &fileName, const QString &filter, const HexImage &present)
{
    HexForm form = present.form;
    for (const HexForm chosen : {HexForm::Bytes, HexForm::IntelHex, HexForm::SRecord})
        if (filter == filterOf(chosen))
            form = chosen;
    if (filter == kAll && present.form != HexForm::Bytes && contradicts(fileName, form))
        form = HexForms::ofName(fileName);
    if (form == present.form)
        return present;
    HexImage image;
    image.form = form;
    // Of an S-record, zero stands for none as well.
    if (present.start.value_or(0) != 0)
        image.start = present.start;
    image.segmentStart = present.segmentStart;
    return image;
}

bool contradicts(const QString &fileName, HexForm form)
{
    const HexForm named = HexForms::ofName(fileName);
    return named != form && (named != HexForm::Bytes || isBinary(fileName));
}

std::unique_ptr<HexOutput> output(const HexDocument &document, const HexRuns &runs, const HexImage &image)
{
    const auto &settings = Settings::instance().hexEditPage;
    if (image.form != HexForm::Bytes)
        return std::make_unique<HexRecordOutput>(document, runs, image,
                                                 image.recordLength > 0 ? image.recordLength
                                                                        : settings.recordLength.value());
    if (runs.size() > 1)
        return std::make_unique<HexFilledOutput>(document, runs,
                                                 static_cast<quint8>(settings.fillByte.value()));
    return std::make_unique<HexPlainOutput>(document);
}

} // namespace HexSaveForm
