#include "hexfindpanel.h"

#include "hexcommand.h"
#include "hexparse.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "settings.h"
#include "textcodec.h"

#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <memory>

namespace {
constexpr int kMaxPattern = 4000;     // bytes; preparing the search costs their square at worst
constexpr int kMaxCharacters = 20000; // of a field, enough for as many bytes in any writing
const auto kTooHard = QStringLiteral("表达式过于复杂，查找已停止");

SlicedTask::Step stepOf(HexSearch::State state)
{
    const bool isEnd = state == HexSearch::State::NotFound || state == HexSearch::State::TooHard;
    return isEnd ? SlicedTask::Step::Done : SlicedTask::Step::Running;
}

} // namespace

HexFindPanel::HexFindPanel(QHexEdit *edit, QWidget *parent)
    : FormGroup(QStringLiteral("查找与替换"), parent)
    , m_edit(edit)
    , m_kind(new QComboBox(this))
    , m_number(new QComboBox(this))
    , m_byteOrder(new QComboBox(this))
    , m_find(new QLineEdit(this))
    , m_replace(new QLineEdit(this))
{
    buildFields();
    m_begin = add(QStringLiteral("查找"), {int(Qt::CTRL) + Qt::Key_F}, &HexFindPanel::begin);
    m_next = add(QStringLiteral("下一个"), {Qt::Key_F3}, &HexFindPanel::findNext);
    m_previous = add(QStringLiteral("上一个"), {int(Qt::SHIFT) + Qt::Key_F3}, &HexFindPanel::findPrevious);
    m_replaceOne = add(QStringLiteral("替换"), {}, &HexFindPanel::replace);
    m_replaceAll = add(QStringLiteral("全部替换"), {}, &HexFindPanel::replaceAll);
    m_listAll =
        add(QStringLiteral("全部列出"), {int(Qt::CTRL) + Qt::SHIFT + Qt::Key_F}, &HexFindPanel::listAll);
    buildButtons();
    connect(m_find, &QLineEdit::returnPressed, m_next, &HexCommand::run);
    connect(m_edit, &QHexEdit::stateChanged, this, &HexFindPanel::update);
    connect(m_kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &HexFindPanel::showKind);
    m_memory.add(m_kind, &Settings::instance().hexEditPage.findKind);
    update();
    showKind();
}

void HexFindPanel::buildFields()
{
    m_kind->setObjectName(QStringLiteral("comboFindKind"));
    m_kind->addItems({QStringLiteral("十六进制"), QStringLiteral("文本 UTF-8"),
                      QStringLiteral("文本 GB18030"), QStringLiteral("数值"), QStringLiteral("正则表达式")});
    m_number->setObjectName(QStringLiteral("comboFindNumber"));
    m_number->setAccessibleName(QStringLiteral("数值的类型"));
    m_number->addItems({QStringLiteral("uint8"), QStringLiteral("int8"), QStringLiteral("uint16"),
                        QStringLiteral("int16"), QStringLiteral("uint32"), QStringLiteral("int32"),
                        QStringLiteral("uint64"), QStringLiteral("int64"), QStringLiteral("float"),
                        QStringLiteral("double")}); // in the order of HexPattern::Number
    m_number->setCurrentIndex(static_cast<int>(HexPattern::Number::U32));
    m_byteOrder->setObjectName(QStringLiteral("comboFindByteOrder"));
    m_byteOrder->setAccessibleName(QStringLiteral("字节序"));
    m_byteOrder->addItems({QStringLiteral("小端"), QStringLiteral("大端")});
    m_find->setObjectName(QStringLiteral("editFind"));
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
    addPair(m_number, m_byteOrder);
    addRow(QStringLiteral("查找"), m_find);
    addRow(QStringLiteral("替换为"), m_replace);
}

