#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "support/TestProcess.h"

/// A path made of bytes, which are UTF-8 on Windows. The constructor from a string takes them for another code page
/// there.
inline std::filesystem::path PathFromBytes(std::string_view bytes)
{
    return std::filesystem::path(std::u8string(bytes.begin(), bytes.end()));
}

/// A fresh folder for one test, removed with everything in it.
class CTemporaryFolder {
public:
    /// `parent`: where the folder is made; the system's temporary folder when empty.
    explicit CTemporaryFolder(const std::filesystem::path& parent = {})
    {
        static std::atomic<int> counter{0};
        const auto base = parent.empty() ? std::filesystem::temp_directory_path() : parent;
        for (int attempt = 0; attempt < 1000; ++attempt) {
            m_path = base / ("ferrule-test-" + std::to_string(ProcessId()) + "-" + std::to_string(++counter));
            if (std::filesystem::create_directory(m_path)) return;
        }
        throw std::runtime_error("no temporary folder");
    }
    CTemporaryFolder(const CTemporaryFolder&) = delete;
    CTemporaryFolder& operator=(const CTemporaryFolder&) = delete;
    ~CTemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }

    /// Without a trailing separator.
    std::string Path() const { return m_path.string(); }
    /// With the system's own separators.
    std::string operator/(std::string_view name) const
    {
        return (m_path / PathFromBytes(name)).make_preferred().string();
    }

    /// Writes a file into the folder and answers its path.
    std::string Write(std::string_view name, std::string_view bytes) const
    {
        const std::string path = *this / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    /// Makes a folder (and those above it) inside and answers its path.
    std::string MakeFolder(std::string_view name) const
    {
        const std::string path = *this / name;
        std::filesystem::create_directories(PathFromBytes(path));
        return path;
    }
    std::size_t EntryCount() const
    {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_path)) ++count;
        return count;
    }

private:
    std::filesystem::path m_path;
};

/// The bytes of a file; "<missing>" when it cannot be opened.
inline std::string FileBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) return "<missing>";
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}
