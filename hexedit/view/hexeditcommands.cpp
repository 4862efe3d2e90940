#include "hexeditcommands.h"

#include "qhexedit.h"

#include <QMenu>

HexEditCommands::HexEditCommands(QHexEdit *edit)
    : QObject(edit)
    , m_edit(edit)
{
    const auto keys = [](QKeySequence::StandardKey key) { return QKeySequence::keyBindings(key); };
    m_undo = add(QStringLiteral("撤销"), {int(Qt::CTRL) + Qt::Key_Z}, &QHexEdit::undo);
    m_redo = add(QStringLiteral("恢复撤销"), {int(Qt::CTRL) + Qt::SHIFT + Qt::Key_Z}, &QHexEdit::redo);
    m_cut = add(QStringLiteral("剪切"), keys(QKeySequence::Cut), &QHexEdit::cut);
    m_copy = add(QStringLiteral("复制"), keys(QKeySequence::Copy), &QHexEdit::copy);
    m_copyHex = add(QStringLiteral("复制为十六进制"), {}, &QHexEdit::copyHex);
    m_copyText = add(QStringLiteral("复制为文本"), {}, &QHexEdit::copyText);
    m_paste = add(QStringLiteral("粘贴"), keys(QKeySequence::Paste), &QHexEdit::paste);
    m_delete = add(QStringLiteral("删除"), {}, &QHexEdit::deleteSelection);
    m_selectAll = add(QStringLiteral("全选"), keys(QKeySequence::SelectAll), &QHexEdit::selectAll);
    addCopies();
    // In bytes that are no text, characters come about by chance.
    m_asciiOnly = new QAction(QStringLiteral("文本列仅显示ASCII"), this);
    m_asciiOnly->setCheckable(true);
    connect(m_asciiOnly, &QAction::toggled, m_edit, &QHexEdit::setAsciiOnly);
    connect(edit, &QHexEdit::stateChanged, this, &HexEditCommands::update);
    update();
}

HexCommand *HexEditCommands::add(const QString &text, const QList<QKeySequence> &keys,
                                 void (QHexEdit::*slot)())
{
    auto *command = new HexCommand(text, keys, this);
    connect(command, &QAction::triggered, m_edit, slot);
    m_all.append(command);
    return command;
}

void HexEditCommands::addCopies()
{
    using Form = HexCopyText::Form;
    const std::pair<const char *, Form> forms[] = {{"C数组", Form::CArray},
                                                   {"Python", Form::Python},
                                                   {"Base64", Form::Base64},
                                                   {"带地址和文本的列表", Form::HexDump}};
    for (const auto &[text, form] : forms) {
        auto *command = new HexCommand(QString::fromUtf8(text), {}, this);
        connect(command, &QAction::triggered, m_edit, [this, form = form] { m_edit->copyAs(form); });
        m_copiesAs.append(command);
    }
}

void HexEditCommands::update()
{
    const auto refuse = [](HexCommand *command, const QString &general, bool isPossible, const char *why) {
        const bool applies = general.isEmpty() && !isPossible;
        command->setRefusal(applies ? QString::fromUtf8(why) : general);
    };
    const QString noEdit = m_edit->editRefusal();
    const bool isSelected = m_edit->selectionLength() > 0;
    refuse(m_undo, noEdit, m_edit->document().canUndo(), "没有可撤销的修改");
    refuse(m_redo, noEdit, m_edit->document().canRedo(), "没有可恢复的修改");
    for (HexCommand *command : {m_copy, m_copyHex, m_copyText})
        refuse(command, QString(), isSelected, "请先选中内容");
    for (HexCommand *command : qAsConst(m_copiesAs))
        refuse(command, QString(), isSelected, "请先选中内容");
    for (HexCommand *command : {m_cut, m_delete})
        refuse(command, noEdit, isSelected, "请先选中内容");
    m_paste->setRefusal(noEdit);
    refuse(m_selectAll, QString(), m_edit->size() > 0, "没有内容");
}

void HexEditCommands::fill(QMenu *menu) const
{
    menu->setToolTipsVisible(true);
    for (HexCommand *command : {m_cut, m_copyHex, m_copyText})
        menu->addAction(command);
    QMenu *const copies = menu->addMenu(QStringLiteral("复制为"));
    copies->setToolTipsVisible(true);
    for (HexCommand *command : m_copiesAs)
        copies->addAction(command);
    for (HexCommand *command : {m_paste, m_delete})
        menu->addAction(command);
    menu->addSeparator();
    menu->addAction(m_selectAll);
    m_asciiOnly->setChecked(m_edit->content().isAsciiOnly());
    menu->addAction(m_asciiOnly);
}

bool HexEditCommands::runKey(const QKeyEvent *event)
{
    for (HexCommand *command : qAsConst(m_all)) {
        if (command->hasKey(event)) {
            command->run();
            return true;
        }
    }
    return false;
}
