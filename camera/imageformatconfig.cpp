#include "imageformatconfig.h"

#include "datamanagerwidget.h"
#include "qtmessagetip.h"
#include "settings.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kFewestDigits = 2;
constexpr int kReplyMs = 1000;

constexpr int kFormats[] = {ImageRecord::Jpg,    ImageRecord::Bmp,    ImageRecord::Png,
                            ImageRecord::Rgb565, ImageRecord::Rgb888, ImageRecord::Yuv422};

} // namespace

ImageFormatConfig::ImageFormatConfig(QWidget *parent)
    : QWidget(parent)
    , m_device(new QComboBox(this))
    , m_format(new QComboBox(this))
    , m_width(new QSpinBox(this))
    , m_height(new QSpinBox(this))
    , m_addressLength(new QSpinBox(this))
    , m_valueLength(new QSpinBox(this))
    , m_regId(new QSpinBox(this))
    , m_address(new QLineEdit(this))
    , m_value(new QLineEdit(this))
    , m_read(new QPushButton(QStringLiteral("读取"), this))
    , m_write(new QPushButton(QStringLiteral("写入"), this))
    , m_readTable(new QPushButton(QStringLiteral("读管理"), this))
    , m_writeTable(new QPushButton(QStringLiteral("写管理"), this))
    , m_batch(new RegisterBatch(this))
    , m_replyTimer(this)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    m_formatGroup = buildFormat();
    column->addWidget(m_formatGroup);
    column->addWidget(buildRegister());
    loadDefaults();
    showRecord();
    connectParts();
}

// Its tables are deleted after it, and talk when they end.
ImageFormatConfig::~ImageFormatConfig()
{
    m_batch->disconnect(this);
}

FormGroup *ImageFormatConfig::buildFormat()
{
    auto *group = new FormGroup(QStringLiteral("图像格式"), this);
    m_device->setObjectName(QStringLiteral("comboCameraDevice"));
    m_format->setObjectName(QStringLiteral("comboImageFormat"));
    m_width->setObjectName(QStringLiteral("spinImageWidth"));
    m_height->setObjectName(QStringLiteral("spinImageHeight"));
    m_device->addItems({QStringLiteral("设备1"), QStringLiteral("设备2")});
    m_device->setToolTip(QStringLiteral("图像格式和寄存器请求所属的设备"));
    for (const int format : kFormats)
        m_format->addItem(ImageRecord::formatName(format), format);
    for (QSpinBox *side : {m_width, m_height}) {
        side->setRange(0, 0xFFFF);
        side->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // two in a row
        side->setKeyboardTracking(false);
        side->setToolTip(QStringLiteral("摄像头上报格式后自动更新，也可手动设置"));
    }
    QHBoxLayout *kind = group->addLine();
    group->addTo(kind, QStringLiteral("设备"), m_device);
    group->addTo(kind, QStringLiteral("格式"), m_format);
    kind->setStretch(0, 3);
    kind->setStretch(1, 4);
    group->addRow(QStringLiteral("宽(像素)"), m_width, QStringLiteral("高(像素)"), m_height);
    for (QComboBox *box : {m_device, m_format})
        FormGroup::letShrink(box);
    return group;
}

FormGroup *ImageFormatConfig::buildRegister()
{
    auto *group = new FormGroup(QStringLiteral("寄存器"), this);
    m_addressLength->setObjectName(QStringLiteral("spinAddressLength"));
    m_valueLength->setObjectName(QStringLiteral("spinValueLength"));
    m_regId->setObjectName(QStringLiteral("spinRegId"));
    m_address->setObjectName(QStringLiteral("editRegisterAddress"));
    m_value->setObjectName(QStringLiteral("editRegisterValue"));
    m_read->setObjectName(QStringLiteral("btnReadRegister"));
    m_write->setObjectName(QStringLiteral("btnWriteRegister"));
    m_readTable->setObjectName(QStringLiteral("btnReadTable"));
    m_writeTable->setObjectName(QStringLiteral("btnWriteTable"));
    m_readTable->setToolTip(QStringLiteral("按寄存器表批量读取"));
    m_writeTable->setToolTip(QStringLiteral("按寄存器表批量写入"));
    for (QSpinBox *length : {m_addressLength, m_valueLength}) {
        length->setRange(0, 8);
        length->setToolTip(QStringLiteral("字节数，1到4"));
    }
    m_regId->setRange(0, 0xFFFF);
    m_regId->setToolTip(QStringLiteral("读取请求中的寄存器组编号"));
    static const QRegularExpression hex(QStringLiteral("[0-9A-Fa-f]{2,8}"));
    for (QLineEdit *field : {m_address, m_value}) {
        field->setValidator(new QRegularExpressionValidator(hex, field));
        field->setToolTip(QStringLiteral("十六进制，2到8位"));
    }
    group->addRow(QStringLiteral("寄存器地址长度(字节)"), m_addressLength);
    group->addRow(QStringLiteral("寄存器值长度(字节)"), m_valueLength);
    group->addRow(QStringLiteral("寄存器组编号"), m_regId);
    QHBoxLayout *numbers = group->addLine();
    group->addTo(numbers, QStringLiteral("地址(HEX)"), m_address);
    group->addTo(numbers, QStringLiteral("值(HEX)"), m_value);
    QHBoxLayout *buttons = group->addLine();
    for (QPushButton *button : {m_read, m_write, m_readTable, m_writeTable})
        buttons->addWidget(button, 1);
    return group;
}

