#include "hexoperations.h"

#include "hexcommand.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "settings.h"

#include <QScrollBar>
#include <memory>
#include <new>

namespace {
using Purpose = HexOperationDialog::Purpose;
constexpr int kTipMs = 3000;
} // namespace

struct HexOperations::Job
{
    HexTransform transform;
    qint64 begin;
    qint64 length;
    bool inserts;
    HexDocument::Batch batch;
    bool isOutOfMemory = false;
};

HexOperations::HexOperations(QHexEdit *edit)
    : QMenu(QStringLiteral("处理选中内容"), edit)
    , m_edit(edit)
    , m_fill(add(QStringLiteral("填充…"), "actionHexFill", Purpose::Fill))
    , m_insert(add(QStringLiteral("插入字节…"), "actionHexInsert", Purpose::Insert))
    , m_operate(add(QStringLiteral("运算…"), "actionHexOperate", Purpose::Operate))
{
    setToolTipsVisible(true);
    connect(edit, &QHexEdit::stateChanged, this, &HexOperations::update);
    update();
}

HexCommand *HexOperations::add(const QString &text, const char *name, Purpose purpose)
{
    auto *command = new HexCommand(text, {}, this);
    command->setObjectName(QLatin1String(name));
    connect(command, &QAction::triggered, this, [this, purpose] { ask(purpose); });
    addAction(command);
    return command;
}

void HexOperations::update()
{
    const QString noEdit = m_edit->editRefusal();
    QString noChange = noEdit;
    if (noChange.isEmpty() && m_edit->selectionLength() == 0)
        noChange = QStringLiteral("请先选中内容");
    else if (noChange.isEmpty() && m_edit->selectionLength() > HexTransform::maxLength)
        noChange = QStringLiteral("选中的内容超过512 MB，不能处理");
    m_fill->setRefusal(noChange);
    m_operate->setRefusal(noChange);
    m_insert->setRefusal(noEdit.isEmpty() ? m_edit->insertRefusal() : noEdit);
}

void HexOperations::ask(Purpose purpose)
{
    HexOperationDialog dialog(purpose, Settings::instance().hexEditPage.fillByte, m_edit->window());
    if (dialog.exec() != QDialog::Accepted)
        return;
    // Another file may have been opened meanwhile.
    const HexCommand *command = purpose == Purpose::Fill     ? m_fill
                                : purpose == Purpose::Insert ? m_insert
                                                             : m_operate;
    const bool inserts = purpose == Purpose::Insert;
    QString reason = command->refusal();
    if (reason.isEmpty() && !inserts)
        reason = refusal(dialog.operation());
    if (reason.isEmpty())
        start(dialog.operation(), inserts ? dialog.count() : 0);
    else
        QtMessageTip::showTip(reason, kTipMs);
}

QString HexOperations::refusal(const HexOperation &operation) const
{
    const qint64 begin = m_edit->selectionBegin();
    const qint64 length = m_edit->selectionLength();
    if (operation.hasUnit() && length < operation.unit)
        return QStringLiteral("未改动：选中的内容不足一个单元（%1字节）").arg(operation.unit);
    if (operation.joinsBytes() && begin + length > m_edit->addresses().endOf(begin, m_edit->size()))
        return QStringLiteral("未改动：选中的内容不在同一段数据内");
    return QString();
}

void HexOperations::start(const HexOperation &operation, qint64 inserted)
{
    const qint64 begin = m_edit->selectionBegin();
    const qint64 length = inserted > 0 ? inserted : m_edit->selectionLength();
    const auto job = std::shared_ptr<Job>(
        new Job{{m_edit->document(), begin, length, operation}, begin, length, inserted > 0, {}});
    m_edit->task()->start(
        {inserted > 0 ? QStringLiteral("正在插入") : QStringLiteral("正在处理"),
         [this, job] {
             try {
                 const qint64 at = job->inserts ? job->begin : job->transform.position();
                 const QByteArray bytes = job->transform.next();
                 m_edit->document().addToBatch(job->batch, at, job->inserts ? 0 : bytes.size(), bytes);
             } catch (const std::bad_alloc &) {
                 job->isOutOfMemory = true;
             }
             return job->isOutOfMemory || job->transform.isDone() ? SlicedTask::Step::Done
                                                                  : SlicedTask::Step::Running;
         },
         [job] { return job->transform.permille(); },
         [this, job](bool done) { end(*job, done); },
         {},
         8});
}

void HexOperations::end(Job &job, bool done)
{
    if (!done || job.isOutOfMemory) {
        QtMessageTip::showTip(done ? QStringLiteral("内存不足，没有改动任何内容")
                                   : QStringLiteral("已停止，没有改动任何内容"),
                              kTipMs);
        return;
    }
    const int row = m_edit->verticalScrollBar()->value();
    m_edit->document().applyBatch(job.batch);
    m_edit->contentEdited(job.begin + job.length);
    if (!job.inserts) { // what is on display stays there
        m_edit->select(job.begin, job.length);
        m_edit->verticalScrollBar()->setValue(row);
    }
    if (job.transform.unchanged() > 0)
        QtMessageTip::showTip(
            QStringLiteral("末尾%1字节不足一个单元，保持不变").arg(job.transform.unchanged()), kTipMs);
}
