#include "faultydisk.h"

#include <QFile>
#include <algorithm>

namespace fs = std::filesystem;

namespace {

const auto kFailure = std::make_error_code(std::errc::io_error);

QFile fileAt(const fs::path &path)
{
    return QFile(QString::fromStdString(path.string()));
}

} // namespace

bool FaultyDisk::fails()
{
    if (m_fault == None)
        return false;
    ++m_count;
    const bool now = m_fault == FailsOnce ? m_count == m_number : m_count >= m_number;
    m_failed = m_failed || now;
    return now;
}

std::error_code FaultyDisk::makeFolder(const fs::path &folder)
{
    return fails() ? kFailure : Disk::makeFolder(folder);
}

std::error_code FaultyDisk::writeNew(const fs::path &path, bool executable, const Producer &produce)
{
    return fails() ? kFailure : Disk::writeNew(path, executable, produce);
}

std::error_code FaultyDisk::writePiece(Platform::NewFile &file, const char *data, std::size_t size)
{
    if (!fails())
        return Disk::writePiece(file, data, size);
    Disk::writePiece(file, data, size / 2);
    return kFailure;
}

std::error_code FaultyDisk::move(const fs::path &from, const fs::path &to)
{
    if (from == m_held || to == m_held || fails())
        return kFailure;
    auto before = fileAt(to);
    const bool replaced = before.open(QIODevice::ReadOnly);
    m_moves.push_back({from,
                       to,
                       replaced,
                       replaced ? before.readAll() : QByteArray(),
                       {from.parent_path(), to.parent_path()}});
    return Disk::move(from, to);
}

// Tests have no use for the real thing, which takes its time.
std::error_code FaultyDisk::syncFolder(const fs::path &folder)
{
    if (fails())
        return kFailure;
    for (Move &move : m_moves)
        move.unsynced.erase(folder);
    m_moves.erase(
        std::remove_if(m_moves.begin(), m_moves.end(), [](const Move &m) { return m.unsynced.empty(); }),
        m_moves.end());
    return {};
}

std::error_code FaultyDisk::removeTree(const fs::path &folder)
{
    return fails() ? kFailure : Disk::removeTree(folder);
}

void FaultyDisk::cutPower()
{
    const auto isLost = [this](std::size_t i) {
        return m_fault == LosesAll || (m_fault == LosesEven && i % 2 == 0) ||
               (m_fault == LosesOdd && i % 2 == 1);
    };
    for (std::size_t i = m_moves.size(); i-- > 0;) {
        if (!isLost(i))
            continue;
        const Move &move = m_moves[i];
        std::error_code error;
        if (fs::exists(move.from)) // a later move, which was kept, has put another file there
            fs::remove(move.to, error);
        else
            fs::rename(move.to, move.from, error);
        auto before = fileAt(move.to);
        if (move.replaced && before.open(QIODevice::WriteOnly))
            before.write(move.before);
    }
}
