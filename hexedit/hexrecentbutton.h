#pragma once

// "最近打开" with its menu. Owns the list of recently opened files and keeps it
// in the settings.

#include <QPushButton>

class HexRecentButton : public QPushButton
{
    Q_OBJECT

public:
    explicit HexRecentButton(QWidget *parent = nullptr);

    void remember(const QString &fileName);
    bool forgetIfGone(const QString &fileName); // true when it was in the list

signals:
    void chosen(const QString &fileName);

private:
    void fillMenu();
};
