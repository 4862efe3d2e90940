#include "logpanel.h"

#include "apppaths.h"
#include "qtfiledialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr qint64 kMegabyte = 1024LL * 1024;

QString sizeText(qint64 bytes)
{
    return QLocale::c()
        .formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat)
        .toUpper()
        .replace(QStringLiteral("BYTES"), QStringLiteral("字节"));
}

} // namespace

LogPanel::LogPanel(Settings::LogChoices *choices, QWidget *parent)
    : QWidget(parent)
    , m_choices(choices)
    , m_button(new QPushButton(QStringLiteral("会话日志"), this))
    , m_on(new QCheckBox(QStringLiteral("记录到文件"), this))
    , m_file(new QLineEdit(this))
    , m_choose(new QPushButton(QStringLiteral("选择"), this))
    , m_form(new QComboBox(this))
    , m_append(new QCheckBox(QStringLiteral("追加"), this))
    , m_maxSize(new QSpinBox(this))
    , m_maxTime(new QSpinBox(this))
    , m_maxTotal(new QSpinBox(this))
    , m_state(new QLabel(this))
{
    buildUi();
    m_memory.add(m_form, &choices->form);
    m_memory.add(m_append, &choices->isAppended);
    m_memory.add(m_maxSize, &choices->maxMegabytes);
    m_memory.add(m_maxTime, &choices->maxMinutes);
    m_memory.add(m_maxTotal, &choices->maxTotalMegabytes);
    load();
    connect(m_button, &QPushButton::clicked, this, [this] {
        setVisible(isHidden());
        m_choices->isShown.change(!isHidden());
    });
    connect(m_on, &QCheckBox::toggled, this, &LogPanel::handleToggled);
    connect(m_choose, &QPushButton::clicked, this, &LogPanel::chooseFile);
    connect(m_file, &QLineEdit::editingFinished, this,
            [this] { m_choices->fileName.change(m_file->text().trimmed()); });
    connect(&m_log, &SessionLog::changed, this, &LogPanel::showState);
    connect(&m_log, &SessionLog::failed, this,
            [this](const QString &text) { emit notify(Notice::error(text)); });
    connect(&m_log, &SessionLog::recovered, this,
            [this](const QString &text) { emit notify(Notice::information(text)); });
    begin();
    QTimer::singleShot(0, this, &LogPanel::showState); // to who is connected by then
}

void LogPanel::buildUi()
{
    setObjectName(QStringLiteral("logPanel"));
    m_on->setObjectName(QStringLiteral("checkSessionLog"));
    m_file->setObjectName(QStringLiteral("editLogFile"));
    m_choose->setObjectName(QStringLiteral("btnLogFile"));
    m_form->setObjectName(QStringLiteral("comboLogForm"));
    m_append->setObjectName(QStringLiteral("checkLogAppend"));
    m_maxSize->setObjectName(QStringLiteral("spinLogSize"));
    m_maxTime->setObjectName(QStringLiteral("spinLogTime"));
    m_maxTotal->setObjectName(QStringLiteral("spinLogTotal"));
    m_state->setObjectName(QStringLiteral("labelLogState"));
    m_on->setToolTip(QStringLiteral("收发的每个字节立即写入文件，与显示和清空无关，断线重连后继续"));
    m_form->addItems({QStringLiteral("原始接收数据"), QStringLiteral("文本，带时间和方向"),
                      QStringLiteral("十六进制，带时间和方向")});
    m_append->setToolTip(QStringLiteral("接在上次的文件后面；不勾选时每次新建文件，文件名后加日期和时间"));
    m_file->setPlaceholderText(QStringLiteral("例如 D:/log/board.log"));
    m_state->setProperty("kind", QStringLiteral("hint"));
    m_state->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long name is cut
    m_form->setAccessibleName(QStringLiteral("日志格式"));
    m_button->setObjectName(QStringLiteral("btnSessionLog"));
    m_button->setToolTip(QStringLiteral("会话日志：收发的全部数据随时写入文件"));
    const auto limit = [](QSpinBox *box, int maximum, const QString &suffix, const QString &toolTip) {
        box->setRange(0, maximum);
        box->setSuffix(suffix);
        box->setSpecialValueText(QStringLiteral("不限"));
        box->setToolTip(toolTip);
    };
    limit(m_maxSize, 100000, QStringLiteral(" MB"), QStringLiteral("文件达到该大小后换新文件"));
    limit(m_maxTime, 10080, QStringLiteral(" 分"), QStringLiteral("每隔这么久换新文件"));
    limit(m_maxTotal, 1000000, QStringLiteral(" MB"),
          QStringLiteral("同名日志总共保留这么多，超出时删除最早的"));

    auto *first = new QHBoxLayout;
    first->addWidget(m_on);
    first->addWidget(labelFor(QStringLiteral("文件"), m_file));
    first->addWidget(m_file, 1);
    first->addWidget(m_choose);
    first->addWidget(m_form);
    auto *second = new QHBoxLayout;
    second->addWidget(m_append);
    second->addWidget(labelFor(QStringLiteral("单文件"), m_maxSize));
    second->addWidget(m_maxSize);
    second->addWidget(labelFor(QStringLiteral("间隔"), m_maxTime));
    second->addWidget(m_maxTime);
    second->addWidget(labelFor(QStringLiteral("总计"), m_maxTotal));
    second->addWidget(m_maxTotal);
    second->addSpacing(8);
    second->addWidget(m_state, 1);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(4);
    rows->addLayout(first);
    rows->addLayout(second);
}

