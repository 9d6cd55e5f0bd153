#include "platform/NarrowText.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"

namespace platform {
namespace {

bool IsUtf8() { return GetACP() == CP_UTF8; }

}  // namespace

std::string Utf8FromNarrow(std::string_view narrow)
{
    if (IsUtf8() || narrow.empty()) return std::string(narrow);
    const std::wstring wide = WideText(narrow);
    const int length = static_cast<int>(wide.size());
    std::string utf8(
        static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr)),
        '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), static_cast<int>(utf8.size()), nullptr,
                        nullptr);
    return utf8;
}

std::string NarrowFromUtf8(std::string_view utf8)
{
    if (IsUtf8() || utf8.empty()) return std::string(utf8);
    const int length = static_cast<int>(utf8.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0)),
                      L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), static_cast<int>(wide.size()));
    return NarrowText(wide);
}

std::filesystem::path StandardPath(const std::string& path) { return WideText(path); }

std::string TextOf(const std::filesystem::path& path) { return NarrowText(path.native()); }

}  // namespace platform
