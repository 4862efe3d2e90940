#pragma once

// Exchanges the files of an installation for those of a package, so that after an
// interruption at any point, starting the program again gives the old version or
// the new one. docs/adr/0012-unpacker.md has the argument.
//
// In short: all new files are written to "_update/new". Then the program's own
// executable is replaced, in one step, by a copy of the unpacker, which finishes
// the work when it is started. Then the other files are exchanged; the last step
// puts the new executable in its place. So the executable itself shows the state:
// an unpacker means halfway; any other, and the installation is complete.

#include "disk.h"
#include "package.h"

#include <set>

class Installation
{
public:
    // `executable` is the program's file name in the folder.
    Installation(const std::filesystem::path &folder, const std::string &executable, Disk &disk);

    // The executable of an unfinished update in the folder; empty where there is
    // none.
    static std::string pendingFor(const std::filesystem::path &folder);

    // An update was interrupted; only finish() may be called.
    bool isHalfway() const;

    // Exchanges the files. `unpacker` is the program that finishes the update after
    // an interruption. False: the old version is there (or isHalfway(), where going
    // back failed too), and `problem` is the reason in Chinese.
    bool update(ZipReader &reader, const Package &package, const std::filesystem::path &unpacker,
                std::string &problem);
    // Continues an update, or goes back where that fails. True: the new version is
    // there. False: as above.
    bool finish(std::string &problem);
    // Removes what an update left. False where something stays.
    bool clean();

    // The program that finishes, for as long as isHalfway().
    std::filesystem::path finisher() const;
    std::filesystem::path executablePath() const { return m_folder / m_executable; }

private:
    enum class Part { Current, New, Old };
    std::filesystem::path pathOf(Part part, const std::string &file) const;
    bool mayReplace(const Package &package, std::string &problem) const;
    bool hasSpace(const Package &package) const;
    bool stage(ZipReader &reader, const Package &package, const std::filesystem::path &unpacker,
               std::string &problem);
    void noteFiles(const std::vector<std::string> &files);
    bool stageFiles(ZipReader &reader, const Package &package, std::string &problem);
    bool writeJournal();
    bool readJournal();
    bool goForward();
    void goBack();
    bool makeFolderFor(const std::filesystem::path &file);
    bool move(const std::filesystem::path &from, const std::filesystem::path &to);
    bool sync();
    bool succeeded(const std::error_code &error, const std::filesystem::path &path);

    std::filesystem::path m_folder;
    std::filesystem::path m_work;
    std::string m_executable;
    Disk &m_disk;
    std::vector<std::string> m_files;          // to be exchanged, but the executable
    std::set<std::filesystem::path> m_folders; // in which names change
    std::string m_detail;                      // of the latest failure
};
