#pragma once

#include "support/TemporaryFolder.h"
#include "unit/openhost_values/ValuesHost.h"

/// Files of the disk, opened the way a plug-in does it.
class CFilesHost : public CValuesHost {
protected:
    static constexpr ASFileMode kRead = ASFILE_READ;
    static constexpr ASFileMode kWrite = ASFILE_WRITE;
    static constexpr ASFileMode kCreate = ASFILE_WRITE | ASFILE_CREATE;

    static ASPathName Path(const std::string& native) { return openhost::NewPath(native); }
    static ASErrorCode Open(const std::string& native, ASFileMode mode, ASFile* file)
    {
        const ASPathName path = Path(native);
        const ASErrorCode failed = SUPPORT(ASFileSysOpenFile64)(nullptr, path, mode, file);
        SUPPORT(ASFileSysReleasePath)(nullptr, path);
        return failed;
    }
    static ASFile Opened(const std::string& native, ASFileMode mode)
    {
        ASFile file = nullptr;
        EXPECT_EQ(Open(native, mode, &file), 0) << native;
        return file;
    }
    /// When nothing is there, the record says so.
    static ASFileSysItemPropsRec Properties(const std::string& native)
    {
        ASFileSysItemPropsRec props{};
        props.size = sizeof props;
        const ASPathName path = Path(native);
        EXPECT_EQ(SUPPORT(ASFileSysGetItemProps)(nullptr, path, &props), 0);
        SUPPORT(ASFileSysReleasePath)(nullptr, path);
        return props;
    }
    CTemporaryFolder folder;
};
