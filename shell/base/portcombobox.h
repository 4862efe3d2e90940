#pragma once

// A list of serial ports that can also be typed into. Refilling keeps what was
// chosen or typed; what was chosen and vanished is chosen again when it is back,
// unless the user has chosen or opened another. Knows only the entries' texts,
// not what they stand for.

#include <QComboBox>

class PortComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit PortComboBox(QWidget *parent = nullptr);

    void setPorts(const QStringList &entries);
    bool selectEntry(const QString &entry); // exact; false when not in the list

private:
    QString m_vanished; // was chosen
    QString m_instead;  // what the list fell back to
};
