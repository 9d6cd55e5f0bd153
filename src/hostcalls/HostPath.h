// Paths of the host's default file system.
#pragma once

#include "hostcalls/Cab.h"

#include <optional>
#include <string>
#include <utility>

/// Owns one path of the host, or nothing (after a move or Release). The file need not exist unless said otherwise.
class CHostPath {
public:
    explicit CHostPath(ASPathName adopted) noexcept : m_path(adopted) {}
    CHostPath(CHostPath&& other) noexcept : m_path(other.Release()) {}
    CHostPath& operator=(CHostPath&& other) noexcept
    {
        std::swap(m_path, other.m_path);
        return *this;
    }
    ~CHostPath();

    /// A path of the platform, its bytes untouched. Throws CHostException when the host refuses it.
    [[nodiscard]] static CHostPath FromNative(const std::string& path);

    /// A device-independent path: forward slashes, a drive as its first step. Nothing when the host cannot make a
    /// path of it.
    [[nodiscard]] static std::optional<CHostPath> FromDIPath(const std::string& diPath);

    /// The path of the platform. Throws CHostException when there is none.
    [[nodiscard]] std::string ToNative() const;
    [[nodiscard]] std::string ToDIPath() const;

    ASPathName Get() const { return m_path; }                                 // borrowed
    ASPathName Release() noexcept { return std::exchange(m_path, nullptr); }  // the caller releases from here on

private:
    ASPathName m_path;
};

/// The platform path of a borrowed path of any file system. Throws CHostException when there is none.
[[nodiscard]] std::string NativeFromPath(ASFileSys fileSystem, ASPathName path);

/// A cab that stands for a path: "FS" (atom of the file system's name), "DIText" and "DI". `path`: of the platform,
/// or device-independent, beginning with a slash.
[[nodiscard]] CCab PathCab(const std::string& path);

/// The platform path that a path cab stands for: the first of "DI", "DIPath" and "DIText" that is there, as string or
/// text. Nothing when none is there or the host makes no path of it.
[[nodiscard]] std::optional<std::string> NativeFromPathCab(CCabView pathCab);

/// The text that a path cab stands for, UTF-8, as it is written there: the first of "DIText", "DI" and "DIPath" that is
/// there and not empty; empty when none is.
[[nodiscard]] std::string TextOfPathCab(CCabView pathCab);
