#include "recordingbar.h"

#include "apppaths.h"
#include "qtfiledialog.h"
#include "settings.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

constexpr int kProgressMs = 250;
const auto kRecord = QStringLiteral("开始录制");
const auto kPlay = QStringLiteral("回放");

QString sizeText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat).toUpper();
}

QString timeText(qint64 ms)
{
    const qint64 seconds = ms / 1000;
    return QStringLiteral("%1:%2")
        .arg(seconds / 60, 2, 10, QLatin1Char('0'))
        .arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

// What the disk has, in a few words.
QString countText(CameraRecorder::Kind kind, const RecordingWriter::Status &status)
{
    QString text = kind == CameraRecorder::Kind::Stream
                       ? sizeText(status.bytes)
                       : QStringLiteral("%1 帧 %2").arg(status.items).arg(sizeText(status.bytes));
    if (status.dropped > 0)
        text += QStringLiteral("，丢弃 %1").arg(status.dropped);
    if (status.undecodable > 0)
        text += QStringLiteral("，无法解码 %1").arg(status.undecodable);
    return text;
}

} // namespace

RecordingBar::RecordingBar(QWidget *parent)
    : QWidget(parent)
    , m_recorder(this)
    , m_player(this)
    , m_progress(this)
    , m_button(new QPushButton(QStringLiteral("录制"), parent))
    , m_kind(new QComboBox(this))
    , m_interval(new QSpinBox(this))
    , m_folder(new QLineEdit(this))
    , m_choose(new QPushButton(QStringLiteral("选择"), this))
    , m_record(new QPushButton(kRecord, this))
    , m_take(new QPushButton(QStringLiteral("拍照"), this))
    , m_play(new QPushButton(kPlay, this))
    , m_state(new QLabel(this))
{
    buildUi();
    Settings::CameraPage &kept = Settings::instance().cameraPage;
    m_memory.add(m_kind, &kept.recordKind);
    m_memory.add(m_folder, &kept.recordFolder);
    m_memory.add(m_interval, &kept.pictureInterval);
    connect(m_button, &QPushButton::toggled, this, &QWidget::setVisible);
    connect(m_kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &RecordingBar::showKind);
    connect(m_choose, &QPushButton::clicked, this, &RecordingBar::chooseFolder);
    connect(m_record, &QPushButton::clicked, this, &RecordingBar::toggleRecording);
    connect(m_take, &QPushButton::clicked, this, &RecordingBar::takePicture);
    connect(&m_recorder, &CameraRecorder::changed, this, &RecordingBar::showState);
    connect(&m_recorder, &CameraRecorder::failed, this,
            [this](const QString &text) { emit notify(Notice::error(text)); });
    connect(&m_recorder, &CameraRecorder::pictureSaved, this, [this](const QString &fileName) {
        emit notify(Notice::information(QStringLiteral("图像已保存：") + QDir::toNativeSeparators(fileName)));
    });
    m_player.setThrottle([this] { return m_recorder.isBehind(); });
    connect(&m_player, &StreamPlayer::ended, this, &RecordingBar::endPlaying);
    connect(&m_progress, &QTimer::timeout, this, &RecordingBar::showState);
    showKind();
    showState();
    hide();
}

