#pragma once

#include <utility>

namespace platform {

/// Owns an open file of the system, by its descriptor or handle, or none.
class COpenFile {
public:
    static constexpr long long kNone = -1;

    explicit COpenFile(long long adopted = kNone) noexcept : m_file(adopted) {}
    COpenFile(COpenFile&& other) noexcept : m_file(std::exchange(other.m_file, kNone)) {}
    COpenFile& operator=(COpenFile&& other) noexcept
    {
        std::swap(m_file, other.m_file);
        return *this;
    }
    COpenFile(const COpenFile&) = delete;
    COpenFile& operator=(const COpenFile&) = delete;
    ~COpenFile() { Close(); }

    long long Get() const { return m_file; }
    bool IsOpen() const { return m_file != kNone; }
    long long Release() noexcept { return std::exchange(m_file, kNone); }
    void Close() noexcept;

private:
    long long m_file;
};

}  // namespace platform
