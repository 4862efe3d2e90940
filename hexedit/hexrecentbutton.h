#pragma once

// "最近打开" with its menu, in which other ways to begin stand first. Shows and updates the list of recently
// opened files, which the settings own.

#include <QPushButton>

class HexRecentButton : public QPushButton
{
    Q_OBJECT

public:
    explicit HexRecentButton(QWidget *parent = nullptr);

    void setFirst(QAction *action) { m_first = action; } // of the menu

    void remember(const QString &fileName);
    bool forgetIfGone(const QString &fileName); // true when it was in the list

signals:
    void chosen(const QString &fileName);

private:
    void fillMenu();

    QAction *m_first = nullptr;
};
