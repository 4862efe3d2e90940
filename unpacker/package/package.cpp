#include "package.h"

#include <algorithm>
#include <array>
#include <map>

namespace {

constexpr std::array<const char *, 4> kKeptFolders{"conf", "tmp", "download", "save"};

std::string firstPart(const std::string &path)
{
    return path.substr(0, path.find('/'));
}

bool fail(std::string &problem, const std::string &text, const std::string &name = {})
{
    problem = name.empty() ? text : text + "：" + name;
    return false;
}

// Keeps every file and folder under the name by which all systems would find it.
// False where two differ only in case, or a file occurs twice.
class Spellings
{
public:
    bool add(const std::string &path, bool isFolder)
    {
        for (std::size_t slash = path.find('/'); slash != std::string::npos;
             slash = path.find('/', slash + 1))
            if (!addOne(path.substr(0, slash), true))
                return false;
        return addOne(path, isFolder);
    }

private:
    bool addOne(const std::string &path, bool isFolder)
    {
        const auto found = m_known.try_emplace(PackageNames::folded(path), path, isFolder);
        return found.second || (isFolder && found.first->second == std::make_pair(path, true));
    }

    std::map<std::string, std::pair<std::string, bool>> m_known;
};

bool hasPlausibleSize(const ZipEntry &entry)
{
    return entry.size <= 65536 + Package::kMaxRatio * entry.packed;
}

// "Korvex-1.0.2.7/" where everything is in that folder, the executable too;
// empty where the executable is at the top; nothing found: false.
bool findTop(const std::vector<ZipEntry> &entries, const std::string &executable, std::string &top)
{
    const auto has = [&entries](const std::string &name) {
        return std::any_of(entries.begin(), entries.end(),
                           [&name](const ZipEntry &entry) { return entry.name == name; });
    };
    if (has(executable))
        return true;
    top = entries.empty() ? std::string() : firstPart(entries.front().name) + '/';
    return has(top + executable) &&
           std::all_of(entries.begin(), entries.end(),
                       [&top](const ZipEntry &entry) { return entry.name.rfind(top, 0) == 0; });
}

} // namespace

bool Package::check(ZipReader &reader, const std::string &executable, std::string &problem)
{
    Spellings spellings;
    std::uint64_t unpacked = 0;
    for (const ZipEntry &entry : reader.entries()) {
        const std::string path = entry.isFolder() ? entry.name.substr(0, entry.name.size() - 1) : entry.name;
        if (!PackageNames::isSafe(path))
            return fail(problem, "升级包中有不允许的文件名", entry.name);
        if (entry.isSpecial())
            return fail(problem, "升级包中有链接或特殊文件", entry.name);
        if (!spellings.add(path, entry.isFolder()))
            return fail(problem, "升级包中有重复的文件名", entry.name);
        unpacked += entry.size;
        if (!hasPlausibleSize(entry) || unpacked > kMaxBytes)
            return fail(problem, "升级包解压后过大", entry.name);
    }
    std::string top;
    if (!findTop(reader.entries(), executable, top))
        return fail(problem, "升级包中没有程序文件", executable);

    const auto nowhere = [](const char *, std::size_t) { return true; };
    for (const ZipEntry &entry : reader.entries()) {
        if (!reader.extract(entry, nowhere, problem))
            return false;
        const std::string path = entry.name.substr(top.size());
        const std::string first = PackageNames::folded(firstPart(path));
        if (first == workFolder())
            return fail(problem, "升级包中有不允许的文件名", entry.name);
        if (entry.isFolder() ||
            std::find(kKeptFolders.begin(), kKeptFolders.end(), first) != kKeptFolders.end())
            continue;
        // An archive made on Windows knows no permissions.
        const bool program = path == executable || path == "unzip.exe";
        m_files.push_back({path, &entry, program || entry.isExecutable()});
        m_size += entry.size;
    }
    return true;
}
