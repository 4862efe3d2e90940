#include "hexfindpanel.h"

#include "hexcommand.h"
#include "hexparse.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "textcodec.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <memory>

namespace {
constexpr int kMaxPattern = 4000;     // bytes; preparing the search costs their square at worst
constexpr int kMaxCharacters = 20000; // of a field, enough for as many bytes in any writing
} // namespace

HexFindPanel::HexFindPanel(QHexEdit *edit, QWidget *parent)
    : FormGroup(QStringLiteral("查找与替换"), parent)
    , m_edit(edit)
    , m_kind(new QComboBox(this))
    , m_find(new QLineEdit(this))
    , m_replace(new QLineEdit(this))
{
    m_kind->setObjectName(QStringLiteral("comboFindKind"));
    m_kind->addItems(
        {QStringLiteral("十六进制"), QStringLiteral("文本 UTF-8"), QStringLiteral("文本 GB18030")});
    m_find->setObjectName(QStringLiteral("editFind"));
    m_find->setToolTip(QStringLiteral("要查找的内容（Ctrl+F）"));
    m_replace->setObjectName(QStringLiteral("editReplace"));
    for (QLineEdit *field : {m_find, m_replace}) {
        field->setMaxLength(kMaxCharacters);
        // The field keeps the part that fits, and a part is another pattern.
        connect(
            field, &QLineEdit::inputRejected, this,
            [field] {
                field->undo();
                QtMessageTip::showBelow(
                    field, QStringLiteral("内容过长，未输入：最多%1个字符").arg(kMaxCharacters), 3000);
            },
            Qt::QueuedConnection);
    }
    addRow(QStringLiteral("类型"), m_kind);
    addRow(QStringLiteral("查找"), m_find);
    addRow(QStringLiteral("替换为"), m_replace);
    m_begin = add(QStringLiteral("查找"), {int(Qt::CTRL) + Qt::Key_F}, &HexFindPanel::begin);
    m_next = add(QStringLiteral("下一个"), {Qt::Key_F3}, &HexFindPanel::findNext);
    m_previous = add(QStringLiteral("上一个"), {int(Qt::SHIFT) + Qt::Key_F3}, &HexFindPanel::findPrevious);
    m_replaceOne = add(QStringLiteral("替换"), {}, &HexFindPanel::replace);
    m_replaceAll = add(QStringLiteral("全部替换"), {}, &HexFindPanel::replaceAll);
    buildButtons();
    connect(m_find, &QLineEdit::returnPressed, m_next, &HexCommand::run);
    connect(m_edit, &QHexEdit::stateChanged, this, &HexFindPanel::update);
    update();
    const auto hint = [this](int kind) {
        m_find->setPlaceholderText(kind == 0 ? QStringLiteral("如 55 AA 01") : QStringLiteral("文本"));
    };
    connect(m_kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, hint);
    hint(0);
}

HexCommand *HexFindPanel::add(const QString &text, const QList<QKeySequence> &keys,
                              void (HexFindPanel::*slot)())
{
    auto *command = new HexCommand(text, keys, this);
    connect(command, &QAction::triggered, this, slot);
    return command;
}

void HexFindPanel::buildButtons()
{
    const auto button = [this](HexCommand *command, const char *name, const QString &tip) {
        auto *made = new QPushButton(command->text(), this);
        made->setObjectName(QLatin1String(name));
        made->setToolTip(tip);
        command->bind(made);
        return made;
    };
    addPair(button(m_previous, "btnFindPrevious", QStringLiteral("向前查找（Shift+F3）")),
            button(m_next, "btnFindNext", QStringLiteral("向后查找（F3）")));
    addPair(button(m_replaceOne, "btnReplace", QStringLiteral("替换选中的内容并查找下一个")),
            button(m_replaceAll, "btnReplaceAll", QStringLiteral("替换整个文件中的所有内容，可一次撤销")));
}

void HexFindPanel::update()
{
    for (HexCommand *command : {m_next, m_previous})
        command->setRefusal(m_edit->busyReason());
    for (HexCommand *command : {m_replaceOne, m_replaceAll})
        command->setRefusal(m_edit->editRefusal());
}

void HexFindPanel::begin()
{
    m_find->setFocus(Qt::ShortcutFocusReason);
    m_find->selectAll();
}

void HexFindPanel::findNext()
{
    find(HexSearch::Forward);
}

void HexFindPanel::findPrevious()
{
    find(HexSearch::Backward);
}

std::optional<QByteArray> HexFindPanel::bytesOf(QLineEdit *field) const
{
    if (m_kind->currentIndex() > 0)
        return TextCodec::encode(field->text(),
                                 m_kind->currentIndex() == 1 ? TextCodec::Utf8 : TextCodec::Gb18030);
    const auto bytes = HexParse::bytes(field->text());
    if (!bytes)
        QtMessageTip::showBelow(field, QStringLiteral("请输入成对的十六进制字符"));
    return bytes;
}

