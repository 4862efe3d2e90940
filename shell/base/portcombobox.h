#pragma once

// An editable list of serial ports. Refilling keeps the chosen or typed entry; a
// chosen port that vanishes is chosen again when it is back, unless the user has
// chosen or opened another. Knows the entries' texts, not the ports.

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
