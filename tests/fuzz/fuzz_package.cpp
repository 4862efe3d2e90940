// Any file as a package: no path leads out of a folder or into one that is
// kept, none comes twice, and no entry hands out more than it said.

#include "package.h"

#include <cstdlib>
#include <set>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::istringstream stream(std::string(reinterpret_cast<const char *>(data), size));
    ZipReader reader(stream);
    Package package;
    std::string problem;
    if (!reader.open(problem) || !package.check(reader, "App", problem)) {
        if (problem.empty())
            abort();
        return 0;
    }
    std::set<std::string> seen;
    for (const Package::File &file : package.files()) {
        const std::string folded = PackageNames::folded(file.path);
        size_t bytes = 0;
        const auto count = [&bytes](const char *, size_t piece) {
            bytes += piece;
            return true;
        };
        if (!seen.insert(folded).second || file.path.find("..") == 0 || file.path.front() == '/' ||
            file.path.find("/../") != std::string::npos || folded.find("conf/") == 0 ||
            folded.find("_update") == 0 || !reader.extract(*file.entry, count, problem) ||
            bytes != file.entry->size)
            abort();
    }
    if (seen.count("app") == 0)
        abort();
    return 0;
}
