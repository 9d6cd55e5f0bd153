#include "openhost/files/FilePaths.h"

#include <cctype>
#include <vector>

#include "openhost/core/Host.h"
#include "openhost/files/Files.h"
#include "platform/Files.h"

namespace openhost {

std::string PercentEncoded(std::string_view path, std::string_view plain)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        const bool stays = byte < 0x80 && (std::isalnum(byte) || plain.find(character) != std::string_view::npos);
        if (stays)
            encoded += character;
        else
            encoded.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return encoded;
}

namespace {

std::string BaseFolder(const CFilePath* relativeTo)
{
    if (!relativeTo) return AbsoluteNative(".");
    return platform::FolderExists(relativeTo->Native()) ? relativeTo->Native() : relativeTo->Folder();
}

std::vector<std::string_view> Steps(std::string_view path)
{
    std::vector<std::string_view> steps;
    while (!path.empty()) {
        const std::size_t end = path.find('/');
        if (end != 0) steps.push_back(path.substr(0, end));
        path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    }
    return steps;
}

}  // namespace

CFilePath::CFilePath(std::string_view native) : m_native(AbsoluteNative(native))
{
    Require(!native.empty(), "a path cannot be empty");
}

std::string CFilePath::Name() const { return NameOfNative(m_native); }

std::string CFilePath::Folder() const { return FolderOfNative(m_native); }

std::string CFilePath::DeviceIndependent() const { return DeviceIndependentOfNative(m_native); }

std::string NativeFromDeviceIndependent(std::string_view text, const CFilePath* relativeTo)
{
    Require(!text.empty(), "a path cannot be empty");
    if (text.starts_with('/')) return NativeOfDeviceIndependent(text);
    if (IsAbsoluteNative(text)) return AbsoluteNative(text);  // some write what the system's dialogs gave them
    const std::string whole = DeviceIndependentOfNative(BaseFolder(relativeTo)) + "/" + std::string(text);
    const std::size_t root = StepsToRoot(whole);
    std::vector<std::string_view> steps;
    for (const std::string_view step : Steps(whole)) {
        if (step != "..")
            steps.push_back(step);
        else if (steps.size() > root)
            steps.pop_back();
    }
    std::string result;
    for (const std::string_view step : steps) result.append("/").append(step);
    return NativeOfDeviceIndependent(result.empty() ? "/" : result);
}

std::string DeviceIndependentFrom(const CFilePath& path, const CFilePath* relativeTo)
{
    std::string absolute = path.DeviceIndependent();
    if (!relativeTo) return absolute;
    const std::string base = DeviceIndependentOfNative(BaseFolder(relativeTo));
    const auto here = Steps(base);
    const auto there = Steps(absolute);
    std::size_t same = 0;
    while (same < here.size() && same < there.size() && here[same] == there[same]) ++same;
    if (same == 0 || there.size() == same) return absolute;
    std::string relative;
    for (std::size_t index = same; index < here.size(); ++index) relative += "../";
    for (std::size_t index = same; index < there.size(); ++index)
        relative.append(there[index]).append(index + 1 < there.size() ? "/" : "");
    return relative;
}

const CFilePath& PathAt(ASPathName path) { return Part<CPaths>().handles.At(path); }

ASPathName NewPath(std::string_view native)
{
    return Part<CPaths>().handles.Add(std::make_unique<CFilePath>(native));
}

void ReleasePath(ASPathName path) { Require(Part<CPaths>().handles.Take(path) != nullptr, "not a living path"); }

std::size_t LivePaths() { return Part<CPaths>().handles.Live(); }

ASFileSys DefaultFileSys() { return &Part<CFileSys>().record; }

void RequireFileSys(const ASFileSysRec* fileSys)
{
    Require(!fileSys || fileSys == DefaultFileSys(), "not a file system of this host");
}

}  // namespace openhost
