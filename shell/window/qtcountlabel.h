#pragma once

// One byte counter of the status bar: "发送字节数: 12". Blank while the page on
// display counts nothing.

#include <QLabel>

class QtCountLabel : public QLabel
{
    Q_OBJECT

public:
    explicit QtCountLabel(const QString &caption, QWidget *parent = nullptr);

    void setCount(const QString &count);
    void clearCount();

private:
    QString m_caption;
};
