#pragma once

// A disk on which the operation of a given number goes wrong: it alone, or it
// and all that follow, as where the process is killed or the power fails. In a
// power cut, changes of names that were not brought to the disk may be lost,
// each for itself.

#include "disk.h"

#include <QByteArray>
#include <set>
#include <vector>

class FaultyDisk : public Disk
{
public:
    enum Fault { None, FailsOnce, Killed, LosesAll, LosesEven, LosesOdd };

    FaultyDisk(Fault fault, int number)
        : m_fault(fault)
        , m_number(number)
    {
    }

    // What can't be moved at all, as a file that is in use.
    void hold(const std::filesystem::path &path) { m_held = path; }
    bool hasFailed() const { return m_failed; }
    // What a power cut leaves. Nothing may be done with this disk afterwards.
    void cutPower();

    std::error_code makeFolder(const std::filesystem::path &folder) override;
    std::error_code writeNew(const std::filesystem::path &path, bool executable,
                             const Producer &produce) override;
    std::error_code move(const std::filesystem::path &from, const std::filesystem::path &to) override;
    std::error_code syncFolder(const std::filesystem::path &folder) override;
    std::error_code removeTree(const std::filesystem::path &folder) override;

protected:
    std::error_code writePiece(Platform::NewFile &file, const char *data, std::size_t size) override;

private:
    struct Move
    {
        std::filesystem::path from;
        std::filesystem::path to;
        bool replaced;
        QByteArray before; // content of `to`
        std::set<std::filesystem::path> unsynced;
    };
    bool fails();

    Fault m_fault;
    int m_number;
    int m_count = 0;
    bool m_failed = false;
    std::filesystem::path m_held;
    std::vector<Move> m_moves; // not on the disk yet
};
