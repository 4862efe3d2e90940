#pragma once

// The content of a text file whose encoding is not known, without a byte order mark:
// UTF-8 where the bytes are that, or were UTF-16 with such a mark, GB18030 otherwise.

#include <QByteArray>

struct RegisterText
{
    RegisterText(const QByteArray &content); // NOLINT(google-explicit-constructor)

    QString decoded(const QByteArray &part) const;

    QByteArray bytes;
    int codec; // TextCodec's index
};
