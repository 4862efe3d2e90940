#include "tours.h"

#include "userhand.h"

#include <QComboBox>
#include <QLabel>
#include <QTest>

void Tour::init()
{
    m_stage = std::make_unique<Stage>();
    QVERIFY(m_stage->isReady());
}

void Tour::cleanup()
{
    const bool allAnswered = !m_stage->hadForgottenDialog();
    m_stage.reset();
    QVERIFY(allAnswered);
}

bool Tour::click(const char *name)
{
    return UserHand::click(find(name));
}

bool Tour::typeInto(const char *name, const QString &text)
{
    return UserHand::typeInto(find(name), text);
}

bool Tour::choose(const char *comboBox, const QString &entry)
{
    return UserHand::choose(find<QComboBox>(comboBox), entry);
}

QString Tour::textOf(const char *label)
{
    return find<QLabel>(label)->text();
}

bool Tour::answer(const std::function<bool()> &opens, const QString &question, const char *button)
{
    return UserHand::inDialog(opens, [&question, button](QWidget *dialog) {
        return dialog->findChild<QLabel *>(QStringLiteral("msgBoxText"))->text() == question &&
               UserHand::click(dialog->findChild<QWidget *>(QLatin1String(button)));
    });
}