void RecordingBar::buildUi()
{
    setObjectName(QStringLiteral("recordingBar"));
    m_button->setObjectName(QStringLiteral("btnRecording"));
    m_button->setToolTip(QStringLiteral("录制数据流、视频或定时拍照，回放录制的数据流"));
    m_button->setCheckable(true);
    m_kind->setObjectName(QStringLiteral("comboRecordKind"));
    m_kind->setAccessibleName(QStringLiteral("录制内容"));
    m_kind->addItems({QStringLiteral("原始数据流"), QStringLiteral("AVI视频"), QStringLiteral("定时拍照")});
    m_kind->setToolTip(QStringLiteral("原始数据流：收到的每个字节和时间，可以回放\n"
                                      "AVI视频：每一帧，Motion JPEG，每台设备一个文件\n"
                                      "定时拍照：每隔一段时间保存一张PNG图片"));
    m_interval->setObjectName(QStringLiteral("spinPictureInterval"));
    m_interval->setRange(0, 3600000);
    m_interval->setSuffix(QStringLiteral(" ms"));
    m_interval->setSpecialValueText(QStringLiteral("每一帧"));
    m_intervalLabel = labelFor(QStringLiteral("间隔"), m_interval);
    m_folder->setObjectName(QStringLiteral("editRecordFolder"));
    m_folder->setPlaceholderText(QStringLiteral("保存到的文件夹"));
    m_choose->setObjectName(QStringLiteral("btnRecordFolder"));
    m_record->setObjectName(QStringLiteral("btnRecord"));
    m_take->setObjectName(QStringLiteral("btnTakePicture"));
    m_take->setToolTip(QStringLiteral("把刚收到的一帧保存为PNG图片"));
    m_play->setObjectName(QStringLiteral("btnPlay"));
    m_play->setToolTip(QStringLiteral("让录制的数据流重新经过接收处理"));
    auto *menu = new QMenu(m_play);
    QAction *timed = menu->addAction(QStringLiteral("按原来的时间回放…"));
    timed->setObjectName(QStringLiteral("actionPlayTimed"));
    timed->setToolTip(QStringLiteral("超过2秒的停顿缩短为2秒"));
    QAction *fast = menu->addAction(QStringLiteral("尽快回放…"));
    fast->setObjectName(QStringLiteral("actionPlayFast"));
    connect(timed, &QAction::triggered, this, [this] { togglePlaying(false); });
    connect(fast, &QAction::triggered, this, [this] { togglePlaying(true); });
    connect(m_play, &QPushButton::clicked, this, [this, menu] {
        if (m_player.isPlaying())
            m_player.stop();
        else
            menu->popup(m_play->mapToGlobal(QPoint(0, m_play->height())));
    });
    m_state->setObjectName(QStringLiteral("labelRecordState"));
    m_state->setProperty("kind", QStringLiteral("hint"));
    m_state->setTextFormat(Qt::PlainText);
    m_state->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    auto *first = new QHBoxLayout;
    first->setSpacing(4);
    first->addWidget(m_kind);
    first->addWidget(m_intervalLabel);
    first->addWidget(m_interval);
    first->addWidget(labelFor(QStringLiteral("文件夹"), m_folder));
    first->addWidget(m_folder, 1);
    first->addWidget(m_choose);
    auto *second = new QHBoxLayout;
    second->setSpacing(4);
    for (QPushButton *button : {m_record, m_take, m_play})
        second->addWidget(button);
    second->addSpacing(8);
    second->addWidget(m_state, 1);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(4);
    rows->addLayout(first);
    rows->addLayout(second);
}

QLabel *RecordingBar::labelFor(const QString &text, QWidget *field)
{
    auto *label = new QLabel(text, this);
    label->setBuddy(field);
    field->setAccessibleName(text);
    return label;
}

bool RecordingBar::chooseFolder()
{
    const QString folder =
        QtFileDialog::getFolder(this, QStringLiteral("录制到文件夹"), m_folder->text().trimmed());
    if (!folder.isEmpty())
        m_folder->setText(QDir::toNativeSeparators(folder));
    return !folder.isEmpty();
}

QString RecordingBar::folder() const
{
    return QDir(AppPaths::root()).absoluteFilePath(m_folder->text().trimmed());
}

// ---- recording

void RecordingBar::toggleRecording()
{
    if (m_recorder.isOn())
        return m_recorder.stop();
    if (m_folder->text().trimmed().isEmpty() && !chooseFolder())
        return;
    CameraRecorder::Target target;
    target.kind = static_cast<CameraRecorder::Kind>(m_kind->currentIndex());
    target.folder = folder();
    target.intervalMs = m_interval->value();
    m_recorder.start(target, m_head);
}

