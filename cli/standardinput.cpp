#include "standardinput.h"

#include "console.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace {

constexpr int kPieceBytes = 16 * 1024;

} // namespace

struct StandardInput::Shared
{
    std::mutex mutex;
    std::condition_variable changed;
    StandardInput *owner = nullptr; // null when it is gone
    bool isWanted = false;
};

StandardInput::StandardInput(QObject *parent)
    : QObject(parent)
    , m_shared(std::make_shared<Shared>())
{
    m_shared->owner = this;
}

StandardInput::~StandardInput()
{
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    m_shared->owner = nullptr;
}

void StandardInput::next()
{
    if (std::exchange(m_isAsked, true))
        return;
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    if (!std::exchange(m_isRunning, true))
        std::thread(&StandardInput::run, m_shared).detach();
    m_shared->isWanted = true;
    m_shared->changed.notify_one();
}

void StandardInput::run(const std::shared_ptr<Shared> &shared)
{
    for (bool isOpen = true; isOpen;) {
        {
            std::unique_lock<std::mutex> lock(shared->mutex);
            shared->changed.wait(lock, [&] { return shared->isWanted; });
            shared->isWanted = false;
        }
        QByteArray bytes(kPieceBytes, Qt::Uninitialized);
        bytes.truncate(Console::read(bytes.data(), bytes.size()));
        isOpen = !bytes.isEmpty();
        const std::lock_guard<std::mutex> lock(shared->mutex);
        StandardInput *owner = shared->owner;
        if (!owner)
            return;
        QMetaObject::invokeMethod(
            owner,
            [owner, bytes] {
                owner->m_isAsked = bytes.isEmpty(); // nothing follows the end
                if (bytes.isEmpty())
                    emit owner->ended();
                else
                    emit owner->received(bytes);
            },
            Qt::QueuedConnection);
    }
}