void HexFindPanel::showKind()
{
    static const char *const examples[] = {"如 55 AA ?? 01", "文本", "文本", "如 1000 或 0x10..0x20",
                                           "如 \\x55.\\xAA"};
    static const char *const tips[] = {"要查找的内容，?代表任意一位（Ctrl+F）", "要查找的内容（Ctrl+F）",
                                       "要查找的内容（Ctrl+F）",
                                       "一个数，或用..连接的范围，两端都包括（Ctrl+F）",
                                       "每个字节是一个字符，\\x00到\\xFF；最长1024字节（Ctrl+F）"};
    const int kind = m_kind->currentIndex();
    m_find->setPlaceholderText(QString::fromUtf8(examples[kind]));
    m_find->setToolTip(QString::fromUtf8(tips[kind]));
    const bool isText = kind == TextUtf8 || kind == TextGb18030;
    m_replace->setPlaceholderText(isText || kind == Hex ? QString() : QStringLiteral("十六进制"));
    for (QComboBox *box : {m_number, m_byteOrder})
        box->setVisible(kind == Number);
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
    for (HexCommand *command : {m_next, m_previous, m_listAll})
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
    const int kind = m_kind->currentIndex();
    if (kind == TextUtf8 || kind == TextGb18030)
        return TextCodec::encode(field->text(), kind == TextUtf8 ? TextCodec::Utf8 : TextCodec::Gb18030);
    const auto bytes = HexParse::bytes(field->text());
    if (!bytes)
        QtMessageTip::showBelow(field, QStringLiteral("请输入成对的十六进制字符"));
    return bytes;
}

std::optional<HexPattern> HexFindPanel::readPattern() const
{
    const QString text = m_find->text();
    QString fault;
    std::optional<HexPattern> pattern;
    switch (m_kind->currentIndex()) {
    case Hex:
        pattern = HexPattern::digits(text);
        fault = QStringLiteral("请输入成对的十六进制字符");
        break;
    case Number:
        pattern = text.trimmed().isEmpty()
                      ? HexPattern()
                      : HexPattern::number(text, static_cast<HexPattern::Number>(m_number->currentIndex()),
                                           m_byteOrder->currentIndex() == 1);
        fault = QStringLiteral("请输入该类型的数，或用..连接的范围");
        break;
    case Expression:
        pattern = HexPattern::expression(text, &fault);
        fault = QStringLiteral("表达式有误，") + fault;
        break;
    default:
        pattern = HexPattern::bytes(*bytesOf(m_find));
    }
    if (!pattern)
        QtMessageTip::showBelow(m_find, fault, 3000);
    return pattern;
}

std::optional<HexPattern> HexFindPanel::pattern() const
{
    const auto pattern = readPattern();
    if (pattern && pattern->isEmpty()) {
        QtMessageTip::showBelow(m_find, QStringLiteral("请输入要查找的内容"));
        return std::nullopt;
    }
    if (pattern && pattern->fixedLength() > kMaxPattern) {
        QtMessageTip::showBelow(
            m_find,
            QStringLiteral("查找的内容有%1字节，最多%2字节").arg(pattern->fixedLength()).arg(kMaxPattern),
            3000);
        return std::nullopt;
    }
    return pattern;
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
                           [this, search, state, direction] {
                               *state = search->step();
                               const qint64 at = search->position();
                               if (*state == HexSearch::State::Found && hasGap(at, search->length())) {
                                   search->continueFrom(direction == HexSearch::Forward ? at + 1 : at);
                                   *state = HexSearch::State::Running;
                               }
                               return *state == HexSearch::State::Running ? SlicedTask::Step::Running
                                                                          : SlicedTask::Step::Done;
                           },
                           [search] { return search->permille(); },
                           [this, search, state, direction](bool) { showFound(*search, *state, direction); },
                           {}});
}

// Bytes on both sides of a gap don't follow each other.
bool HexFindPanel::hasGap(qint64 begin, qint64 length) const
{
    return begin + length > m_edit->addresses().endOf(begin, m_edit->size());
}

void HexFindPanel::showFound(const HexSearch &search, HexSearch::State state, HexSearch::Direction direction)
{
    if (state == HexSearch::State::TooHard)
        QtMessageTip::showTip(kTooHard, 3000);
    if (state == HexSearch::State::NotFound)
        QtMessageTip::showTip(QStringLiteral("未找到要查找的内容"));
    if (state != HexSearch::State::Found)
        return;
    m_edit->select(search.position(), search.length());
    if (search.hasWrapped())
        QtMessageTip::showTip(direction == HexSearch::Forward ? QStringLiteral("已到末尾，从开头继续查找")
                                                              : QStringLiteral("已到开头，从末尾继续查找"));
}

