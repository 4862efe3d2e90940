#include "registermenu.h"

#include <QActionGroup>

namespace {

struct Row
{
    RegisterMenu::Action action;
    const char *name;
    const char *text;
    QKeySequence::StandardKey key = QKeySequence::UnknownKey;
    bool isCheckable = false;
    bool hasSeparator = false; // above
};

const Row kRows[] = {
    {RegisterMenu::Find, "actionFindRegister", "查找", QKeySequence::Find, true},
    {RegisterMenu::Copy, "actionCopyRegisters", "复制", QKeySequence::Copy},
    {RegisterMenu::Paste, "actionPasteRegisters", "粘贴", QKeySequence::Paste},
    {RegisterMenu::Selected, "actionSelectedRegisters", nullptr, QKeySequence::UnknownKey, false, true},
    {RegisterMenu::Compare, "actionCompareRegisters", "从板子读取后比较"},
    {RegisterMenu::DifferencesOnly, "actionDifferencesOnly", "只显示不同的行", QKeySequence::UnknownKey,
     true},
    {RegisterMenu::CopyReadTable, "actionCopyReadTable", "从读表复制"},
    {RegisterMenu::BatchOptions, "actionBatchOptions", "批量设置", QKeySequence::UnknownKey, true, true},
    {RegisterMenu::SaveReport, "actionSaveReport", "保存读写报告…"},
};

} // namespace

RegisterMenu::RegisterMenu(bool isRead, QWidget *view, QWidget *parent)
    : QMenu(parent)
    , m_bases(new QActionGroup(this))
{
    for (const Row &row : kRows) {
        if (row.hasSeparator)
            addSeparator();
        QAction *const action = addAction(QString::fromUtf8(row.text));
        action->setObjectName(QLatin1String(row.name));
        action->setCheckable(row.isCheckable);
        action->setShortcutContext(row.action == Find ? Qt::WindowShortcut : Qt::WidgetShortcut);
        if (row.key != QKeySequence::UnknownKey)
            action->setShortcut(row.key);
        m_actions.at(row.action) = action;
        if (row.action == Paste)
            addBases();
    }
    action(Selected)->setText(isRead ? QStringLiteral("只读取选中行") : QStringLiteral("只写入选中行"));
    action(CopyReadTable)->setVisible(!isRead);
    view->addActions({action(Selected), action(Copy), action(Paste)});
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
    parent->addAction(action(Find));
}

void RegisterMenu::addBases()
{
    QMenu *const menu = addMenu(QStringLiteral("值的进制"));
    const QStringList texts{QStringLiteral("十六进制"), QStringLiteral("十进制"), QStringLiteral("二进制")};
    for (int base = 0; base < texts.size(); ++base) {
        QAction *const action = m_bases->addAction(menu->addAction(texts.at(base)));
        action->setObjectName(QStringLiteral("actionBase%1").arg(base));
        action->setCheckable(true);
        connect(action, &QAction::triggered, this, [this, base] { emit baseChosen(base); });
    }
}

void RegisterMenu::setBase(int base)
{
    m_bases->actions().at(base)->setChecked(true);
}

void RegisterMenu::setBusy(bool isBusy)
{
    for (const Action changing : {Paste, Selected, Compare, CopyReadTable})
        action(changing)->setEnabled(!isBusy);
}
