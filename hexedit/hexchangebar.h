#pragma once

// Shows above the bytes that another program has changed the file, and offers
// to reload or to keep. It is no question box, because it may appear while one
// is open, and often.

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