// Bytes of an image rarely have to move to other addresses: only the insert
// mode does that.
bool HexFindPanel::mayReplace(const std::optional<HexPattern> &old, const std::optional<QByteArray> &with)
{
    if (!old || !with)
        return false;
    if (!m_edit->isOverwrite() || old->fixedLength() == with->size())
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
    const qint64 length = m_edit->selectionLength();
    HexPattern::Match match;
    if (length > 0 && length <= old->maxLength()) {
        const QByteArray selected =
            m_edit->document().read(m_edit->selectionBegin(), static_cast<int>(length));
        old->first(selected.constData(), length, 0, 1, &match);
    }
    if (match.begin == 0 && match.length == length)
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
    const auto state = std::make_shared<HexSearch::State>(HexSearch::State::Running);
    m_edit->task()->start({QStringLiteral("正在替换"),
                           [this, job, state] {
                               *state = job->search.step();
                               if (*state == HexSearch::State::Found) {
                                   const qint64 at = job->search.position();
                                   const qint64 length = job->search.length();
                                   if (hasGap(at, length)) {
                                       job->search.continueFrom(at + 1);
                                       return SlicedTask::Step::Running;
                                   }
                                   m_edit->document().addToBatch(job->batch, at, length, job->with);
                                   job->search.continueFrom(at + length);
                                   ++job->count;
                               }
                               return stepOf(*state);
                           },
                           [job] { return job->search.permille(); },
                           [this, job, state](bool done) { endReplacing(*job, *state, done); },
                           {}});
}

void HexFindPanel::endReplacing(const Replacing &job, HexSearch::State state, bool done)
{
    if (!done || state == HexSearch::State::TooHard) {
        QtMessageTip::showTip(done ? kTooHard + QStringLiteral("，没有替换任何内容")
                                   : QStringLiteral("已停止，没有替换任何内容"),
                              3000);
        return;
    }
    if (job.count > 0) {
        m_edit->document().applyBatch(job.batch);
        m_edit->contentEdited(m_edit->address());
    }
    QtMessageTip::showTip(QStringLiteral("已替换%1处").arg(job.count));
}

void HexFindPanel::listAll()
{
    struct Listing
    {
        HexSearch search;
        std::vector<HexHit> hits;
        HexSearch::State state = HexSearch::State::Running;
    };
    const auto wanted = pattern();
    if (!wanted)
        return;
    const int codec = m_kind->currentIndex() == TextUtf8      ? int(TextCodec::Utf8)
                      : m_kind->currentIndex() == TextGb18030 ? int(TextCodec::Gb18030)
                                                              : -1;
    const auto job = std::shared_ptr<Listing>(
        new Listing{{m_edit->document(), *wanted, 0, HexSearch::Forward, HexSearch::StopAtEnd}, {}});
    m_edit->task()->start(
        {QStringLiteral("正在查找"),
         [this, job, codec] {
             job->state = job->search.step();
             if (job->state == HexSearch::State::Found) {
                 const qint64 at = job->search.position();
                 const qint64 length = job->search.length();
                 if (!hasGap(at, length))
                     job->hits.push_back({at, static_cast<int>(length), codec});
                 job->search.continueFrom(hasGap(at, length) ? at + 1 : at + length);
             }
             return job->hits.size() >= maxResults ? SlicedTask::Step::Done : stepOf(job->state);
         },
         [job] { return job->search.permille(); },
         [this, job](bool done) {
             QString summary = QStringLiteral("“%1”：%2处").arg(m_find->text()).arg(job->hits.size());
             if (job->state == HexSearch::State::TooHard)
                 summary += QStringLiteral("，之后") + kTooHard;
             else if (job->state != HexSearch::State::NotFound)
                 summary += done ? QStringLiteral("，之后的没有列出") : QStringLiteral("，已停止");
             emit listed(job->hits, summary);
         },
         {},
         8});
}
