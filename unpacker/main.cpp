// Replaces the installation whose folder it is in, once the application has ended,
// and restarts the application:
//   unzip.exe PACKAGE APPLICATION     puts the package's files in place
//   unzip.exe --clean APPLICATION     removes what an update could not remove
// Under the application's name, and in "_update", a copy of it finishes an
// interrupted update.

#include "installation.h"
#include "progresswindow.h"

#include <cstdio>
#include <fstream>

namespace fs = std::filesystem;

namespace {

constexpr int kWaitForEndMs = 60000;
constexpr int kWaitForOthersMs = 15000;
constexpr int kPollMs = 50;

template <class Condition> bool waitFor(const Condition &condition, int milliseconds)
{
    for (int waited = 0; !condition(); waited += kPollMs) {
        if (waited >= milliseconds)
            return false;
        Platform::sleep(kPollMs);
    }
    return true;
}

// The application shows the problem.
int restart(const fs::path &program, const std::string &problem)
{
    std::vector<std::string> arguments;
    if (!problem.empty()) {
        std::fprintf(stderr, "%s\n", problem.c_str());
        arguments = {"--notice", problem};
    }
    if (!Platform::start(program, arguments))
        Platform::showMessage((problem.empty() ? problem : problem + '\n') + "无法启动程序：" +
                              program.u8string());
    return problem.empty() ? 0 : 1;
}

// After a failed update.
int reportFailure(const Installation &installation, const std::string &problem)
{
    if (!installation.isHalfway())
        return restart(installation.executablePath(), "升级失败，程序仍为原来的版本：" + problem);
    Platform::showMessage("升级没有完成：" + problem +
                          "\n请关闭正在使用程序目录的其他程序，然后再次启动本程序，升级会自动处理完毕。");
    return 1;
}

bool exchangeFiles(Installation &installation, const fs::path &packagePath, const fs::path &self,
                   std::string &problem)
{
    if (installation.isHalfway() && !installation.finish(problem))
        return false;
    std::ifstream file(packagePath, std::ios::binary);
    if (!file) {
        problem = "未找到升级包：" + packagePath.u8string();
        return false;
    }
    ZipReader reader(file);
    Package package;
    return reader.open(problem) &&
           package.check(reader, installation.executablePath().filename().u8string(), problem) &&
           installation.update(reader, package, self, problem);
}

// A package in "download" was downloaded for this update only. One elsewhere belongs
// to the user.
void removePackage(const fs::path &packagePath, const fs::path &folder)
{
    std::error_code error;
    if (fs::equivalent(packagePath.parent_path(), folder / "download", error))
        fs::remove(packagePath, error);
}

// Everything up to the restart, with a progress window.
bool update(Installation &installation, const fs::path &packagePath, const fs::path &self,
            std::string &problem)
{
    const fs::path program = installation.executablePath();
    ProgressWindow window("正在等待程序退出，请关闭它的所有窗口…");
    if (!waitFor([&program] { return !Platform::isRunning(program); }, kWaitForEndMs)) {
        problem = "程序没有退出，或还有另一个窗口在运行，请全部关闭后重新检查更新";
        return false;
    }
    window.setText("正在安装新版本，请不要启动程序或关闭电脑…");
    if (!exchangeFiles(installation, packagePath, self, problem))
        return false;
    removePackage(packagePath, program.parent_path());
    installation.clean(); // except this program itself on Windows; the new version removes it
    return true;
}

int update(Installation &installation, const fs::path &packagePath, const fs::path &self)
{
    std::string problem;
    return update(installation, packagePath, self, problem) ? restart(installation.executablePath(), {})
                                                            : reportFailure(installation, problem);
}

bool finish(Installation &installation, std::string &problem)
{
    const fs::path program = installation.executablePath();
    const ProgressWindow window("上次升级没有完成，正在继续，请稍候…");
    waitFor([&program] { return !Platform::isRunning(program); }, kWaitForOthersMs);
    if (installation.isHalfway() && !installation.finish(problem))
        return false;
    installation.clean();
    return true;
}

int finish(Installation &installation)
{
    std::string problem;
    return finish(installation, problem) ? restart(installation.executablePath(), {})
                                         : reportFailure(installation, problem);
}

bool isName(const std::string &text)
{
    return PackageNames::isSafe(text) && text.find('/') == std::string::npos;
}

int run(const std::vector<std::string> &arguments)
{
    const fs::path self = Platform::executablePath();
    const fs::path own = self.parent_path();
    const bool isFinisher = own.filename() == Package::workFolder();
    const fs::path folder = isFinisher ? own.parent_path() : own;
    const std::string pending = Installation::pendingFor(folder);
    Disk disk;
    // Windows reports the name as it was typed, "korvex.exe" for "Korvex.exe".
    if (!isFinisher && !pending.empty() &&
        PackageNames::folded(pending) == PackageNames::folded(self.filename().u8string())) {
        const Installation halfway(folder, pending, disk);
        if (Platform::start(halfway.finisher(), {}))
            return 0;
        Platform::showMessage("上次升级没有完成，请重新解压升级包！");
        return 1;
    }
    if (!isFinisher && (arguments.size() != 2 || !isName(arguments[1]))) {
        Platform::showMessage("本程序由“检查版本更新”启动，用于解压升级包。");
        return 2;
    }
    const bool cleanOnly = !isFinisher && arguments[0] == "--clean";
    Installation installation(folder, isFinisher ? pending : Platform::executableName(arguments[1]), disk);
    Platform::FolderLock lock;
    if (!waitFor([&] { return lock.acquire(folder); }, isFinisher ? 0 : kWaitForOthersMs)) {
        if (!isFinisher && !cleanOnly) // otherwise the other process does it
            Platform::showMessage("另一个升级正在进行，请稍候。");
        return 1;
    }
    if (cleanOnly)
        return installation.isHalfway() || waitFor([&] { return installation.clean(); }, kWaitForOthersMs)
                   ? 0
                   : 1;
    return isFinisher ? finish(installation) : update(installation, fs::u8path(arguments[0]), self);
}

} // namespace

int main(int argc, char **argv)
{
    Platform::prepare();
    return run(Platform::arguments(argc, argv));
}
