#include "registercsv.h"

#include "textcodec.h"

namespace {

constexpr int kColumns = 4;
constexpr int kTestedLines = 200;
constexpr int kTestedBytes = 64 * 1024;

QString written(const QString &cell)
{
    return cell.startsWith(QLatin1Char('"')) ? QString::fromUtf8(CsvText::field(cell)) : cell;
}

} // namespace

namespace RegisterCsv {

QStringList titles()
{
    return {QStringLiteral("寄存器编号"), QStringLiteral("寄存器地址"), QStringLiteral("寄存器值"),
            QStringLiteral("描述")};
}

QByteArray write(const QVector<RegisterRow> &rows)
{
    QString text = titles().join(QLatin1Char(',')) + QLatin1Char('\n');
    for (const RegisterRow &row : rows)
        text += written(row.number) + QLatin1Char(',') + written(row.address) + QLatin1Char(',') +
                written(row.value) + QLatin1Char(',') + written(row.description) + QLatin1Char('\n');
    return TextCodec::encode(text, TextCodec::Gb18030);
}

Form formOf(const QByteArray &text)
{
    Form form;
    const QByteArray tested = text.left(kTestedBytes);
    for (const char separator : {',', ';', '\t'}) {
        CsvText::Reader records(tested, separator);
        int lines = 0;
        for (int i = 0; i < kTestedLines && !records.atEnd(); ++i) {
            records.next(0);
            lines += records.fieldCount() >= kColumns ? 1 : 0;
        }
        if (lines > form.lines)
            form = {separator, lines};
    }
    return form;
}

Reader::Reader(const RegisterText &text, int maxRows)
    : RegisterReader(maxRows)
    , m_text(text)
    , m_records(m_text.bytes, formOf(m_text.bytes).separator)
{
}

bool Reader::read(int lines)
{
    for (; lines > 0 && !m_records.atEnd(); --lines) {
        const QVector<QByteArray> cells = m_records.next(kColumns);
        const auto cell = [&](int column) { return RegisterRow::fitted(m_text.decoded(cells.at(column))); };
        const bool isBlank = m_records.fieldCount() == 1 && cells.at(0).isEmpty();
        if (m_records.fieldCount() >= kColumns)
            add(hasRoom() ? RegisterRow{cell(0), cell(1), cell(2), cell(3)} : RegisterRow());
        else if (!isBlank)
            skip(m_records.line());
    }
    return !m_records.atEnd();
}

} // namespace RegisterCsv
