#include "hexclipboard.h"

#include "hexpaste.h"
#include "qtmessagetip.h"
#include "slicedtask.h"

#include <QApplication>
#include <QClipboard>
#include <algorithm>
#include <memory>

namespace {

constexpr qint64 kMaxCopied = 16 << 20;  // bytes; other programs get them as text
constexpr qint64 kCheckedText = 1 << 20; // comparing a larger text is too slow
constexpr int kMaxPasted = 64 << 20;     // characters

} // namespace

HexClipboard::HexClipboard(HexContent *content, SlicedTask *task)
    : m_content(content)
    , m_task(task)
{
}

bool HexClipboard::isTooLong() const
{
    const bool tooLong = m_content->selection().length() > kMaxCopied;
    if (tooLong)
        QtMessageTip::showTip(QStringLiteral("选中的内容超过16 MB，不能复制"));
    return tooLong;
}

bool HexClipboard::copy(HexClip::As as) const
{
    HexContent::Range range = m_content->selection();
    if (range.length() == 0)
        return false;
    if (isTooLong())
        return false;
    if (as == HexClip::As::Text)
        range = m_content->withWholeCharacters(range);
    const QByteArray bytes = m_content->document().read(range.begin, static_cast<int>(range.length()));
    auto *clip = new HexClip(bytes, as, m_content->codec());
    if (bytes.size() <= kCheckedText && !clip->isExactText())
        QtMessageTip::showTip(
            QStringLiteral("选中的内容不全是文本：在本程序中粘贴不变，其他程序请用“复制为十六进制”"), 5000);
    QApplication::clipboard()->setMimeData(clip);
    return true;
}

void HexClipboard::copyAs(HexCopyText::Form form) const
{
    const HexContent::Range range = m_content->selection();
    if (range.length() == 0 || isTooLong())
        return;
    HexRuns runs; // within the selection, counted from its begin
    for (const HexRun &run : m_content->addresses().runs(m_content->size())) {
        const qint64 begin = std::max(run.offset, range.begin);
        const qint64 length = std::min(run.offset + run.length, range.end) - begin;
        if (length > 0)
            runs.push_back({run.address + begin - run.offset, begin - range.begin, length});
    }
    const QByteArray bytes = m_content->document().read(range.begin, static_cast<int>(range.length()));
    QApplication::clipboard()->setMimeData(new HexClip(bytes, form, runs));
}

void HexClipboard::paste(const Put &put) const
{
    const qint64 anchor = m_content->anchor();
    const qint64 caret = m_content->caret();
    const QMimeData *clip = QApplication::clipboard()->mimeData();
    if (const auto exact = HexClip::exactBytes(clip)) {
        put(anchor, caret, *exact);
        return;
    }
    const QString text = clip ? clip->text() : QString();
    if (text.isEmpty() || text.size() > kMaxPasted) {
        QtMessageTip::showTip(text.isEmpty() ? QStringLiteral("剪贴板中没有文本或数据")
                                             : QStringLiteral("粘贴的内容过长，最多64 M字符"));
        return;
    }
    const auto job = std::make_shared<HexPaste>(
        text, m_content->isInText() ? HexPaste::As::Text : HexPaste::As::Hex, m_content->codec());
    const auto state = std::make_shared<HexPaste::State>(HexPaste::State::Running);
    m_task->start({QStringLiteral("正在粘贴"),
                   [job, state] {
                       *state = job->step();
                       return *state == HexPaste::State::Running ? SlicedTask::Step::Running
                                                                 : SlicedTask::Step::Done;
                   },
                   [job] { return job->permille(); },
                   [job, state, put, anchor, caret](bool) {
                       if (*state == HexPaste::State::Refused)
                           QtMessageTip::showTip(job->refusal(), 5000);
                       if (*state == HexPaste::State::Done)
                           put(anchor, caret, job->bytes());
                   },
                   {}});
}