void RecordingBar::takePicture()
{
    if (m_folder->text().trimmed().isEmpty() && !chooseFolder())
        return;
    bool isTaken = false;
    for (int device = 0; device < m_deviceCount; ++device)
        isTaken = m_recorder.takePicture(device, folder()) || isTaken;
    if (!isTaken)
        emit notify(Notice::error(QStringLiteral("还没有图像，无法保存！")));
}

void RecordingBar::showKind()
{
    const bool isPictures = m_kind->currentIndex() == static_cast<int>(CameraRecorder::Kind::Pictures);
    m_intervalLabel->setVisible(isPictures);
    m_interval->setVisible(isPictures);
}

void RecordingBar::showState()
{
    const bool isOn = m_recorder.isOn();
    for (QWidget *field : std::initializer_list<QWidget *>{m_kind, m_interval, m_folder, m_choose})
        field->setEnabled(!isOn);
    m_record->setEnabled(!m_recorder.isStopping());
    m_record->setText(isOn ? QStringLiteral("停止录制") : kRecord);
    m_button->setText(isOn ? QStringLiteral("录制中") : QStringLiteral("录制"));
    m_play->setText(m_player.isPlaying() ? QStringLiteral("停止回放") : kPlay);
    const RecordingWriter::Status &status = m_recorder.status();
    QStringList texts;
    if (m_player.isPlaying())
        texts += QStringLiteral("正在回放 %1（%2%）")
                     .arg(timeText(m_player.timeUs() / 1000))
                     .arg(m_player.permille() / 10);
    if (isOn || !status.lastFile.isEmpty() || !status.reason.isEmpty()) {
        const QString what = isOn                      ? QStringLiteral("正在录制 ")
                             : !status.isFinished      ? QStringLiteral("正在写入 ")
                             : status.reason.isEmpty() ? QStringLiteral("已录制 ")
                                                       : status.reason + QStringLiteral("，已录制 ");
        texts +=
            what + timeText(m_recorder.elapsedMs()) + QLatin1Char(' ') + countText(m_recorder.kind(), status);
    }
    if (isOn && status.freeBytes >= 0)
        texts += QStringLiteral("剩余空间 %1").arg(sizeText(status.freeBytes));
    m_state->setText(texts.join(QStringLiteral("　")));
    m_state->setToolTip(QDir::toNativeSeparators(status.lastFile));
    emit stateChanged();
}

// ---- playing

void RecordingBar::togglePlaying(bool isFast)
{
    const QString refusal = m_playRefusal ? m_playRefusal() : QString();
    if (!refusal.isEmpty()) {
        emit notify(Notice::error(refusal));
        return;
    }
    const QString fileName =
        QtFileDialog::getOpenFileName(this, QStringLiteral("回放录制的数据流"), m_folder->text().trimmed(),
                                      QStringLiteral("图像数据流(*.kvcam)"));
    // The link may have been opened while the dialog was.
    const QString late = fileName.isEmpty() || !m_playRefusal ? QString() : m_playRefusal();
    if (fileName.isEmpty() || !late.isEmpty()) {
        if (!late.isEmpty())
            emit notify(Notice::error(late));
        return;
    }
    const QString fault = m_player.start(fileName, isFast);
    if (!fault.isEmpty()) {
        emit notify(
            Notice::error(QStringLiteral("%1 无法回放：%2").arg(QDir::toNativeSeparators(fileName), fault)));
        return;
    }
    emit playing();
    m_progress.start(kProgressMs);
    showState();
}

void RecordingBar::endPlaying(const QString &fault)
{
    m_progress.stop();
    if (fault.isEmpty())
        emit notify(Notice::information(QStringLiteral("回放结束")));
    else
        emit notify(Notice::error(QStringLiteral("回放结束：%1").arg(fault)));
    showState();
}
