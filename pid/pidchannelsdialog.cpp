#include "pidchannelsdialog.h"

#include "settings.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr int kMaxName = 16;
constexpr int kMaxUnit = 8;
} // namespace

PidChannelsDialog::PidChannelsDialog(QWidget *parent)
    : QtFramelessDialog(QStringLiteral("通道名称和单位"), parent)
{
    setObjectName(QStringLiteral("pidChannelsDialog"));
    const auto &stored = Settings::instance().pid;
    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(8);
    grid->setVerticalSpacing(4);
    grid->addWidget(new QLabel(QStringLiteral("名称"), this), 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("单位"), this), 0, 2);
    const auto add = [this, grid](const QString &object, const QStringList &texts, int channel, int column,
                                  int maxLength) {
        auto *edit = new QLineEdit(texts.value(channel), this);
        edit->setObjectName(object + QString::number(channel + 1));
        edit->setMaxLength(maxLength);
        grid->addWidget(edit, 1 + channel, column);
        return edit;
    };
    for (int channel = 0; channel < channels; ++channel) {
        const QString label = QStringLiteral("CH%1").arg(channel + 1);
        grid->addWidget(new QLabel(label, this), 1 + channel, 0);
        QLineEdit *name = add(QStringLiteral("editChannelName"), stored.channelNames, channel, 1, kMaxName);
        name->setAccessibleName(label + QStringLiteral("的名称"));
        name->setPlaceholderText(channel == 0 ? QStringLiteral("如 左轮转速") : QString());
        QLineEdit *unit = add(QStringLiteral("editChannelUnit"), stored.channelUnits, channel, 2, kMaxUnit);
        unit->setAccessibleName(label + QStringLiteral("的单位"));
        unit->setPlaceholderText(channel == 0 ? QStringLiteral("如 rpm") : QString());
        m_names.at(size_t(channel)) = name;
        m_units.at(size_t(channel)) = unit;
    }
    grid->setColumnMinimumWidth(1, 180);
    grid->setColumnMinimumWidth(2, 80);
    auto *ok = new QPushButton(QStringLiteral("确定"), this);
    ok->setObjectName(QStringLiteral("btnChannelsOk"));
    ok->setProperty("primary", true);
    ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("取消"), this);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    body()->addLayout(grid);
    body()->addLayout(buttons);
    m_names.front()->setFocus();
}

void PidChannelsDialog::accept()
{
    QStringList names;
    QStringList units;
    for (int channel = 0; channel < channels; ++channel) {
        names << m_names.at(size_t(channel))->text().simplified();
        units << m_units.at(size_t(channel))->text().simplified();
    }
    Settings::instance().pid.channelNames.change(names);
    Settings::instance().pid.channelUnits.change(units);
    QtFramelessDialog::accept();
}
