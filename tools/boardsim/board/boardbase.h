#pragma once

// A board, independent of its transport.

#include <QObject>
#include <QString>

namespace Boardsim {

class BoardBase : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // On failure false and an English text.
    virtual bool begin(QString *error) = 0;
    // "written=.. read=.." in bytes, and more where a board has more to say.
    virtual QString statistics() const = 0;

signals:
    // One line for a user or test that follows the board: "plugged COM3
    // /dev/pts/4", "unplugged COM3", "host arrived", "host left"; on the network
    // "bound 127.0.0.1 4711", "connected 3", "disconnected 2" (and how many
    // are); "finished", or what a mode reports.
    void happened(const QString &text);
    // The board stops with an error.
    void failed(const QString &error);
};

} // namespace Boardsim
