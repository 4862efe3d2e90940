#include "transferoptions.h"

#include "qtfiledialog.h"
#include "settings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

constexpr qint64 kMegabyte = 1024LL * 1024;
constexpr int kAroundText = 36; // pixels of a number's field

} // namespace

TransferOptions::TransferOptions(QWidget *parent)
    : QWidget(parent)
    , m_quick(new QCheckBox(QStringLiteral("快速"), this))
    , m_raw(new QCheckBox(QStringLiteral("原始发送"), this))
    , m_count(new QSpinBox(this))
    , m_unit(new QComboBox(this))
    , m_ms(new QSpinBox(this))
    , m_folder(new QLineEdit(this))
    , m_choose(new QPushButton(QStringLiteral("选择"), this))
    , m_max(new QSpinBox(this))
{
    buildUi();
    connect(m_raw, &QCheckBox::toggled, this, [this](bool isRaw) {
        updateFields();
        emit rawChanged(isRaw);
    });
    connect(m_choose, &QPushButton::clicked, this, &TransferOptions::chooseFolder);
    updateFields();
}

void TransferOptions::buildUi()
{
    setObjectName(QStringLiteral("transferOptions"));
    m_quick->setObjectName(QStringLiteral("checkQuick"));
    m_raw->setObjectName(QStringLiteral("checkRaw"));
    m_count->setObjectName(QStringLiteral("spinRawCount"));
    m_unit->setObjectName(QStringLiteral("comboRawUnit"));
    m_ms->setObjectName(QStringLiteral("spinRawTime"));
    m_folder->setObjectName(QStringLiteral("editReceiveFolder"));
    m_choose->setObjectName(QStringLiteral("btnReceiveFolder"));
    m_max->setObjectName(QStringLiteral("spinReceiveLimit"));
    m_quick->setToolTip(QStringLiteral("收到应答立即发送下一包，不再每10毫秒一步"));
    m_raw->setToolTip(QStringLiteral("不用协议，按下面的节奏发送文件内容"));
    m_count->setRange(1, 65536);
    m_count->setAccessibleName(QStringLiteral("每次发送的数量"));
    m_unit->addItems({QStringLiteral("字节"), QStringLiteral("行")});
    m_unit->setAccessibleName(QStringLiteral("每次发送的单位"));
    m_ms->setRange(0, 10000);
    m_ms->setSuffix(QStringLiteral(" ms"));
    m_ms->setSpecialValueText(QStringLiteral("不停顿"));
    m_ms->setToolTip(QStringLiteral("两次发送之间的停顿"));
    m_ms->setAccessibleName(QStringLiteral("两次发送之间的停顿"));
    m_folder->setPlaceholderText(QStringLiteral("首次接收时询问"));
    m_folder->setAccessibleName(QStringLiteral("接收文件夹"));
    m_folder->setToolTip(QStringLiteral("不覆盖已有的文件；未收完的文件以.part结尾"));
    m_max->setRange(1, 100000);
    m_max->setSuffix(QStringLiteral(" MB"));
    m_max->setToolTip(QStringLiteral("一次接收的总大小，超过时拒绝"));
    m_max->setAccessibleName(QStringLiteral("接收上限"));

    // The folder has the rest of its row.
    const std::pair<QSpinBox *, QString> widest[] = {{m_count, QStringLiteral("65536")},
                                                     {m_ms, QStringLiteral("10000 ms")},
                                                     {m_max, QStringLiteral("100000 MB")}};
    for (const auto &[box, text] : widest)
        box->setMaximumWidth(box->fontMetrics().horizontalAdvance(text) + kAroundText);
    auto *sending = new QHBoxLayout;
    sending->setSpacing(4);
    sending->addWidget(m_quick);
    sending->addSpacing(4);
    for (QWidget *field : {static_cast<QWidget *>(m_raw), static_cast<QWidget *>(m_count),
                           static_cast<QWidget *>(m_unit), static_cast<QWidget *>(m_ms)})
        sending->addWidget(field);
    sending->addStretch();
    auto *receiving = new QHBoxLayout;
    receiving->setSpacing(4);
    receiving->addWidget(new QLabel(QStringLiteral("接收到"), this));
    receiving->addWidget(m_folder, 1);
    receiving->addWidget(m_choose);
    receiving->addWidget(new QLabel(QStringLiteral("上限"), this));
    receiving->addWidget(m_max);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addLayout(sending);
    column->addLayout(receiving);
}

void TransferOptions::remember()
{
    auto &choices = Settings::instance().fileTransfer;
    m_memory.add(m_quick, &choices.isQuick);
    m_memory.add(m_raw, &choices.isRaw);
    m_memory.add(m_count, &choices.rawCount);
    m_memory.add(m_unit, &choices.rawUnit);
    m_memory.add(m_ms, &choices.rawMs);
    m_memory.add(m_folder, &choices.folder);
    m_memory.add(m_max, &choices.maxMegabytes);
}

void TransferOptions::load()
{
    m_memory.load();
}

void TransferOptions::setLocked(bool locked)
{
    m_isLocked = locked;
    updateFields();
}

void TransferOptions::updateFields()
{
    for (QWidget *field :
         {static_cast<QWidget *>(m_quick), static_cast<QWidget *>(m_raw), static_cast<QWidget *>(m_folder),
          static_cast<QWidget *>(m_choose), static_cast<QWidget *>(m_max)})
        field->setEnabled(!m_isLocked);
    m_quick->setEnabled(!m_isLocked && !isRaw());
    for (QWidget *field :
         {static_cast<QWidget *>(m_count), static_cast<QWidget *>(m_unit), static_cast<QWidget *>(m_ms)})
        field->setEnabled(!m_isLocked && isRaw());
}

void TransferOptions::chooseFolder()
{
    const QString chosen = QtFileDialog::getFolder(this, QStringLiteral("选择接收文件夹"), m_folder->text());
    if (!chosen.isEmpty())
        m_folder->setText(QDir::toNativeSeparators(chosen));
    Settings::instance().fileTransfer.folder.change(m_folder->text());
}

bool TransferOptions::isQuick() const
{
    return m_quick->isChecked();
}

bool TransferOptions::isRaw() const
{
    return m_raw->isChecked();
}

int TransferOptions::rawCount() const
{
    return m_count->value();
}

bool TransferOptions::rawCountsLines() const
{
    return m_unit->currentIndex() == 1;
}

int TransferOptions::rawMs() const
{
    return m_ms->value();
}

QString TransferOptions::receiveFolder()
{
    const auto folder = [this] { return QDir::fromNativeSeparators(m_folder->text().trimmed()); };
    const auto isThere = [&] { return !folder().isEmpty() && QFileInfo(folder()).isDir(); };
    if (!isThere())
        chooseFolder();
    return isThere() ? folder() : QString();
}

qint64 TransferOptions::maxReceivedBytes() const
{
    return m_max->value() * kMegabyte;
}
