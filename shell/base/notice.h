#pragma once

// What the program tells the user in the status bar, without asking anything.

#include <QMetaType>
#include <QString>

struct Notice
{
    enum Kind { Information = 0, Error = 255 };

    QString text;
    Kind kind = Information;

    static Notice information(const QString &text) { return {text, Information}; }
    static Notice error(const QString &text) { return {text, Error}; }

    bool isError() const { return kind == Error; }
};

Q_DECLARE_METATYPE(Notice)
