#include "pidrecordactions.h"

#include "appversion.h"
#include "pidchart.h"
#include "pidplot.h"
#include "pidviewmenu.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "settings.h"

#include <QActionGroup>
#include <QDateTime>
#include <QDir>
#include <QMenu>

#include <utility>

namespace {

const auto kSessionFilter = QStringLiteral("PID会话(*.kvpid)");
constexpr int kLimits[] = {5, 10, 50, 200, 1000}; // million points
constexpr qint64 kMillion = 1000000;

} // namespace

PidRecordActions::PidRecordActions(PidRecorder *recorder, PidChart *chart, QWidget *page)
    : QObject(page)
    , m_recorder(recorder)
    , m_chart(chart)
    , m_page(page)
    , m_files(new PidSessionFiles(recorder, this))
{
    connect(chart->viewMenu()->recordMenu(), &QMenu::aboutToShow, this,
            [this] { buildMenu(m_chart->viewMenu()->recordMenu()); });
    buildMenu(chart->viewMenu()->recordMenu());
    connect(m_files, &PidSessionFiles::finished, this, &PidRecordActions::handleFinished);
    connect(m_files, &PidSessionFiles::progress, this,
            [this](int percent) { m_chart->viewMenu()->setText(QStringLiteral("会话 %1%").arg(percent)); });
    connect(recorder, &PidRecorder::recordTrimmed, this, [this] {
        emit notify(Notice::information(
            QStringLiteral("记录已达到上限（%1万点），最早的数据将被丢弃").arg(m_recorder->limit() / 10000)));
    });
    connect(recorder, &PidRecorder::diskRefused, this, [this](const QString &reason) {
        emit notify(Notice::error(
            QStringLiteral("无法把较早的记录写入临时文件（%1），只保留最近的数据").arg(reason)));
    });
    load();
}

void PidRecordActions::load()
{
    const qint64 limit = Settings::instance().pid.recordLimit * kMillion;
    if (m_recorder->held() <= limit) // nothing is deleted without a question
        m_recorder->setLimit(limit);
}

// ---- the menu

void PidRecordActions::buildMenu(QMenu *menu)
{
    menu->clear();
    const bool isIdle = !m_files->isRunning();
    const bool hasRecord = m_recorder->held() > 0;
    const auto add = [menu](const QString &text, bool enabled, const std::function<void()> &act) {
        QObject::connect(menu->addAction(text), &QAction::triggered, menu, act);
        menu->actions().last()->setEnabled(enabled);
    };
    if (!isIdle)
        add(QStringLiteral("取消正在进行的操作"), true, [this] { m_files->cancel(); });
    add(QStringLiteral("打开会话…"), isIdle, [this] { open(); });
    add(QStringLiteral("保存会话…"), isIdle && hasRecord, [this] { saveAs(); });
    add(QStringLiteral("导出带时间的数据…"), isIdle && hasRecord, [this] { exportTable(); });
    menu->addSeparator();
    addLimits(menu->addMenu(QStringLiteral("记录上限")));
    add(QStringLiteral("清空记录…"), isIdle && hasRecord, [this] { clear(); });
}

void PidRecordActions::addLimits(QMenu *menu)
{
    auto *group = new QActionGroup(menu);
    for (const int millions : kLimits) {
        const QString text = millions % 100 == 0 ? QStringLiteral("%1亿点").arg(millions / 100)
                                                 : QStringLiteral("%1万点").arg(millions * 100);
        QAction *action = menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(m_recorder->limit() == millions * kMillion);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, millions] { setLimit(millions); });
    }
}

void PidRecordActions::setLimit(int millions)
{
    if (m_recorder->held() > millions * kMillion &&
        QtMessageBox::question(m_page, QString(), QStringLiteral("超出上限的较早数据将被删除，是否继续？")) ==
            0)
        return;
    Settings::instance().pid.recordLimit.change(millions);
    m_recorder->setLimit(millions * kMillion);
}

void PidRecordActions::clear()
{
    const QString text = QStringLiteral("将删除全部%1个点和%2次运行，是否先保存？");
    const auto clearAll = [this] { m_recorder->clearRecord(); };
    const QtMessageBox::SaveAnswer answer = QtMessageBox::saveQuestion(
        m_page, QString(), text.arg(m_recorder->held()).arg(m_recorder->runs()->runs().size()));
    if (answer == QtMessageBox::Discard)
        clearAll();
    else if (answer == QtMessageBox::Save)
        saveAs(clearAll);
}

// ---- files

PidSessionInfo PidRecordActions::info() const
{
    PidSessionInfo info;
    const auto &stored = Settings::instance().pid;
    for (int channel = 0; channel < PidRecorder::channels; ++channel) {
        info.names.at(size_t(channel)) = stored.channelNames.value().value(channel);
        info.units.at(size_t(channel)) = stored.channelUnits.value().value(channel);
    }
    info.madeUs = QDateTime::currentMSecsSinceEpoch() * 1000;
    info.program = QStringLiteral("Korvex ") + QLatin1String(AppVersion::text);
    return info;
}

