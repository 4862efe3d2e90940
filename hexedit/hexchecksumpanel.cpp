#include "hexchecksumpanel.h"

#include "hexchecksum.h"
#include "hexcommand.h"
#include "qhexedit.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <memory>

namespace {

constexpr qint64 kSlice = 1 << 18;

QString hexOf(quint64 number, int digits)
{
    return QStringLiteral("0x") + QStringLiteral("%1").arg(number, digits, 16, QLatin1Char('0')).toUpper();
}

void showResult(QLineEdit *field, const QString &text)
{
    field->setText(text);
    field->setCursorPosition(0);
    field->setToolTip(text);
}

} // namespace

HexChecksumPanel::HexChecksumPanel(QHexEdit *edit, QWidget *parent)
    : FormGroup(QStringLiteral("校验"), parent)
    , m_edit(edit)
    , m_compute(new HexCommand(QStringLiteral("计算校验"), {}, this))
    , m_range(new QLabel(this))
{
    auto *compute = new QPushButton(m_compute->text(), this);
    compute->setObjectName(QStringLiteral("btnChecksum"));
    compute->setToolTip(QStringLiteral("计算选中内容的校验，没有选中内容时计算整个文件"));
    m_range->setObjectName(QStringLiteral("labelChecksumRange"));
    m_range->setWordWrap(true);
    addWide(compute);
    addWide(m_range);
    m_crc32 = addResult(QStringLiteral("CRC-32"), "editCrc32");
    m_crc16 = addResult(QStringLiteral("MODBUS"), "editCrc16");
    m_sum = addResult(QStringLiteral("累加和"), "editSum");
    m_md5 = addResult(QStringLiteral("MD5"), "editMd5");
    m_sha256 = addResult(QStringLiteral("SHA-256"), "editSha256");
    m_compute->bind(compute);
    connect(m_compute, &QAction::triggered, this, &HexChecksumPanel::compute);
    connect(edit, &QHexEdit::stateChanged, this, [this] { m_compute->setRefusal(m_edit->busyReason()); });
    connect(edit, &QHexEdit::contentChanged, this, &HexChecksumPanel::clear);
    clear();
}

QLineEdit *HexChecksumPanel::addResult(const QString &name, const char *objectName)
{
    auto *field = new QLineEdit(this);
    field->setObjectName(QLatin1String(objectName));
    field->setReadOnly(true);
    addRow(name, field);
    return field;
}

void HexChecksumPanel::clear()
{
    m_range->setText(QStringLiteral("范围：选中内容或整个文件"));
    for (QLineEdit *field : {m_crc32, m_crc16, m_sum, m_md5, m_sha256})
        showResult(field, QString());
}

void HexChecksumPanel::compute()
{
    const auto range = std::make_shared<Range>();
    range->isAll = m_edit->selectionLength() == 0;
    range->begin = range->at = range->isAll ? 0 : m_edit->selectionBegin();
    range->end = range->isAll ? m_edit->size() : range->begin + m_edit->selectionLength();
    clear();
    m_edit->task()->start({QStringLiteral("正在计算校验"),
                           [this, range] { return addSlice(*range); },
                           [range] {
                               return static_cast<int>((range->at - range->begin) * 1000 /
                                                       qMax<qint64>(range->end - range->begin, 1));
                           },
                           [this, range](bool done) {
                               if (done)
                                   showSums(*range);
                           },
                           {}});
}

SlicedTask::Step HexChecksumPanel::addSlice(Range &range) const
{
    if (range.at < range.end) {
        qint64 inRow = 0;
        const char *bytes = m_edit->document().span(range.at, &inRow);
        const int count = static_cast<int>(qMin(qMin(inRow, kSlice), range.end - range.at));
        range.sums.add(bytes, count);
        range.at += count;
    }
    return range.at < range.end ? SlicedTask::Step::Running : SlicedTask::Step::Done;
}

void HexChecksumPanel::showSums(Range &range)
{
    m_range->setText(range.isAll ? (m_edit->addresses().runCount() > 1
                                        ? QStringLiteral("范围：全部数据，不含各段之间的间隔")
                                        : QStringLiteral("范围：整个文件"))
                                 : QStringLiteral("范围：地址%1起%2字节")
                                       .arg(m_edit->shownAddress(range.begin))
                                       .arg(range.end - range.begin));
    showResult(m_crc32, hexOf(range.sums.crc32(), 8));
    showResult(m_crc16, hexOf(range.sums.crc16Modbus(), 4));
    showResult(m_sum, hexOf(range.sums.sum(), 8));
    showResult(m_md5, QString::fromLatin1(range.sums.md5().toHex()));
    showResult(m_sha256, QString::fromLatin1(range.sums.sha256().toHex()));
}
