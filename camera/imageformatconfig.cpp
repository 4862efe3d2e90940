#include "imageformatconfig.h"

#include "datamanagerwidget.h"
#include "fieldmemory.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "qtmessagetip.h"
#include "safefile.h"
#include "settings.h"

#include <QAction>
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

constexpr int kMinDigits = 2;
const auto kValueTip = QStringLiteral("十六进制，2到8位");

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
    , m_session(this)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    m_formatGroup = buildFormat();
    column->addWidget(m_formatGroup);
    column->addWidget(buildRegister());
    loadDefaults();
    showRecord();
    setTarget();
    connectParts();
    connectSession();
}

// The dialogs show the session's tables.
ImageFormatConfig::~ImageFormatConfig()
{
    m_session.disconnect(this);
    qDeleteAll(m_tables);
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
    for (const PixelFormat &format : PixelFormat::all()) {
        if (format.isAnnounced())
            m_format->addItem(format.name, format.code);
    }
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
    m_writeTable->setToolTip(QStringLiteral("按寄存器表批量写入；右键可选择回读校验"));
    m_write->setToolTip(QStringLiteral("右键可选择写入后回读校验"));
    for (QSpinBox *length : {m_addressLength, m_valueLength}) {
        length->setRange(0, 8);
        length->setToolTip(QStringLiteral("字节数，1到4"));
    }
    m_regId->setRange(0, 0xFFFF);
    m_regId->setToolTip(QStringLiteral("读取请求中的寄存器组编号"));
    static const QRegularExpression hex(QStringLiteral("[0-9A-Fa-f]{2,8}"));
    for (QLineEdit *field : {m_address, m_value}) {
        field->setValidator(new QRegularExpressionValidator(hex, field));
        field->setToolTip(kValueTip);
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
    addReadBackAction();
    return group;
}

void ImageFormatConfig::addReadBackAction()
{
    Setting<bool> &setting = Settings::instance().cameraPage.verifiesWrites;
    auto *action = m_readsBack = new QAction(QStringLiteral("写入后回读校验"), this);
    action->setObjectName(QStringLiteral("actionVerifyWrites"));
    action->setCheckable(true);
    action->setChecked(setting);
    m_session.setReadsBack(setting);
    for (QPushButton *button : {m_write, m_writeTable}) {
        button->setContextMenuPolicy(Qt::ActionsContextMenu);
        button->addAction(action);
    }
    connect(action, &QAction::toggled, this, [this](bool isOn) {
        Settings::instance().cameraPage.verifiesWrites.set(isOn);
        m_session.setReadsBack(isOn);
    });
}

void ImageFormatConfig::connectParts()
{
    const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
    const auto valueChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    connect(m_device, indexChanged, this, &ImageFormatConfig::showRecord);
    connect(m_device, indexChanged, this, &ImageFormatConfig::setTarget);
    connect(m_regId, valueChanged, this, &ImageFormatConfig::setTarget);
    connect(m_format, QOverload<int>::of(&QComboBox::activated), this, &ImageFormatConfig::storeRecord);
    connect(m_width, valueChanged, this, &ImageFormatConfig::storeRecord);
    connect(m_height, valueChanged, this, &ImageFormatConfig::storeRecord);
    storeLength(m_addressLength, &Settings::instance().camera.addressLength);
    storeLength(m_valueLength, &Settings::instance().camera.valueLength);
    connect(m_read, &QPushButton::clicked, this, &ImageFormatConfig::readRegister);
    connect(m_write, &QPushButton::clicked, this, &ImageFormatConfig::writeRegister);
    connect(m_readTable, &QPushButton::clicked, this, &ImageFormatConfig::openReadTable);
    connect(m_writeTable, &QPushButton::clicked, this, &ImageFormatConfig::openWriteTable);
}

void ImageFormatConfig::storeLength(QSpinBox *field, Setting<int> *setting)
{
    const auto valueChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    connect(field, valueChanged, this, &ImageFormatConfig::setTarget);
    connect(field, valueChanged, this, [setting](int length) {
        if (length >= 1 && length <= 4)
            setting->set(length);
    });
}

void ImageFormatConfig::connectSession()
{
    m_session.setClock([] { return QDateTime::currentDateTime(); });
    connect(&m_session, &RegisterSession::requested, this, [this](const RegisterSession::Request &request) {
        const auto text = [](quint32 number) { return QString::number(number, 16); };
        emit signalReadWriteRegister(text(request.address), request.value ? text(*request.value) : QString(),
                                     m_regId->value());
    });
    connect(&m_session, &RegisterSession::valueRead, this,
            [this](const QString &value, const QString &sender) {
                if (m_value->isModified()) // another value has been typed since
                    return;
                m_value->setText(value);
                if (!sender.isEmpty())
                    m_value->setToolTip(kValueTip + QStringLiteral("\n应答者：%1").arg(sender));
            });
    connect(&m_session, &RegisterSession::readBack, this, &ImageFormatConfig::showReadBack);
    connect(&m_session, &RegisterSession::unanswered, this, [this](quint32 address) {
        emit notify(Notice::error(
            QStringLiteral("寄存器[%1]没有应答！").arg(address, 4, 16, QLatin1Char('0')).toUpper()));
    });
    connect(&m_session, &RegisterSession::progressed, this,
            [this](RegisterSession::Access access) { showProgress(access); });
    connect(&m_session, &RegisterSession::finished, this, [this](RegisterSession::Access access) {
        m_tables.at(access)->setBusy(false);
        showProgress(access);
    });
}

void ImageFormatConfig::loadDefaults()
{
    const Settings::CameraDefaults &defaults = Settings::instance().camera;
    m_addressLength->setValue(defaults.addressLength);
    m_valueLength->setValue(defaults.valueLength);
}

void ImageFormatConfig::remember(FieldMemory *memory)
{
    Settings::CameraPage &kept = Settings::instance().cameraPage;
    memory->add(m_regId, &kept.registerSet);
    memory->add(m_address, &kept.registerAddress);
    memory->add(m_value, &kept.registerValue);
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

void ImageFormatConfig::storeRecord()
{
    ImageRecord &edited = m_records.at(static_cast<size_t>(m_device->currentIndex()));
    if (m_format->currentIndex() >= 0)
        edited.format = static_cast<quint8>(m_format->currentData().toInt());
    edited.width = static_cast<quint16>(m_width->value());
    edited.height = static_cast<quint16>(m_height->value());
    emit recordEdited(m_device->currentIndex());
}

// ---- registers

void ImageFormatConfig::setTarget()
{
    m_session.setTarget({device(), addressLength(), valueLength(), m_regId->value()});
    for (DataManagerWidget *table : m_tables)
        if (table)
            table->setLengths(addressLength(), valueLength());
}

bool ImageFormatConfig::checkHex(QLineEdit *field, int length)
{
    const QString text = field->text();
    if (text.size() < kMinDigits)
        QtMessageTip::showBelow(field, QStringLiteral("请输入2到8位十六进制数！"));
    else if (!RegisterSession::fits(text.toUInt(nullptr, 16), length))
        QtMessageTip::showBelow(field, QStringLiteral("数值超出设置的长度！"));
    else
        return true;
    field->setFocus();
    return false;
}

void ImageFormatConfig::readRegister()
{
    if (checkHex(m_address, addressLength()) && m_session.read(m_address->text().toUInt(nullptr, 16)))
        clearValue(); // the old one is not what is read
}

void ImageFormatConfig::writeRegister()
{
    if (checkHex(m_address, addressLength()) && checkHex(m_value, valueLength()))
        m_session.write(m_address->text().toUInt(nullptr, 16), m_value->text().toUInt(nullptr, 16));
}

void ImageFormatConfig::clearValue()
{
    m_value->setText({});
    m_value->setToolTip(kValueTip);
}

void ImageFormatConfig::showReadBack(quint32 address, quint32 written, const RegisterSession::Reply &reply)
{
    const auto hex = [](quint32 number, int digits) {
        return QStringLiteral("%1").arg(number, digits, 16, QLatin1Char('0')).toUpper();
    };
    const QString what = QStringLiteral("寄存器[%1]写入%2，").arg(hex(address, 4), hex(written, 2));
    const QString from = reply.sender.isEmpty() ? QString() : QStringLiteral("（%1）").arg(reply.sender);
    if (!reply.isGood)
        emit notify(Notice::error(what + QStringLiteral("回读时开发板报告错误！") + from));
    else if (!reply.isValue(written))
        emit notify(Notice::error(what + QStringLiteral("回读为%1！").arg(reply.value) + from));
    else
        emit notify(Notice::information(what + QStringLiteral("回读一致！") + from));
}

bool ImageFormatConfig::addReply(const QString &sender, int device, quint16 address, quint8 status,
                                 quint32 value, int valueLength)
{
    const QString text = QStringLiteral("%1").arg(value, 2 * valueLength, 16, QLatin1Char('0')).toUpper();
    return m_session.addReply({device, address, status == 0, text, sender});
}

void ImageFormatConfig::stopRequests()
{
    m_session.stopAll();
}

bool ImageFormatConfig::mayClose()
{
    return std::all_of(m_tables.begin(), m_tables.end(),
                       [](DataManagerWidget *table) { return !table || table->mayClose(); });
}

// ---- register tables

void ImageFormatConfig::openReadTable()
{
    openTable(RegisterSession::Read);
}

void ImageFormatConfig::openWriteTable()
{
    openTable(RegisterSession::Write);
}

void ImageFormatConfig::openTable(RegisterSession::Access access)
{
    DataManagerWidget *&table = m_tables.at(access);
    if (!table) {
        const auto mode =
            access == RegisterSession::Read ? DataManagerWidget::Read : DataManagerWidget::Write;
        table = new DataManagerWidget(mode, m_session.table(access), this);
        table->setLengths(addressLength(), valueLength());
        if (access == RegisterSession::Write)
            table->addOption(m_readsBack);
        connect(table, &DataManagerWidget::confirmed, this, [this, access] { startTable(access); });
        connect(table, &DataManagerWidget::rowsConfirmed, this, [this, access](const QVector<int> &rows) {
            startTable(access, RegisterSession::Transfer, rows);
        });
        connect(table, &DataManagerWidget::compareRequested, this,
                [this, access] { startTable(access, RegisterSession::Compare); });
        connect(table, &DataManagerWidget::readTableRequested, this, &ImageFormatConfig::copyReadTable);
        connect(table, &DataManagerWidget::reportRequested, this, [this, access] { saveReport(access); });
        connect(table, &DataManagerWidget::stopRequested, this, [this, access] { m_session.stop(access); });
    }
    table->show();
    table->raise();
    table->activateWindow();
}

void ImageFormatConfig::startTable(RegisterSession::Access access, RegisterSession::Task task,
                                   const std::optional<QVector<int>> &rows)
{
    const Settings::CameraPage &settings = Settings::instance().cameraPage;
    if (!m_session.isRunning())
        m_session.setBatch({settings.batchRetries, settings.batchDelay, settings.batchStops});
    if (m_session.start(access, task, rows))
        m_tables.at(access)->setBusy(true);
    else
        emit notify(Notice::error(QStringLiteral("另一个寄存器表正在读写，请稍候！")));
}

void ImageFormatConfig::copyReadTable()
{
    DataManagerWidget *const writes = m_tables.at(RegisterSession::Write);
    if (m_session.isRunning())
        writes->showProgress(QStringLiteral("读表正在读取，请稍候"));
    else
        writes->copyRows(m_session.table(RegisterSession::Read)->rowsToSave());
}

void ImageFormatConfig::saveReport(RegisterSession::Access access)
{
    DataManagerWidget *const table = m_tables.at(access);
    if (m_session.isRunning() || m_session.access() != access || m_session.report().isEmpty())
        return table->showProgress(m_session.isRunning() ? QStringLiteral("结束之后才有报告")
                                                         : QStringLiteral("此表没有最近一次读写的报告"));
    const QString name = QtFileDialog::getSaveFileName(table, QStringLiteral("保存读写报告"), QString(),
                                                       QStringLiteral("*.csv"));
    QString reason;
    if (name.isEmpty())
        return;
    if (SafeFile::write(name, m_session.report().csv(), &reason))
        return table->showProgress(QStringLiteral("报告已保存"));
    table->showProgress(QStringLiteral("保存报告失败：%1").arg(reason));
    QtMessageBox::warning(table, QStringLiteral("告警"), QStringLiteral("文件打开失败，请重试！"));
}

void ImageFormatConfig::showProgress(RegisterSession::Access access)
{
    const RegisterSession::Progress &progress = m_session.progress();
    QString text = QStringLiteral("%1/%2").arg(progress.done).arg(progress.total);
    if (progress.task == RegisterSession::Compare)
        text += QStringLiteral("，不同 %1").arg(progress.differing);
    else if (progress.isReadBack)
        text += QStringLiteral("，不符 %1").arg(progress.differing);
    if (access == RegisterSession::Read || progress.isReadBack || progress.task == RegisterSession::Compare)
        text += QStringLiteral("，无应答 %1，错误 %2").arg(progress.unanswered).arg(progress.refused);
    if (progress.notSent > 0)
        text += QStringLiteral("，未发送 %1").arg(progress.notSent);
    const bool isStopped = progress.stopReason != RegisterSession::NotStopped;
    if (isStopped && progress.stopReason != RegisterSession::ByUser)
        text += QStringLiteral("，%1").arg(RegisterSession::stopText(progress.stopReason));
    const QString state = m_session.isRunning() ? QStringLiteral("正在进行 ")
                          : isStopped           ? QStringLiteral("已停止 ")
                                                : QStringLiteral("已完成 ");
    m_tables.at(access)->showProgress(state + text);
}
