#include <cwchar>

#include "platform/NarrowText.h"
#include "platform/WideText_win.h"
#include "platform/Windows_win.h"

namespace platform {
namespace {

bool IsUtf8() { return GetACP() == CP_UTF8; }

/// The code page of consoles. That of this process may be another one, which its manifest asks for.
unsigned ConsolePage()
{
    wchar_t number[16] = L"";
    DWORD size = sizeof number;
    const LSTATUS read = RegGetValueW(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage",
                                      L"OEMCP", RRF_RT_REG_SZ, nullptr, number, &size);
    const unsigned long page = read == ERROR_SUCCESS ? std::wcstoul(number, nullptr, 10) : 0;
    return page != 0 ? static_cast<unsigned>(page) : CP_UTF8;
}

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

CommandFileText TextForCommandFile(std::string_view utf8)
{
    const unsigned page = ConsolePage();
    const std::wstring wide = WideText(std::string(utf8));
    const int length = static_cast<int>(wide.size());
    BOOL lost = page == CP_UTF8;
    const int size =
        lost ? 0 : WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, wide.data(), length, nullptr, 0, nullptr, &lost);
    if (lost || size <= 0) return {CP_UTF8, std::string(utf8)};
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, wide.data(), length, bytes.data(), size, nullptr, nullptr);
    return {page, std::move(bytes)};
}

std::filesystem::path StandardPath(const std::string& path) { return WideText(path); }

std::string TextOf(const std::filesystem::path& path) { return NarrowText(path.native()); }

}  // namespace platform