std::optional<QByteArray> HexFindPanel::pattern() const
{
    const auto bytes = bytesOf(m_find);
    if (bytes && bytes->isEmpty()) {
        QtMessageTip::showBelow(m_find, QStringLiteral("请输入要查找的内容"));
        return std::nullopt;
    }
    if (bytes && bytes->size() > kMaxPattern) {
        QtMessageTip::showBelow(
            m_find, QStringLiteral("查找的内容有%1字节，最多%2字节").arg(bytes->size()).arg(kMaxPattern),
            3000);
        return std::nullopt;
    }
    return bytes;
}

void HexFindPanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        m_edit->setFocus();
    else
        FormGroup::keyPressEvent(event);
}

void HexFindPanel::find(HexSearch::Direction direction)
{
    const auto wanted = pattern();
    if (!wanted)
        return;
    qint64 from = m_edit->selectionBegin();
    if (direction == HexSearch::Forward && m_edit->selectionLength() > 0)
        ++from;
    const auto search = std::make_shared<HexSearch>(m_edit->document(), *wanted, from, direction);
    const auto state = std::make_shared<HexSearch::State>(HexSearch::State::Running);
    m_edit->task()->start({QStringLiteral("正在查找"),
                           [search, state] {
                               *state = search->step();
                               return *state == HexSearch::State::Running ? SlicedTask::Step::Running
                                                                          : SlicedTask::Step::Done;
                           },
                           [search] { return search->permille(); },
                           [this, search, state, direction, length = wanted->size()](bool) {
                               showFound(*search, *state, direction, length);
                           },
                           {}});
}

void HexFindPanel::showFound(const HexSearch &search, HexSearch::State state, HexSearch::Direction direction,
                             int length)
{
    if (state == HexSearch::State::NotFound)
        QtMessageTip::showTip(QStringLiteral("未找到要查找的内容"));
    if (state != HexSearch::State::Found)
        return;
    m_edit->select(search.position(), length);
    if (search.hasWrapped())
        QtMessageTip::showTip(direction == HexSearch::Forward ? QStringLiteral("已到末尾，从开头继续查找")
                                                              : QStringLiteral("已到开头，从末尾继续查找"));
}

// Bytes of an image rarely have to move to other addresses: only the insert
// mode does that.
bool HexFindPanel::mayReplace(const std::optional<QByteArray> &old, const std::optional<QByteArray> &with)
{
    if (!old || !with)
        return false;
    if (!m_edit->isOverwrite() || old->size() == with->size())
        return true;
    QtMessageTip::showBelow(m_replace, QStringLiteral("改写模式下须等长替换，按Insert键切换到插入模式"),
                            3000);
    return false;
}

void HexFindPanel::replace()
{
    const auto old = pattern();
    const auto with = old ? bytesOf(m_replace) : std::nullopt;
    if (!mayReplace(old, with))
        return;
    const bool isThere = m_edit->selectionLength() == old->size() &&
                         m_edit->document().read(m_edit->selectionBegin(), old->size()) == *old;
    if (isThere)
        m_edit->replaceSelection(*with);
    findNext();
}

void HexFindPanel::replaceAll()
{
    const auto old = pattern();
    const auto with = old ? bytesOf(m_replace) : std::nullopt;
    if (!mayReplace(old, with))
        return;
    const auto job = std::shared_ptr<Replacing>(
        new Replacing{{m_edit->document(), *old, 0, HexSearch::Forward, HexSearch::StopAtEnd}, {}, *with, 0});
    m_edit->task()->start({QStringLiteral("正在替换"),
                           [this, job, length = old->size()] {
                               const HexSearch::State state = job->search.step();
                               if (state == HexSearch::State::Found) {
                                   const qint64 at = job->search.position();
                                   m_edit->document().addToBatch(job->batch, at, length, job->with);
                                   job->search.continueFrom(at + length);
                                   ++job->count;
                               }
                               return state == HexSearch::State::NotFound ? SlicedTask::Step::Done
                                                                          : SlicedTask::Step::Running;
                           },
                           [job] { return job->search.permille(); },
                           [this, job](bool done) { endReplacing(*job, done); },
                           {}});
}

void HexFindPanel::endReplacing(const Replacing &job, bool done)
{
    if (!done) {
        QtMessageTip::showTip(QStringLiteral("已停止，没有替换任何内容"));
        return;
    }
    if (job.count > 0) {
        m_edit->document().applyBatch(job.batch);
        m_edit->contentEdited(m_edit->address());
    }
    QtMessageTip::showTip(QStringLiteral("已替换%1处").arg(job.count));
}