void ImageFormatConfig::connectParts()
{
    const auto valueChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    connect(m_device, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ImageFormatConfig::showRecord);
    connect(m_format, QOverload<int>::of(&QComboBox::activated), this, &ImageFormatConfig::takeRecord);
    connect(m_width, valueChanged, this, &ImageFormatConfig::takeRecord);
    connect(m_height, valueChanged, this, &ImageFormatConfig::takeRecord);
    const auto keep = [this](QSpinBox *field, Setting<int> *setting) {
        connect(field, QOverload<int>::of(&QSpinBox::valueChanged), this, [setting](int length) {
            if (length >= 1 && length <= 4)
                setting->set(length);
        });
    };
    keep(m_addressLength, &Settings::instance().camera.addressLength);
    keep(m_valueLength, &Settings::instance().camera.valueLength);
    connect(m_read, &QPushButton::clicked, this, [this] { request(false); });
    connect(m_write, &QPushButton::clicked, this, [this] { request(true); });
    connect(m_readTable, &QPushButton::clicked, this, &ImageFormatConfig::openReadTable);
    connect(m_writeTable, &QPushButton::clicked, this, &ImageFormatConfig::openWriteTable);
    m_replyTimer.setSingleShot(true);
    connect(&m_replyTimer, &QTimer::timeout, this, &ImageFormatConfig::reportUnanswered);
    connect(m_batch, &RegisterBatch::request, this, [this](const RegisterBatch::Item &item) {
        m_batchDevice = device();
        emit signalReadWriteRegister(item.addressText, item.value, m_regId->value());
    });
    connect(m_batch, &RegisterBatch::ended, this, &ImageFormatConfig::endRow);
    connect(m_batch, &RegisterBatch::progressed, this, [this] { showProgress(false); });
    connect(m_batch, &RegisterBatch::finished, this, [this] { showProgress(true); });
}

void ImageFormatConfig::loadDefaults()
{
    const Settings::CameraDefaults &defaults = Settings::instance().camera;
    m_addressLength->setValue(defaults.addressLength);
    m_valueLength->setValue(defaults.valueLength);
}

int ImageFormatConfig::device() const
{
    return m_device->currentIndex();
}

int ImageFormatConfig::addressLength() const
{
    return m_addressLength->value();
}

int ImageFormatConfig::valueLength() const
{
    return m_valueLength->value();
}

// ---- the image format

void ImageFormatConfig::setRecord(int device, const ImageRecord &record)
{
    m_records.at(device == 1 ? 1 : 0) = record;
    if (device == m_device->currentIndex())
        showRecord();
}

// A code that the list does not have shows as no choice.
void ImageFormatConfig::showRecord()
{
    const ImageRecord &shown = record(m_device->currentIndex());
    const QSignalBlocker width(m_width);
    const QSignalBlocker height(m_height);
    m_format->setCurrentIndex(m_format->findData(int(shown.format)));
    m_width->setValue(shown.width);
    m_height->setValue(shown.height);
}

void ImageFormatConfig::takeRecord()
{
    ImageRecord &edited = m_records.at(static_cast<size_t>(m_device->currentIndex()));
    if (m_format->currentIndex() >= 0)
        edited.format = static_cast<quint8>(m_format->currentData().toInt());
    edited.width = static_cast<quint16>(m_width->value());
    edited.height = static_cast<quint16>(m_height->value());
}

