#include "platform/WideText_win.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "platform/Windows_win.h"

namespace platform {
namespace {

constexpr std::wstring_view kExtended = L"\\\\?\\";
constexpr std::wstring_view kExtendedUnc = L"\\\\?\\UNC\\";
constexpr std::wstring_view kDevices = L"\\\\.\\";

std::wstring ToWide(std::string_view text, DWORD flags)
{
    const int length = static_cast<int>(text.size());
    const int needed = MultiByteToWideChar(CP_ACP, flags, text.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    if (needed > 0) MultiByteToWideChar(CP_ACP, flags, text.data(), length, wide.data(), needed);
    return wide;
}

/// Whether each character stands for itself in the result.
bool ToNarrow(std::wstring_view text, std::string& narrow)
{
    narrow.clear();
    if (text.empty()) return true;
    const bool utf8 = GetACP() == CP_UTF8;
    const DWORD flags = utf8 ? 0 : WC_NO_BEST_FIT_CHARS;
    BOOL replaced = FALSE;
    const int length = static_cast<int>(text.size());
    const auto convert = [&](char* out, int size, DWORD how) {
        return WideCharToMultiByte(CP_ACP, how, text.data(), length, out, size, utf8 ? nullptr : "?",
                                   utf8 ? nullptr : &replaced);
    };
    narrow.resize(static_cast<std::size_t>(convert(nullptr, 0, flags)));
    convert(narrow.data(), static_cast<int>(narrow.size()), flags);
    return utf8 ? convert(nullptr, 0, WC_ERR_INVALID_CHARS) > 0 : !replaced;
}

// Half a surrogate pair would become U+FFFD in UTF-8, and that is a name that a file may have.
std::wstring WithoutHalves(std::wstring_view text)
{
    std::wstring whole(text);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        const bool high = IS_HIGH_SURROGATE(whole[at]);
        if (high && at + 1 < whole.size() && IS_LOW_SURROGATE(whole[at + 1]))
            ++at;
        else if (high || IS_LOW_SURROGATE(whole[at]))
            whole[at] = L'?';
    }
    return whole;
}

bool HasDrive(std::wstring_view path)
{
    const wchar_t letter = path.empty() ? L'\0' : static_cast<wchar_t>(path[0] | 0x20);
    return path.size() >= 2 && letter >= L'a' && letter <= L'z' && path[1] == L':';
}

/// Without what marks an extended path; one that has no other form stays.
std::wstring UsualForm(std::wstring_view path)
{
    if (path.starts_with(kExtendedUnc)) return L"\\\\" + std::wstring(path.substr(kExtendedUnc.size()));
    if (path.starts_with(kExtended) && HasDrive(path.substr(kExtended.size()))) path.remove_prefix(kExtended.size());
    return std::wstring(path);
}

std::wstring CurrentFolder()
{
    std::wstring folder(GetCurrentDirectoryW(0, nullptr), L'\0');
    folder.resize(GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data()));
    return folder;
}

// "C:" alone: what the drive's current folder is.
std::wstring CurrentFolderOfDrive(std::wstring_view drive)
{
    const std::wstring name(drive);
    std::wstring folder(GetFullPathNameW(name.c_str(), 0, nullptr, nullptr), L'\0');
    folder.resize(GetFullPathNameW(name.c_str(), static_cast<DWORD>(folder.size()), folder.data(), nullptr));
    return folder;
}

/// Takes the next name off a path, and the separators before it.
std::wstring_view TakeName(std::wstring_view& rest)
{
    rest.remove_prefix(std::min(rest.find_first_not_of(L'\\'), rest.size()));
    const auto name = rest.substr(0, rest.find(L'\\'));
    rest.remove_prefix(name.size());
    return name;
}

/// What names can be put behind, with its separator: `\\?\C:\` or `\\?\UNC\server\share\`; takes it off the path.
std::wstring TakeRoot(std::wstring_view& path)
{
    if (HasDrive(path)) {
        std::wstring root = std::wstring(kExtended) + std::wstring(path.substr(0, 2)) + L'\\';
        path.remove_prefix(2);
        return root;
    }
    std::wstring root(kExtendedUnc);
    for (int part = 0; part < 2; ++part) {
        const auto name = TakeName(path);
        root += name;
        root += L'\\';
    }
    return root;
}

std::wstring Resolved(std::wstring_view path)
{
    const std::wstring root = TakeRoot(path);
    const bool endsOpen = path.ends_with(L'\\');
    std::vector<std::wstring_view> names;
    while (!path.empty()) {
        const auto name = TakeName(path);
        if (name == L"..") {
            if (!names.empty()) names.pop_back();
        } else if (!name.empty() && name != L".") {
            names.push_back(name);
        }
    }
    std::wstring whole = root;
    for (const auto& name : names) {
        if (&name != &names.front()) whole += L'\\';
        whole += name;
    }
    if (endsOpen && !names.empty()) whole += L'\\';
    return whole;
}

/// As it would be written from nowhere: with a drive or a server.
std::wstring Absolute(std::wstring path)
{
    if (path.starts_with(L"\\\\") || (HasDrive(path) && path.size() > 2 && path[2] == L'\\')) return path;
    if (HasDrive(path)) return CurrentFolderOfDrive(path.substr(0, 2)) + L'\\' + path.substr(2);
    const std::wstring current = UsualForm(CurrentFolder());
    if (!path.starts_with(L'\\')) return current + L'\\' + path;
    std::wstring_view rest = current;
    return UsualForm(TakeRoot(rest)) + path;
}

bool IsReserved(std::wstring_view name)
{
    static constexpr std::array<std::wstring_view, 6> kDeviceNames = {L"CON", L"PRN",    L"AUX",
                                                                      L"NUL", L"CONIN$", L"CONOUT$"};
    std::wstring upper(name);
    for (wchar_t& letter : upper)
        if (letter >= L'a' && letter <= L'z') letter = static_cast<wchar_t>(letter - L'a' + L'A');
    if (std::ranges::find(kDeviceNames, upper) != kDeviceNames.end()) return true;
    constexpr std::wstring_view kNumbers = L"123456789\u00B9\u00B2\u00B3";
    return upper.size() == 4 && (upper.starts_with(L"COM") || upper.starts_with(L"LPT")) &&
           kNumbers.find(upper[3]) != std::wstring_view::npos;
}

std::wstring_view LastName(std::wstring_view path)
{
    while (path.ends_with(L'\\')) path.remove_suffix(1);
    return path.substr(path.find_last_of(L'\\') + 1);
}

}  // namespace

