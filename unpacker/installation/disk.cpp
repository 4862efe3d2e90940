#include "disk.h"

#include "disksync.h"

#include <array>
#include <fstream>

namespace fs = std::filesystem;

std::error_code Disk::makeFolder(const fs::path &folder)
{
    std::error_code error;
    fs::create_directories(folder, error);
    return error;
}

std::error_code Disk::writeNew(const fs::path &path, bool executable, const Producer &produce)
{
    Platform::NewFile file;
    std::error_code error = file.open(path, executable);
    if (error)
        return error;
    const bool isComplete = produce([&](const char *data, std::size_t size) {
        error = writePiece(file, data, size);
        return !error;
    });
    if (!isComplete && !error)
        error = std::make_error_code(std::errc::operation_canceled);
    return error ? error : file.close();
}

std::error_code Disk::writePiece(Platform::NewFile &file, const char *data, std::size_t size)
{
    return file.write(data, size);
}

std::error_code Disk::move(const fs::path &from, const fs::path &to)
{
    return Platform::replace(from, to);
}

std::error_code Disk::syncFolder(const fs::path &folder)
{
    return DiskSync::flush(folder);
}

std::error_code Disk::removeTree(const fs::path &folder)
{
    std::error_code error;
    fs::remove_all(folder, error);
    return error;
}

std::error_code Disk::copy(const fs::path &from, const fs::path &to, bool executable)
{
    std::ifstream source(from, std::ios::binary);
    if (!source)
        return std::make_error_code(std::errc::io_error);
    return writeNew(to, executable, [&source](const Sink &sink) {
        std::array<char, 65536> piece{};
        do {
            source.read(piece.data(), piece.size());
            if (!sink(piece.data(), static_cast<std::size_t>(source.gcount())))
                return false;
        } while (source);
        return source.eof();
    });
}
