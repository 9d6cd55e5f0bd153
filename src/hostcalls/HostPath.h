#pragma once

#include <optional>
#include <string>
#include <utility>

#include "hostapi/HostTypes.h"
#include "hostcalls/Cab.h"

// Unicode texts of the host.

/// Owns one text of the host, or nothing (after a move or Release).
class CHostText {
public:
    CHostText();  // an empty text
    explicit CHostText(ASText adopted) noexcept : m_text(adopted) {}
    CHostText(CHostText&& other) noexcept : m_text(other.Release()) {}
    CHostText& operator=(CHostText&& other) noexcept
    {
        std::swap(m_text, other.m_text);
        return *this;
    }
    ~CHostText();

    /// Invalid input is replaced by U+FFFD. The text ends at the first zero character.
    [[nodiscard]] static CHostText FromUtf8(const std::string& utf8);
    [[nodiscard]] static CHostText FromNarrow(const std::string& narrow);
    /// Bytes as PDF strings hold them: PDFDocEncoding, or UTF-16BE behind FE FF. Zero characters become U+FFFD.
    [[nodiscard]] static CHostText FromPdText(std::string bytes);

    [[nodiscard]] std::string ToUtf8() const;
    [[nodiscard]] std::string ToNarrow() const;
    /// Bytes as FromPdText takes them.
    [[nodiscard]] std::string ToPdText() const;

    ASText Get() const { return m_text; }                                 // borrowed
    ASText Release() noexcept { return std::exchange(m_text, nullptr); }  // the caller destroys from here on

private:
    ASText m_text;
};

/// The content of a borrowed text; empty for null.
[[nodiscard]] std::u16string Utf16FromText(ASConstText text);
[[nodiscard]] std::string Utf8FromText(ASConstText text);
[[nodiscard]] std::string NarrowFromText(ASConstText text);

// Paths of the host's default file system.

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

/// The text that a path cab stands for, UTF-8, as it is written there: the first of "DIText", "DI" and "DIPath" that
/// is there and not empty; empty when none is.
[[nodiscard]] std::string TextOfPathCab(CCabView pathCab);