std::wstring WideText(std::string_view text) { return ToWide(text, 0); }

std::string NarrowText(std::wstring_view text)
{
    std::string narrow;
    ToNarrow(WithoutHalves(text), narrow);
    return narrow;
}

std::wstring WidePath(std::string_view path) { return WidePathOf(ToWide(path, MB_ERR_INVALID_CHARS)); }

std::wstring WidePathOf(std::wstring_view path)
{
    if (path.empty() || path.find(L'\0') != std::wstring_view::npos) return {};
    if (path.starts_with(kExtended) || path.starts_with(kDevices)) return std::wstring(path);
    std::wstring whole(path);
    std::ranges::replace(whole, L'/', L'\\');
    if (whole.starts_with(kExtended) || whole.starts_with(kDevices)) return whole;
    return Resolved(Absolute(std::move(whole)));
}

std::string NarrowPath(std::wstring_view path)
{
    const std::wstring usual = UsualForm(path);
    std::string narrow;
    if (ToNarrow(usual, narrow)) return narrow;
    const std::wstring whole(path);
    std::wstring shortForm(GetShortPathNameW(whole.c_str(), nullptr, 0), L'\0');
    shortForm.resize(GetShortPathNameW(whole.c_str(), shortForm.data(), static_cast<DWORD>(shortForm.size())));
    return NarrowText(shortForm.empty() ? usual : UsualForm(shortForm));
}

std::string NarrowName(std::wstring_view name, std::wstring_view shortName)
{
    std::string narrow;
    if (ToNarrow(name, narrow)) return narrow;
    if (!shortName.empty() && ToNarrow(shortName, narrow)) return narrow;
    return NarrowText(name);
}

bool IsDeviceName(std::wstring_view path)
{
    if (path.starts_with(kDevices)) return true;
    auto name = LastName(path);
    name = name.substr(0, name.find_first_of(L".:"));
    while (name.ends_with(L' ')) name.remove_suffix(1);
    return IsReserved(name);
}

FileResult CheckTargetName(const std::wstring& path)
{
    const bool colon = LastName(path).find(L':') != std::wstring_view::npos;
    return {colon || IsDeviceName(path) ? ERROR_INVALID_NAME : 0};
}

}  // namespace platform
