#pragma once

// A list of serial ports that can also be typed into. Refilling keeps what was
// chosen or typed. Knows only the entries' texts, not what they stand for.

#include <QComboBox>

class PortComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit PortComboBox(QWidget *parent = nullptr);

    void setPorts(const QStringList &entries);
    bool selectEntry(const QString &entry); // exact; false when not in the list
};
