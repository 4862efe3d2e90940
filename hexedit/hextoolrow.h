#pragma once

// The row above the bytes: folding the panel, the five tool buttons, the menu
// "视图", the read-out of address and size. Owns the buttons and their group; knows
// no document and not what the buttons do.

#include <QWidget>

class QButtonGroup;
class QLabel;
class QMenu;
class QPushButton;

class HexToolRow : public QWidget
{
    Q_OBJECT

public:
    static constexpr int toolCount = 5;

    explicit HexToolRow(QWidget *parent);

    QPushButton *fold() const { return m_fold; }
    QMenu *viewMenu() const; // of the button "视图"
    QButtonGroup *tools() const { return m_tools; }

    void showAddress(const QString &text);
    void showSize(const QString &text);

protected:
    void changeEvent(QEvent *event) override;

private:
    void addTool(int id);
    void drawIcons();

    QPushButton *m_fold;
    QButtonGroup *m_tools;
    QPushButton *m_view;
    QLabel *m_address;
    QLabel *m_size;
};
