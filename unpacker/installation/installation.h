#pragma once

// An installation whose files are exchanged for those of a package, so that
// whatever ends it and whenever, starting the program again gives the old
// version or the new one. docs/adr/0012-unpacker.md has the argument.
//
// In short: everything new is brought to the disk in "_update/new". Then the
// program's own executable is replaced, in one step, by a copy of the unpacker,
// which finishes the work when it is started. Under its cover the other files
// are exchanged; the last step puts the new executable in its place. So the
// executable itself says how far things are: an unpacker, halfway; anything
// else, and the installation is whole.

#include "disk.h"
#include "package.h"

#include <set>

class Installation
{
public:
    // `executable` is the program's file name in the folder.
    Installation(const std::filesystem::path &folder, const std::string &executable, Disk &disk);

    // The executable named by an update that was begun in the folder; empty
    // where there is none.
    static std::string begunFor(const std::filesystem::path &folder);

    // An update was ended in the middle; nothing but finish() may be done.
    bool isHalfway() const;

    // Exchanges the files. `unpacker` is the program that finishes it if need
    // be. False: the old version is there (or isHalfway(), where not even that
    // could be done), and `problem` says in Chinese why.
    bool update(ZipReader &reader, const Package &package, const std::filesystem::path &unpacker,
                std::string &problem);
    // Goes on with an update, or back where that can't be. True: the new
    // version is there. False: as above.
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
    bool hasRoom(const Package &package) const;
    bool stage(ZipReader &reader, const Package &package, const std::filesystem::path &unpacker,
               std::string &problem);
    void noteFiles(const std::vector<std::string> &files);
    bool stageFiles(ZipReader &reader, const Package &package, std::string &problem);
    bool writeJournal();
    bool readJournal();
    bool goForward();
    bool goBack();
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