QLabel *LogPanel::labelFor(const QString &text, QWidget *field)
{
    auto *label = new QLabel(text, this);
    label->setBuddy(field);
    field->setAccessibleName(text);
    return label;
}

void LogPanel::load()
{
    m_memory.load();
    setVisible(m_choices->isShown);
    m_file->setText(m_choices->fileName);
}

// The file is made with the first byte.
void LogPanel::begin()
{
    if (!m_choices->isOn || m_choices->fileName->isEmpty())
        return;
    const QSignalBlocker blocker(m_on);
    m_on->setChecked(true);
    start(false);
}

void LogPanel::record(const QString &fileName)
{
    m_log.stop();
    m_file->setText(fileName);
    m_append->setChecked(true); // the file has this name
    const QSignalBlocker blocker(m_on);
    m_on->setChecked(true);
    start(true);
}

void LogPanel::handleToggled(bool isOn)
{
    if (isOn && m_file->text().trimmed().isEmpty())
        chooseFile();
    const bool isNamed = !m_file->text().trimmed().isEmpty();
    if (isOn && !isNamed) { // the dialog was cancelled
        m_on->setChecked(false);
        return;
    }
    m_choices->isOn.change(isOn);
    if (isOn)
        start(true);
    else
        m_log.stop();
}

void LogPanel::start(bool opensNow)
{
    LogFiles::Target target;
    target.fileName = QDir(AppPaths::root()).absoluteFilePath(m_file->text().trimmed());
    target.isAppended = m_append->isChecked();
    target.maxBytes = m_maxSize->value() * kMegabyte;
    target.maxMs = m_maxTime->value() * 60000LL;
    target.maxTotalBytes = m_maxTotal->value() * kMegabyte;
    m_log.start(static_cast<LogForm::Kind>(m_form->currentIndex()), target, Settings::instance().textCodec,
                opensNow);
}

void LogPanel::chooseFile()
{
    const QString name =
        QtFileDialog::getSaveFileName(this, QStringLiteral("会话日志"), QString(),
                                      QStringLiteral("日志文件(*.log);;文本文件(*.txt);;数据文件(*.bin)"));
    if (name.isEmpty())
        return;
    m_file->setText(name);
    m_choices->fileName.change(name);
}

void LogPanel::showState()
{
    const bool isOn = m_log.isOn();
    for (QWidget *field :
         {static_cast<QWidget *>(m_file), static_cast<QWidget *>(m_choose), static_cast<QWidget *>(m_form),
          static_cast<QWidget *>(m_append), static_cast<QWidget *>(m_maxSize),
          static_cast<QWidget *>(m_maxTime), static_cast<QWidget *>(m_maxTotal)})
        field->setEnabled(!isOn);
    const LogWriter::Status &status = m_log.status();
    const QString size = sizeText(status.written);
    QString text;
    if (!status.reason.isEmpty())
        text = QStringLiteral("无法写入：%1").arg(status.reason);
    else if (!status.fileName.isEmpty())
        text = QStringLiteral("%1 %2").arg(QFileInfo(status.fileName).fileName(), size);
    else if (isOn)
        text = QStringLiteral("等待数据");
    m_state->setText(text);
    m_state->setToolTip(status.fileName);
    QString lamp;
    if (isOn)
        lamp = status.reason.isEmpty() ? QStringLiteral("日志 ") + size : QStringLiteral("日志无法写入");
    emit stateChanged(lamp, !status.reason.isEmpty());
}
