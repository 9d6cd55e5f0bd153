#include <algorithm>
#include <cstring>

#include "base/Overseer.h"
#include "openhost/core/Diagnostics.h"
#include "openhost/core/Tables.h"
#include "openhost/files/Answering.h"
#include "openhost/files/DiskFile.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/PathSlots.h"
#include "openhost/files/PathSyntax.h"
#include "platform/Files.h"

namespace openhost {

void OfferFolderSlots(CTables& tables);

namespace {

/// The names of one folder as they were when the walk began.
struct CFolderWalk {
    std::string folder;
    std::vector<platform::FolderEntry> entries;
    std::size_t next = 0;
};

struct CFolderWalks {
    CHandles<CFolderWalk, ASFolderIterator> handles{"folder iterator"};
};

/// A trial run's acts show, as far as somebody asks whether a file is there.
void ApplyPretended(const std::string& native, ASFileSysItemPropsRec& record)
{
    const COverseer* const overseer = Overseer();
    const auto exists = overseer && overseer->Pretends() ? overseer->Exists(native) : std::nullopt;
    if (!exists || *exists == (record.isThere != 0)) return;
    record = {};
    record.type = *exists ? kASFileSysFile : kASFileSysUnknown;
    record.isThere = *exists;
}

/// Writes no more than the caller's record holds.
void Deliver(const std::string& native, ASFileSysItemProps props)
{
    if (!props) return;
    ASFileSysItemPropsRec record = ItemProperties(native);
    ApplyPretended(native, record);
    record.size = props->size;
    std::memcpy(props, &record, std::min<std::size_t>(props->size, sizeof record));
}

ASBool Step(CFolderWalk& walk, ASFileSysItemProps props, ASPathName* itemPath)
{
    if (walk.next == walk.entries.size()) return 0;
    const std::string native = JoinNative(walk.folder, walk.entries[walk.next++].name);
    Deliver(native, props);
    if (itemPath) *itemPath = NewPath(native);
    return 1;
}

ASFolderIterator FirstItem(ASFileSys fileSys, ASPathName folder, ASFileSysItemProps props, ASPathName* itemPath)
{
    RequireFileSys(fileSys);
    auto walk = std::make_unique<CFolderWalk>();
    walk->folder = PathAt(folder).Native();
    platform::FileResult result;
    walk->entries = platform::ListFolder(walk->folder, &result);
    if (!result) Raise(FileErrorFromSystem(result.errorNumber), walk->folder + ": the folder cannot be read");
    if (!Step(*walk, props, itemPath)) return nullptr;
    return Part<CFolderWalks>().handles.Add(std::move(walk));
}

ASBool NextItem(ASFileSys fileSys, ASFolderIterator iterator, ASFileSysItemProps props, ASPathName* itemPath)
{
    RequireFileSys(fileSys);
    return Step(Part<CFolderWalks>().handles.At(iterator), props, itemPath);
}

void DestroyIterator(ASFileSys fileSys, ASFolderIterator iterator)
{
    RequireFileSys(fileSys);
    Require(Part<CFolderWalks>().handles.Take(iterator) != nullptr, "not a living folder iterator");
}

bool IsTrialRun(const std::string& native)
{
    const COverseer* const overseer = Overseer();
    if (!overseer || !overseer->Pretends()) return false;
    Diagnose(native + ": the folder is neither made nor removed, because this is a trial run");
    return true;
}

ASErrorCode CreateFolder(ASFileSys fileSys, ASPathName path, ASBool recurse)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        const std::string& native = PathAt(path).Native();
        if (platform::NameExists(native)) return fileErrExists;
        if (IsTrialRun(native)) return fileErrWrPerm;
        if (!recurse) return MakeFolder(native);
        const auto made = platform::CreateFolders(native);
        return made ? 0 : FileErrorFromSystem(made.errorNumber);
    });
}

ASErrorCode RemoveFolder(ASFileSys fileSys, ASPathName path)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        const std::string& native = PathAt(path).Native();
        if (!platform::NameExists(native)) return fileErrFNF;
        if (!platform::FolderExists(native)) return fileErrNotADir;
        if (IsTrialRun(native)) return fileErrWrPerm;
        return RemoveEmptyFolder(native);
    });
}

}  // namespace

ASErrorCode ItemProps(ASFileSys fileSys, ASPathName path, ASFileSysItemProps props)
{
    return Answering([&]() -> ASErrorCode {
        RequireFileSys(fileSys);
        Require(props != nullptr, "no record for the properties");
        Deliver(PathAt(path).Native(), props);
        return 0;
    });
}

void OfferFolderSlots(CTables& tables)
{
    OFFER(tables, AcroSupport, ASFileSysGetItemProps, ItemProps);
    OFFER(tables, AcroSupport, ASFileSysFirstFolderItem, FirstItem);
    OFFER(tables, AcroSupport, ASFileSysNextFolderItem, NextItem);
    OFFER(tables, AcroSupport, ASFileSysDestroyFolderIterator, DestroyIterator);
    OFFER(tables, AcroSupport, ASFileSysCreateFolder, CreateFolder);
    OFFER(tables, AcroSupport, ASFileSysRemoveFolder, RemoveFolder);
}

}  // namespace openhost