// ---- registers

bool ImageFormatConfig::fits(quint32 number, int length) const
{
    return length < 1 || length >= 4 || number >> (8 * length) == 0; // a wrong length is said elsewhere
}

bool ImageFormatConfig::checkHex(QLineEdit *field, int length)
{
    const QString text = field->text();
    if (text.size() < kFewestDigits)
        QtMessageTip::showBelow(field, QStringLiteral("请输入2到8位十六进制数！"));
    else if (!fits(text.toUInt(nullptr, 16), length))
        QtMessageTip::showBelow(field, QStringLiteral("数值超出设置的长度！"));
    else
        return true;
    field->setFocus();
    return false;
}

void ImageFormatConfig::request(bool write)
{
    if (!checkHex(m_address, addressLength()) || (write && !checkHex(m_value, valueLength())))
        return;
    if (!write)
        m_asked = {device(), m_address->text().toUInt(nullptr, 16)};
    emit signalReadWriteRegister(m_address->text(), write ? m_value->text() : QString(), m_regId->value());
    if (!write && m_asked) {  // sent
        m_value->setText({}); // the old one is not what is read
        m_replyTimer.start(kReplyMs);
    }
}

// A late reply is still accepted.
void ImageFormatConfig::reportUnanswered()
{
    if (m_asked)
        emit notify(Notice::error(
            QStringLiteral("寄存器[%1]没有应答！").arg(m_asked->address, 4, 16, QLatin1Char('0')).toUpper()));
}

// A reply tells 16 bits of the address only: what has been asked for comes first.
void ImageFormatConfig::takeReply(int device, quint16 address, quint8 status, quint32 value, int valueLength)
{
    const QString text = QStringLiteral("%1").arg(value, 2 * valueLength, 16, QLatin1Char('0')).toUpper();
    const bool good = status == 0;
    const int row = device == m_batchDevice ? m_batch->waitingRow(address) : -1;
    if (row >= 0) {
        if (good)
            m_tables.at(DataManagerWidget::Read).widget->setValue(row, text);
        m_batch->takeReply(good);
        return;
    }
    if (m_asked && m_asked->device == device && (m_asked->address & 0xFFFF) == address) {
        m_asked.reset();
        m_replyTimer.stop();
        if (good && !m_value->isModified()) // else another value has been typed since
            m_value->setText(text);
        return;
    }
    if (good && device == (m_batch->total() > 0 ? m_batchDevice : this->device()))
        giveToRows(address, text);
}

// A reply that came too late, or that nobody asked for. What has been answered is
// not overwritten, nor what will be asked for.
void ImageFormatConfig::giveToRows(quint16 address, const QString &value)
{
    Table &table = m_tables.at(DataManagerWidget::Read);
    if (!table.widget)
        return;
    for (int row = 0; row < table.widget->rows().size(); ++row) {
        quint32 number = 0;
        if (!table.widget->rows().at(row).addressNumber(&number) || (number & 0xFFFF) != address)
            continue;
        const auto outcome = table.outcomes.find(row);
        const bool isFree =
            outcome == table.outcomes.end() ? !m_batch->isRunning() : *outcome == RegisterBatch::Unanswered;
        if (!isFree)
            continue;
        table.widget->setValue(row, value);
        table.outcomes.insert(row, RegisterBatch::Answered);
        showOutcome(table, row);
        return;
    }
}

void ImageFormatConfig::stopRequests()
{
    m_batch->stop();
    m_asked.reset();
    m_replyTimer.stop();
}

bool ImageFormatConfig::mayClose()
{
    return std::all_of(m_tables.begin(), m_tables.end(),
                       [](const Table &table) { return !table.widget || table.widget->mayClose(); });
}

// ---- register tables

void ImageFormatConfig::openReadTable()
{
    openTable(DataManagerWidget::Read);
}

void ImageFormatConfig::openWriteTable()
{
    openTable(DataManagerWidget::Write);
}