bool PidRecordActions::saveAs(const std::function<void()> &next)
{
    if (m_files->isRunning()) {
        emit notify(Notice::error(QStringLiteral("上一次会话操作尚未完成，请稍候！")));
        return false;
    }
    const QString fileName =
        QtFileDialog::getSaveFileName(m_page, QStringLiteral("保存会话"), QString(), kSessionFilter);
    if (fileName.isEmpty())
        return false;
    m_failed = false;
    m_afterSave = next; // a short session is saved at once
    m_files->save(fileName, info());
    return !m_failed;
}

void PidRecordActions::exportTable()
{
    const QString fileName = QtFileDialog::getSaveFileName(m_page, QStringLiteral("导出带时间的数据"),
                                                           QString(), QStringLiteral("CSV文件(*.csv)"));
    if (!fileName.isEmpty())
        m_files->exportTable(fileName, info());
}

bool PidRecordActions::mayOpen()
{
    const QString refusal = m_refusal ? m_refusal() : QString();
    if (!refusal.isEmpty())
        emit notify(Notice::error(refusal));
    return refusal.isEmpty();
}

void PidRecordActions::cancelOpening()
{
    if (m_files->isOpening())
        m_files->cancel();
}

void PidRecordActions::open()
{
    if (!mayOpen())
        return;
    const auto choose = [this] {
        if (!mayOpen()) // saving took its time
            return;
        const QString fileName =
            QtFileDialog::getOpenFileName(m_page, QStringLiteral("打开会话"), QString(), kSessionFilter);
        if (!fileName.isEmpty())
            m_files->open(fileName);
    };
    if (m_recorder->held() == 0) {
        choose();
        return;
    }
    const QtMessageBox::SaveAnswer answer = QtMessageBox::saveQuestion(
        m_page, QString(),
        QStringLiteral("打开会话会替换当前的记录（%1个点），是否先保存？").arg(m_recorder->held()));
    if (answer == QtMessageBox::Discard)
        choose();
    else if (answer == QtMessageBox::Save)
        saveAs(choose);
}

void PidRecordActions::handleFinished(const PidSessionFiles::Outcome &outcome)
{
    using Kind = PidSessionFiles::Kind;
    m_chart->viewMenu()->setText(QStringLiteral("视图"));
    const QString place = QDir::toNativeSeparators(outcome.fileName);
    m_failed = !outcome.error.isEmpty();
    const auto next = std::exchange(m_afterSave, nullptr);
    for (const QString &note : outcome.notes)
        emit notify(Notice::error(note));
    if (outcome.isCancelled) {
        emit notify(Notice::information(QStringLiteral("已取消：") + place));
        return;
    }
    if (m_failed) {
        emit notify(Notice::error((outcome.kind == Kind::Open ? QStringLiteral("%1 打开失败：%2")
                                                              : QStringLiteral("%1 保存失败：%2"))
                                      .arg(place, outcome.error)));
        QtMessageBox::warning(m_page, QStringLiteral("告警"),
                              outcome.kind == Kind::Open ? QStringLiteral("会话打开失败!")
                                                         : QStringLiteral("文件保存失败!"));
        return;
    }
    if (outcome.kind == Kind::Open) {
        const auto hasText = [](const PidSessionInfo::Texts &texts) {
            return std::any_of(texts.begin(), texts.end(),
                               [](const QString &text) { return !text.isEmpty(); });
        };
        const auto list = [](const PidSessionInfo::Texts &texts) {
            return QStringList(texts.begin(), texts.end());
        };
        if (hasText(outcome.info.names) || hasText(outcome.info.units)) {
            Settings::instance().pid.channelNames.change(list(outcome.info.names));
            Settings::instance().pid.channelUnits.change(list(outcome.info.units));
        }
        m_chart->load();
        m_chart->showAll();
        emit notify(Notice::information(QStringLiteral("会话已打开：") + place));
        return;
    }
    emit notify(Notice::information(
        (outcome.kind == Kind::Save ? QStringLiteral("会话已保存：") : QStringLiteral("文件已导出：")) +
        place));
    if (next)
        next();
}

// ---- quitting

bool PidRecordActions::mayClose()
{
    m_savesAtExit = false;
    if (!m_recorder->runs()->isEdited())
        return true;
    const QtMessageBox::SaveAnswer answer = QtMessageBox::saveQuestion(
        m_page, QString(), QStringLiteral("已命名的运行记录还没有保存，是否保存会话？"));
    m_savesAtExit = answer == QtMessageBox::Save && saveAs();
    return answer == QtMessageBox::Discard || m_savesAtExit;
}

bool PidRecordActions::saveBeforeExit()
{
    m_failed = false;
    m_afterSave = nullptr; // no further file is chosen
    m_files->complete();
    // The save may also have failed, or been stopped, while other pages asked.
    return !m_failed && !(m_savesAtExit && m_recorder->runs()->isEdited());
}
