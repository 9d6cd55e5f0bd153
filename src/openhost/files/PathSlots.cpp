#include "openhost/files/PathSlots.h"

#include <cstring>
#include <filesystem>
#include <optional>
#include <random>

#include "openhost/core/Atoms.h"
#include "openhost/core/Memory.h"
#include "openhost/core/Tables.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/Files.h"
#include "openhost/values/Text.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

/// A path in the form of the system's own calls.
struct CPlatformPath {
    std::string native;
};

struct CPlatformPaths {
    CHandles<CPlatformPath, ASPlatformPath> handles{"platform path"};
};

std::string_view Given(const void* text)
{
    Require(text != nullptr, "no text was given");
    return static_cast<const char*>(text);
}

const CFilePath* PathOrNone(ASPathName path) { return path ? &PathAt(path) : nullptr; }

std::string InFolder(const CFilePath& folder, const std::string& name)
{
    Require(IsPlainName(name), "not the name of a file");
    return JoinNative(folder.Native(), name);
}

std::string TextBytes(const void* text) { return TextAt(static_cast<ASConstText>(text)).HostBytes(); }

ASPathName AsPath(const void* path) { return static_cast<ASPathName>(const_cast<void*>(path)); }

}  // namespace

// ---- making paths

ASPathName CreatePathName(const ASFileSys fileSys, ASAtom type, const void* spec, const void* extra)
{
    RequireFileSys(fileSys);
    Require(spec != nullptr, "nothing was given to make a path of");
    const std::string form = AtomText(type);
    if (form == "Cstring" || form == "POSIXPath") return NewPath(Given(spec));
    if (form == "CstringWithASText" || form == "POSIXPathWithASText") return NewPath(TextBytes(spec));
    if (form == "DIPath") return NewPath(NativeFromDeviceIndependent(Given(spec), PathOrNone(AsPath(extra))));
    if (form == "DIPathWithASText")
        return NewPath(NativeFromDeviceIndependent(TextBytes(spec), PathOrNone(AsPath(extra))));
    if (form == "FolderPathName") return NewPath(InFolder(PathAt(AsPath(spec)), std::string(Given(extra))));
    if (form == "FolderPathNameWithASText") return NewPath(InFolder(PathAt(AsPath(spec)), TextBytes(extra)));
    Raise(genErrBadParm, "unknown form of a path: " + form);
}

ASPathName PathFromPlatformPath(void* platformPath) { return NewPath(Given(platformPath)); }

ASPathName CopyPath(ASFileSys fileSys, ASPathName path)
{
    RequireFileSys(fileSys);
    return NewPath(PathAt(path).Native());
}

void ReleasePathName(ASFileSys fileSys, ASPathName path)
{
    RequireFileSys(fileSys);
    ReleasePath(path);
}

ASPathName AcquireParent(ASFileSys fileSys, ASPathName path)
{
    RequireFileSys(fileSys);
    const std::string folder = PathAt(path).Folder();
    return folder.empty() ? nullptr : NewPath(folder);
}

namespace {

ASPathName AcquireFileSysPath(ASFileSys oldFileSys, ASPathName path, ASFileSys newFileSys)
{
    RequireFileSys(newFileSys);
    return CopyPath(oldFileSys, path);
}

std::string TempFolder()
{
    std::error_code failed;
    const auto folder = std::filesystem::temp_directory_path(failed);
    if (failed) Raise(fileErrGeneral, "there is no folder for temporary files");
    return platform::TextOf(folder);
}

ASPathName TempPathName(ASFileSys fileSys, ASPathName sibling)
{
    RequireFileSys(fileSys);
    const std::string folder = sibling ? PathAt(sibling).Folder() : TempFolder();
    std::random_device source;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::string path = JoinNative(folder, "ferrule-" + std::to_string(source()) + ".tmp");
        if (!platform::NameExists(path)) return NewPath(path);
    }
    Raise(fileErrTempCreate, folder + ": no name for a temporary file");
}

}  // namespace

// ---- device-independent paths

char* DIPathFromPath(ASFileSys fileSys, ASPathName path, ASPathName relativeTo)
{
    RequireFileSys(fileSys);
    return SharedCopy(DeviceIndependentFrom(PathAt(path), PathOrNone(relativeTo)));
}

namespace {

ASErrorCode DIPathFromPathToText(ASFileSys fileSys, ASPathName path, ASPathName relativeTo, ASText text)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        TextAt(text).SetHostBytes(DeviceIndependentFrom(PathAt(path), PathOrNone(relativeTo)));
        return 0;
    });
}

ASPathName ExistingPath(const std::string& native)
{
    return platform::NameExists(native) ? NewPath(native) : nullptr;
}

}  // namespace

ASPathName PathFromDIPath(ASFileSys fileSys, const char* diPath, ASPathName relativeTo)
{
    RequireFileSys(fileSys);
    return ExistingPath(NativeFromDeviceIndependent(Given(diPath), PathOrNone(relativeTo)));
}

namespace {

ASPathName PathFromDIPathText(ASFileSys fileSys, ASConstText diPath, ASPathName relativeTo)
{
    RequireFileSys(fileSys);
    return ExistingPath(NativeFromDeviceIndependent(TextAt(diPath).HostBytes(), PathOrNone(relativeTo)));
}

}  // namespace

// ---- names and texts

