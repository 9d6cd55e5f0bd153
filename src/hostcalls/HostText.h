// Unicode texts of the host.
#pragma once

#include "hostapi/HostTypes.h"

#include <string>
#include <utility>

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

    [[nodiscard]] std::string ToUtf8() const;
    [[nodiscard]] std::string ToNarrow() const;
    /// Bytes as PDF strings hold them: PDFDocEncoding, or UTF-16BE behind FE FF.
    [[nodiscard]] std::string ToPdText() const;

    ASText Get() const { return m_text; }                                 // borrowed
    ASText Release() noexcept { return std::exchange(m_text, nullptr); }  // the caller destroys from here on

private:
    ASText m_text;
};

/// The content of a borrowed text; empty for null.
[[nodiscard]] std::string Utf8FromText(ASConstText text);
[[nodiscard]] std::string NarrowFromText(ASConstText text);
