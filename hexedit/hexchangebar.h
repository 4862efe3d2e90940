#pragma once

// Tells above the bytes that another program has changed the file, and offers
// what can be done. No question: it may come while a box is open, and often.

#include <QWidget>

class QLabel;
class QPushButton;

class HexChangeBar : public QWidget
{
    Q_OBJECT

public:
    explicit HexChangeBar(QWidget *parent = nullptr);

    // A file that is gone can't be reloaded; edits would be lost by it.
    void showChange(bool gone, bool edited);

signals:
    void reloadWanted();
    void keepWanted();

private:
    QLabel *m_text;
    QPushButton *m_reload;
};