void ImageFormatConfig::openTable(int mode)
{
    DataManagerWidget *&widget = m_tables.at(static_cast<size_t>(mode)).widget;
    if (!widget) {
        widget = new DataManagerWidget(static_cast<DataManagerWidget::Mode>(mode), this);
        connect(widget, &DataManagerWidget::confirmed, this, [this, mode] { startBatch(mode); });
        connect(widget, &DataManagerWidget::stopRequested, this, [this, mode] {
            if (m_running == mode)
                m_batch->stop();
        });
        connect(widget, &DataManagerWidget::signalRefreshData, this,
                [this, mode](int page) { refreshPage(mode, page); });
        connect(widget, &DataManagerWidget::rowsMoved, this,
                [this, mode] { m_tables.at(static_cast<size_t>(mode)).outcomes.clear(); });
    }
    widget->show();
    widget->raise();
    widget->activateWindow();
}

// Rows that are no register, titles for one, are left out; those that do not
// fit the lengths would be cut and are marked instead.
void ImageFormatConfig::startBatch(int mode)
{
    if (m_batch->isRunning()) {
        emit notify(Notice::error(QStringLiteral("另一个寄存器表正在读写，请稍候！")));
        return;
    }
    m_running = mode;
    m_notSent = 0;
    Table &table = m_tables.at(static_cast<size_t>(mode));
    const bool write = mode == DataManagerWidget::Write;
    const QVector<RegisterRow> &rows = table.widget->rows();
    QVector<RegisterBatch::Item> items;
    for (int i = 0; i < rows.size(); ++i) {
        if (table.outcomes.remove(i) > 0)
            showOutcome(table, i);
        quint32 address = 0;
        quint32 value = 0;
        const RegisterRow &row = rows.at(i);
        if (!row.addressNumber(&address))
            continue;
        if ((write && !row.valueNumber(&value)) || !fits(address, addressLength()) ||
            (write && !fits(value, valueLength()))) {
            table.outcomes.insert(i, RegisterBatch::Refused);
            showOutcome(table, i);
            ++m_notSent;
            continue;
        }
        items.append({i, address, row.address, write ? row.value : QString()});
    }
    table.widget->setBusy(true);
    m_batch->start(items);
}

void ImageFormatConfig::endRow(int row, RegisterBatch::Outcome outcome)
{
    Table &table = m_tables.at(static_cast<size_t>(m_running));
    if (outcome == RegisterBatch::Unanswered ||
        (outcome == RegisterBatch::Refused && m_running == DataManagerWidget::Read))
        table.widget->setValue(row, QString()); // the old one was not read now
    table.outcomes.insert(row, outcome);
    showOutcome(table, row);
}

void ImageFormatConfig::showOutcome(const Table &table, int row) const
{
    const auto outcome = table.outcomes.find(row);
    if (outcome == table.outcomes.end())
        table.widget->showMark(row, DataManagerWidget::NoMark);
    else if (*outcome == RegisterBatch::Unanswered)
        table.widget->showMark(row, DataManagerWidget::Unanswered, QStringLiteral("开发板没有应答"));
    else if (*outcome == RegisterBatch::Refused)
        table.widget->showMark(row, DataManagerWidget::Refused,
                               QStringLiteral("开发板报告错误，或地址、值与设置的长度不符"));
    else
        table.widget->showMark(row, DataManagerWidget::Answered);
}

void ImageFormatConfig::refreshPage(int mode, int page)
{
    const Table &table = m_tables.at(static_cast<size_t>(mode));
    const int first = (page - 1) * DataManagerWidget::rowsPerPage;
    for (int row = first; row < first + DataManagerWidget::rowsPerPage; ++row)
        if (table.outcomes.contains(row))
            showOutcome(table, row);
}

void ImageFormatConfig::showProgress(bool finished)
{
    DataManagerWidget *const widget = m_tables.at(static_cast<size_t>(m_running)).widget;
    if (finished)
        widget->setBusy(false);
    QString text = QStringLiteral("%1/%2").arg(m_batch->done()).arg(m_batch->total());
    if (m_running == DataManagerWidget::Read)
        text += QStringLiteral("，无应答 %1，错误 %2")
                    .arg(m_batch->count(RegisterBatch::Unanswered))
                    .arg(m_batch->count(RegisterBatch::Refused));
    if (m_notSent > 0)
        text += QStringLiteral("，未发送 %1").arg(m_notSent);
    const QString state = !finished                            ? QStringLiteral("正在进行 ")
                          : m_batch->done() < m_batch->total() ? QStringLiteral("已停止 ")
                                                               : QStringLiteral("已完成 ");
    widget->showProgress(state + text);
}
