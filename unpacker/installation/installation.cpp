#include "installation.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

namespace {

// An entry of any kind, dangling links too.
bool isThere(const fs::path &path)
{
    std::error_code error;
    return fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

std::string contentOf(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool haveSameContent(const fs::path &left, const fs::path &right)
{
    std::error_code error;
    const auto size = fs::file_size(left, error);
    if (error || size != fs::file_size(right, error) || error)
        return false;
    const std::string content = contentOf(left);
    return content.size() == size && content == contentOf(right);
}

fs::path journalIn(const fs::path &work)
{
    return work / "journal";
}

// The executable's name and the files', one in a line.
std::vector<std::string> linesOf(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

Installation::Installation(const fs::path &folder, const std::string &executable, Disk &disk)
    : m_folder(folder)
    , m_work(folder / Package::workFolder())
    , m_executable(executable)
    , m_disk(disk)
{
}

std::string Installation::pendingFor(const fs::path &folder)
{
    const std::vector<std::string> lines = linesOf(journalIn(folder / Package::workFolder()));
    return lines.empty() ? std::string() : lines.front();
}

fs::path Installation::finisher() const
{
    return m_work / ("finish" + fs::path(m_executable).extension().string());
}

fs::path Installation::pathOf(Part part, const std::string &file) const
{
    const fs::path relative = fs::u8path(file);
    return part == Part::New   ? m_work / "new" / relative
           : part == Part::Old ? m_work / "old" / relative
                               : m_folder / relative;
}

bool Installation::isHalfway() const
{
    return isThere(journalIn(m_work)) && haveSameContent(executablePath(), finisher());
}

bool Installation::succeeded(const std::error_code &error, const fs::path &path)
{
    if (error)
        m_detail = path.lexically_relative(m_folder).generic_u8string() + "：" + Platform::reason(error);
    return !error;
}

bool Installation::move(const fs::path &from, const fs::path &to)
{
    const bool isFromInstallation = *from.lexically_relative(m_folder).begin() != Package::workFolder();
    return succeeded(m_disk.move(from, to), isFromInstallation ? from : to);
}

bool Installation::makeFolderFor(const fs::path &file)
{
    return succeeded(m_disk.makeFolder(file.parent_path()), file);
}

// Everything done so far is on the disk before anything else is done, including
// what an interrupted process did.
bool Installation::sync()
{
    return std::all_of(m_folders.begin(), m_folders.end(), [this](const fs::path &folder) {
        return !isThere(folder) || succeeded(m_disk.syncFolder(folder), folder);
    });
}

void Installation::noteFiles(const std::vector<std::string> &files)
{
    m_files = files;
    m_folders = {m_folder, m_work};
    for (const std::string &file : files)
        for (const Part part : {Part::Current, Part::New, Part::Old})
            for (fs::path above = pathOf(part, file).parent_path(); above != m_folder;
                 above = above.parent_path())
                m_folders.insert(above);
}

// ---- checks before any change

// Only files are replaced. A folder where a file belongs, or a link where a folder
// belongs, was made by the user and stays.
bool Installation::mayReplace(const Package &package, std::string &problem) const
{
    std::error_code error;
    for (const Package::File &file : package.files()) {
        const fs::path path = pathOf(Part::Current, file.path);
        const fs::file_type type = fs::symlink_status(path, error).type();
        bool may = type == fs::file_type::not_found || type == fs::file_type::regular ||
                   (type == fs::file_type::symlink && file.path != m_executable);
        for (fs::path above = path.parent_path(); may && above != m_folder; above = above.parent_path()) {
            const fs::file_type folder = fs::symlink_status(above, error).type();
            may = folder == fs::file_type::directory || folder == fs::file_type::not_found;
        }
        if (!may) {
            problem = "程序目录中已有同名的文件夹或链接：" + file.path;
            return false;
        }
    }
    if (!fs::is_regular_file(executablePath(), error)) {
        problem = "未找到程序文件：" + m_executable;
        return false;
    }
    return true;
}

bool Installation::hasSpace(const Package &package) const
{
    std::error_code error;
    const fs::space_info space = fs::space(m_folder, error);
    const std::uintmax_t old = fs::file_size(executablePath(), error);
    constexpr std::uintmax_t kReserve =
        std::uintmax_t{16} * 1024 * 1024; // two copies of the unpacker, block sizes
    return error || space.available > package.size() + old + kReserve;
}

// ---- forward

bool Installation::update(ZipReader &reader, const Package &package, const fs::path &unpacker,
                          std::string &problem)
{
    if (!mayReplace(package, problem))
        return false;
    if (!clean()) {
        problem = "无法写入程序目录：" + m_detail;
        return false;
    }
    if (!hasSpace(package)) {
        problem = "磁盘空间不足";
        return false;
    }
    if (!stage(reader, package, unpacker, problem)) {
        if (problem.empty())
            problem = "无法写入程序目录，请检查磁盘空间和权限：" + m_detail;
        clean();
        return false;
    }
    // From here on the executable is the unpacker, and finish() can complete the update.
    if (move(m_work / "stub", executablePath()) && sync())
        return finish(problem);
    problem = "无法替换程序文件：" + m_detail;
    if (!isHalfway()) {
        clean();
        return false;
    }
    goBack();
    return false;
}

bool Installation::stage(ZipReader &reader, const Package &package, const fs::path &unpacker,
                         std::string &problem)
{
    std::vector<std::string> files;
    for (const Package::File &file : package.files())
        if (file.path != m_executable)
            files.push_back(file.path);
    noteFiles(files);
    return stageFiles(reader, package, problem) &&
           succeeded(m_disk.copy(executablePath(), pathOf(Part::Old, m_executable), true),
                     executablePath()) &&
           succeeded(m_disk.copy(unpacker, finisher(), true), unpacker) &&
           succeeded(m_disk.copy(unpacker, m_work / "stub", true), unpacker) && writeJournal();
}

bool Installation::stageFiles(ZipReader &reader, const Package &package, std::string &problem)
{
    if (!makeFolderFor(pathOf(Part::Old, m_executable)))
        return false;
    for (const Package::File &file : package.files()) {
        const fs::path path = pathOf(Part::New, file.path);
        if (!makeFolderFor(path) || !makeFolderFor(pathOf(Part::Old, file.path)))
            return false;
        const auto produce = [&](const Disk::Sink &sink) {
            return reader.extract(*file.entry, sink, problem);
        };
        if (!succeeded(m_disk.writeNew(path, file.executable, produce), path))
            return false;
    }
    return true;
}

bool Installation::writeJournal()
{
    std::string text = m_executable + '\n';
    for (const std::string &file : m_files)
        text += file + '\n';
    const fs::path part = m_work / "journal.part";
    const auto produce = [&text](const Disk::Sink &sink) { return sink(text.data(), text.size()); };
    return succeeded(m_disk.writeNew(part, false, produce), part) && sync() &&
           move(part, journalIn(m_work)) && sync();
}

bool Installation::readJournal()
{
    const std::vector<std::string> lines = linesOf(journalIn(m_work));
    if (lines.empty() || lines.front() != m_executable ||
        !std::all_of(lines.begin(), lines.end(), PackageNames::isSafe))
        return false;
    noteFiles({lines.begin() + 1, lines.end()});
    return true;
}

bool Installation::finish(std::string &problem)
{
    if (!readJournal()) {
        problem = "升级记录已损坏";
        return false;
    }
    if (goForward())
        return true;
    problem = "无法替换文件：" + m_detail;
    goBack();
    return false;
}

// The place of each file shows how far it was exchanged, so this can be repeated
// from any point. sync() separates the two halves: no file may count as replaced
// while its old content may be missing in "old".
bool Installation::goForward()
{
    for (const std::string &file : m_files) {
        const fs::path current = pathOf(Part::Current, file);
        if (isThere(pathOf(Part::New, file)) && isThere(current) && !isThere(pathOf(Part::Old, file)) &&
            !move(current, pathOf(Part::Old, file)))
            return false;
    }
    if (!sync())
        return false;
    for (const std::string &file : m_files) {
        const fs::path current = pathOf(Part::Current, file);
        if (isThere(pathOf(Part::New, file)) &&
            (!makeFolderFor(current) || !move(pathOf(Part::New, file), current)))
            return false;
    }
    if (!sync() || !move(pathOf(Part::New, m_executable), executablePath()))
        return false;
    sync(); // after a power cut before it, the unpacker repeats only this step
    return true;
}

// The same in reverse. Interrupted, the update may also continue forward: each new
// file is in "new" or in its place.
void Installation::goBack()
{
    for (const std::string &file : m_files)
        if (!isThere(pathOf(Part::New, file)) && isThere(pathOf(Part::Current, file)) &&
            !move(pathOf(Part::Current, file), pathOf(Part::New, file)))
            return;
    if (!sync())
        return;
    for (const std::string &file : m_files)
        if (isThere(pathOf(Part::Old, file)) && !move(pathOf(Part::Old, file), pathOf(Part::Current, file)))
            return;
    if (!sync() || !move(pathOf(Part::Old, m_executable), executablePath()))
        return;
    sync();
    clean();
}

bool Installation::clean()
{
    return !isThere(m_work) || succeeded(m_disk.removeTree(m_work), m_work);
}
