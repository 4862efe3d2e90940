#pragma once

// Standard input, read by a thread of its own: Windows has no other way to wait
// for it beside an event loop, and one way for all systems is simpler. Reads one
// piece, and the next one only when it is asked for.

#include <QByteArray>
#include <QObject>

#include <memory>

class StandardInput : public QObject
{
    Q_OBJECT

public:
    explicit StandardInput(QObject *parent = nullptr);
    // The thread may wait for input that never comes; it ends with the process.
    ~StandardInput() override;

    // The next piece is wanted; asked again before it is there, it is still one.
    void next();

signals:
    void received(const QByteArray &bytes);
    void ended();

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared> &shared);

    std::shared_ptr<Shared> m_shared;
    bool m_isRunning = false;
    bool m_isAsked = false;
};