/// A name that does not fit is refused: cut off it would be another file's.
ASErrorCode NameFromPath(ASFileSys fileSys, ASPathName path, char* buffer, ASTArraySize size)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        const std::string name = PathAt(path).Name();
        Require(buffer && size > 0 && name.size() < static_cast<std::size_t>(size), "no room for the file's name");
        std::memcpy(buffer, name.c_str(), name.size() + 1);
        return 0;
    });
}

ASErrorCode NameFromPathToText(ASFileSys fileSys, ASPathName path, ASText name)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        TextAt(name).SetHostBytes(PathAt(path).Name());
        return 0;
    });
}

char* DisplayString(ASFileSys fileSys, ASPathName path)
{
    RequireFileSys(fileSys);
    return SharedCopy(PathAt(path).Native());
}

ASErrorCode DisplayText(ASFileSys fileSys, ASPathName path, ASText text)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        TextAt(text).SetHostBytes(PathAt(path).Native());
        return 0;
    });
}

namespace {

char* UrlFromPath(ASFileSys fileSys, ASPathName path)
{
    RequireFileSys(fileSys);
    return SharedCopy(UrlOfNative(PathAt(path).Native()));
}

// ---- platform paths

ASInt32 AcquirePlatformPath(ASFileSys fileSys, ASPathName path, ASAtom type, ASPlatformPath* platformPath)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        Require(platformPath != nullptr, "no place for the platform's path");
        const std::string form = AtomText(type);
        if (form != "Cstring" && form != "POSIXPath") return genErrMethodNotImplemented;
        auto made = std::make_unique<CPlatformPath>(CPlatformPath{PathAt(path).Native()});
        *platformPath = Part<CPlatformPaths>().handles.Add(std::move(made));
        return 0;
    });
}

void ReleasePlatformPath(ASFileSys fileSys, ASPlatformPath path)
{
    RequireFileSys(fileSys);
    Require(Part<CPlatformPaths>().handles.Take(path) != nullptr, "not a living platform path");
}

/// Plug-ins must not write to it; the type has no const.
char* PlatformPathText(ASPlatformPath path) { return Part<CPlatformPaths>().handles.At(path).native.data(); }

// ---- file systems

ASFileSys FileSysByName(ASAtom name) { return NamesFileSys(AtomText(name)) ? DefaultFileSys() : nullptr; }

ASFileSys FileSysForPath(ASAtom, const void*) { return DefaultFileSys(); }

void SetTempFileSys(ASFileSys fileSys) { RequireFileSys(fileSys); }

ASBool IsLocal(ASFileSys fileSys)
{
    RequireFileSys(fileSys);
    return 1;
}

}  // namespace

std::size_t LivePlatformPaths() { return Part<CPlatformPaths>().handles.Live(); }

void OfferPathSlots(CTables& tables)
{
    OFFER(tables, AcroSupport, ASFileSysCreatePathName, CreatePathName);
    OFFER(tables, AcroSupport, ASPathFromPlatformPath, PathFromPlatformPath);
    OFFER(tables, AcroSupport, ASFileSysCopyPath, CopyPath);
    OFFER(tables, AcroSupport, ASFileSysReleasePath, ReleasePathName);
    OFFER(tables, AcroSupport, ASFileSysAcquireParent, AcquireParent);
    OFFER(tables, AcroSupport, ASFileSysAcquireFileSysPath, AcquireFileSysPath);
    OFFER(tables, AcroSupport, ASFileSysGetTempPathName, TempPathName);
    OFFER(tables, AcroSupport, ASFileSysDIPathFromPath, DIPathFromPath);
    OFFER(tables, AcroSupport, ASFileSysDIPathFromPathEx, DIPathFromPathToText);
    OFFER(tables, AcroSupport, ASFileSysPathFromDIPath, PathFromDIPath);
    OFFER(tables, AcroSupport, ASFileSysPathFromDIPathEx, PathFromDIPathText);
    OFFER(tables, AcroSupport, ASFileSysGetNameFromPath, NameFromPath);
    OFFER(tables, AcroSupport, ASFileSysGetNameFromPathAsASText, NameFromPathToText);
    OFFER(tables, AcroSupport, ASFileSysGetNameFromPathForDisplay, NameFromPathToText);
    OFFER(tables, AcroSupport, ASFileSysDisplayStringFromPath, DisplayString);
    OFFER(tables, AcroSupport, ASFileSysDisplayASTextFromPath, DisplayText);
    OFFER(tables, AcroSupport, ASFileSysURLFromPath, UrlFromPath);
    OFFER(tables, AcroSupport, ASFileSysAcquirePlatformPath, AcquirePlatformPath);
    OFFER(tables, AcroSupport, ASFileSysReleasePlatformPath, ReleasePlatformPath);
    OFFER(tables, AcroSupport, ASPlatformPathGetCstringPtr, PlatformPathText);
    OFFER(tables, AcroSupport, ASPlatformPathGetPOSIXPathPtr, PlatformPathText);
    OFFER(tables, AcroSupport, ASGetDefaultFileSys, DefaultFileSys);
    OFFER(tables, AcroSupport, ASGetDefaultUnicodeFileSys, DefaultFileSys);
    OFFER(tables, AcroSupport, ASGetDefaultFileSysForPath, FileSysForPath);
    OFFER(tables, AcroSupport, ASGetTempFileSys, DefaultFileSys);
    OFFER(tables, AcroSupport, ASSetTempFileSys, SetTempFileSys);
    OFFER(tables, AcroSupport, ASFileGetFileSysByName, FileSysByName);
    OFFER(tables, AcroSupport, ASFileSysIsLocal, IsLocal);
}

}  // namespace openhost
