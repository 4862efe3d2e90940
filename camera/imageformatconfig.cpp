#include "camera/imageformatconfig.h"

#include "app/settings.h"
#include "app/settingskeys.h"
#include "shell/base/qtmessagetip.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

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
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    column->addWidget(buildFormat());
    column->addWidget(buildRegister());
    loadDefaults();
    showRecord();
    connectParts();
}

ImageFormatConfig::~ImageFormatConfig() = default;

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
        side->setKeyboardTracking(false);
        side->setToolTip(QStringLiteral("摄像头上报格式后自动更新，也可手动设置"));
    }
    group->addRow(QStringLiteral("设备"), m_device);
    group->addRow(QStringLiteral("格式"), m_format);
    group->addRow(QStringLiteral("宽度(像素)"), m_width);
    group->addRow(QStringLiteral("高度(像素)"), m_height);
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
    group->addRow(QStringLiteral("寄存器地址长度"), m_addressLength);
    group->addRow(QStringLiteral("寄存器值长度"), m_valueLength);
    group->addRow(QStringLiteral("regId"), m_regId);
    group->addRow(QStringLiteral("地址(HEX)"), m_address);
    group->addRow(QStringLiteral("值(HEX)"), m_value);
    group->addPair(m_read, m_write);
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
    const auto keep = [this](QSpinBox *field, int Settings::CameraDefaults::*value, QLatin1String key) {
        connect(field, QOverload<int>::of(&QSpinBox::valueChanged), this, [value, key](int length) {
            if (length < 1 || length > 4)
                return;
            Settings::instance().camera.*value = length;
            Settings::writeValue(SettingsKeys::Camera::group, key, length);
        });
    };
    keep(m_addressLength, &Settings::CameraDefaults::addressLength, SettingsKeys::Camera::addressLength);
    keep(m_valueLength, &Settings::CameraDefaults::valueLength, SettingsKeys::Camera::valueLength);
    connect(m_read, &QPushButton::clicked, this, [this] { request(false); });
    connect(m_write, &QPushButton::clicked, this, [this] { request(true); });
}

void ImageFormatConfig::loadDefaults()
{
    const Settings::CameraDefaults defaults = Settings::instance().camera;
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

bool ImageFormatConfig::checkHex(QLineEdit *field, int length)
{
    const QString text = field->text();
    const int fewest = 2;
    if (text.size() < fewest)
        QtMessageTip::showBelow(field, QStringLiteral("请输入2到8位十六进制数！"));
    else if (length >= 1 && length < 4 && text.toUInt(nullptr, 16) >> (8 * length) != 0)
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
    emit signalReadWriteRegister(m_address->text(), write ? m_value->text() : QString(), m_regId->value());
}

void ImageFormatConfig::takeReply(quint16 address, quint8 status, quint32 value, int valueLength)
{
    const bool isAsked = (m_address->text().toUInt(nullptr, 16) & 0xFFFF) == address;
    if (status == 0 && isAsked && !m_address->text().isEmpty())
        m_value->setText(QStringLiteral("%1").arg(value, 2 * valueLength, 16, QLatin1Char('0')).toUpper());
}

void ImageFormatConfig::stopBatch()
{
}
