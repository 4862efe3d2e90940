// Copying, cutting and pasting of QHexEdit.

#include "hexcharacters.h"
#include "hexclip.h"
#include "hexpaste.h"
#include "qhexedit.h"
#include "qtmessagetip.h"

#include <QApplication>
#include <QClipboard>
#include <QScrollBar>
#include <memory>

namespace {

constexpr qint64 kMostCopied = 16 << 20; // bytes; others get them as text
constexpr qint64 kCheckedText = 1 << 20; // larger text takes too long to compare
constexpr int kMostPasted = 64 << 20;    // characters

} // namespace

bool QHexEdit::isInsideCharacter(qint64 address) const
{
    const auto cells =
        HexCharacters::cells(m_document, address, 1, m_asciiOnly ? HexCharacters::ascii : m_codec);
    return !cells.empty() && cells.front().text.isEmpty();
}

QHexEdit::Range QHexEdit::withWholeCharacters(Range range) const
{
    while (isInsideCharacter(range.begin))
        --range.begin;
    while (isInsideCharacter(range.end))
        ++range.end;
    return range;
}

// What is left of a character of which a part was taken would join with its
// neighbours into others.
QHexEdit::Range QHexEdit::editedRange() const
{
    const Range range{selectionBegin(), selectionBegin() + selectionLength()};
    return m_inText && selectionLength() > 0 ? withWholeCharacters(range) : range;
}

bool QHexEdit::copyAs(bool text)
{
    if (selectionLength() == 0)
        return false;
    if (selectionLength() > kMostCopied) {
        QtMessageTip::showTip(QStringLiteral("选中的内容超过16 MB，不能复制"));
        return false;
    }
    Range range{selectionBegin(), selectionBegin() + selectionLength()};
    if (text)
        range = withWholeCharacters(range);
    auto *clip = new HexClip(m_document.read(range.begin, static_cast<int>(range.end - range.begin)),
                             text ? HexClip::As::Text : HexClip::As::Hex, m_codec);
    if (range.end - range.begin <= kCheckedText && !clip->isExactText())
        QtMessageTip::showTip(
            QStringLiteral("选中的内容不全是文本：在本程序中粘贴不变，其他程序请用“复制为十六进制”"), 5000);
    QApplication::clipboard()->setMimeData(clip);
    return true;
}

void QHexEdit::copy()
{
    copyAs(m_inText);
}

void QHexEdit::copyHex()
{
    copyAs(false);
}

void QHexEdit::copyText()
{
    copyAs(true);
}

void QHexEdit::cut()
{
    if (selectionLength() > 0 && !refuseEdit() && !refuseShift() && copyAs(m_inText))
        deleteSelection();
}

void QHexEdit::paste()
{
    if (refuseEdit())
        return;
    const QMimeData *clip = QApplication::clipboard()->mimeData();
    if (const auto exact = HexClip::exactBytes(clip)) {
        putBytes(*exact, HexDocument::Step::Alone);
        return;
    }
    const QString text = clip ? clip->text() : QString();
    if (text.isEmpty() || text.size() > kMostPasted) {
        QtMessageTip::showTip(text.isEmpty() ? QStringLiteral("剪贴板中没有文本或数据")
                                             : QStringLiteral("粘贴的内容过长，最多64 M字符"));
        return;
    }
    const auto job =
        std::make_shared<HexPaste>(text, m_inText ? HexPaste::As::Text : HexPaste::As::Hex, m_codec);
    const auto state = std::make_shared<HexPaste::State>(HexPaste::State::Running);
    m_task.start({QStringLiteral("正在粘贴"),
                  [job, state] {
                      *state = job->step();
                      return *state == HexPaste::State::Running ? SlicedTask::Step::Running
                                                                : SlicedTask::Step::Done;
                  },
                  [job] { return job->permille(); },
                  [this, job, state, anchor = m_anchor, caret = m_caret](bool) {
                      if (*state == HexPaste::State::Refused)
                          QtMessageTip::showTip(job->refusal(), 5000);
                      if (*state != HexPaste::State::Done)
                          return;
                      moveCaret(anchor, false); // the caret may have been moved meanwhile
                      moveCaret(caret, true);
                      putBytes(job->bytes(), HexDocument::Step::Alone);
                  },
                  {}});
}

void QHexEdit::deleteSelection()
{
    if (selectionLength() == 0 || refuseEdit() || refuseShift())
        return;
    const Range range = editedRange();
    edit(range.begin, range.end - range.begin, QByteArray(), HexDocument::Step::Alone, range.begin);
}

void QHexEdit::selectAll()
{
    const int row = verticalScrollBar()->value();
    select(0, size());
    verticalScrollBar()->setValue(row);
}
