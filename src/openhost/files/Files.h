#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "hostapi/HostRecords.h"
#include "hostapi/HostTypes.h"
#include "openhost/core/Handles.h"
#include "openhost/files/DiskFile.h"
#include "openhost/files/FilePaths.h"

namespace openhost {

/// An open file, held by plug-ins as ASFile. Opening it again gives the same object and counts.
struct CHostFile {
    CFilePath path;
    CDiskFile disk;
    ASFileMode mode;
    std::uint64_t position = 0;
    int opened = 1;   // closes that are due
    int streams = 0;  // streams that use it
};

class CFiles {
public:
    CHandles<CHostFile, ASFile> handles{"file"};
};

/// Opens a file or the one that is open already, with more rights when the mode wants more. A file opened for writing
/// and creating but not for reading starts empty. Answers 0, or an error code; does not raise for what the disk says.
ASErrorCode OpenFile(const CFilePath& path, ASFileMode mode, ASFile* file);
/// Opens `content` for reading as if it were the file `path`, which a trial run has only pretended to write.
ASErrorCode OpenStandIn(const CFilePath& path, const std::string& content, ASFile* file);
/// Answers 0 or an error code. The file is gone with the last close that is due, or with the last stream on it when
/// that is closed later.
ASErrorCode CloseFile(ASFile handle);
/// Around the moment in which another file takes the place of this one: nobody may have it open then on some systems.
/// What has the name afterwards is what is read and written from there on. When that cannot be opened, every later
/// read and write fails.
void LetGoOfFile(ASFile handle);
void TakeUpFile(ASFile handle);
/// Streams note their use of a file; the last one lets go of a file that was closed before it.
void AddStream(CHostFile& file);
ASErrorCode RemoveStream(CHostFile& file);
/// Raises genErrBadParm unless `file` is a living file.
CHostFile& FileAt(ASFile handle);
std::size_t LiveFiles();

/// The record of the machine's file system. Plug-ins pass it on; the procedures about paths can be called through it,
/// those about open files and everything asynchronous are null.
struct CFileSys {
    CFileSys();
    ASFileSysRec record;
};

}  // namespace openhost
