#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "openhost/core/Host.h"
#include "openhost/core/Memory.h"
#include "openhost/core/Tables.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/Files.h"
#include "openhost/files/PathSlots.h"
#include "openhost/files/Slots.h"
#include "openhost/files/Streams.h"
#include "openhost/values/Cabinet.h"
#include "openhost/values/Slots.h"
#include "openhost/values/Text.h"
#include "support/TemporaryFolder.h"

/// A host with its values and files; everything is called through the entries of the tables, as a plug-in does it.
/// Each test must leave nothing alive.
class CValuesHost : public ::testing::Test {
protected:
    CValuesHost()
    {
        auto& tables = openhost::Part<openhost::CTables>();
        openhost::OfferCoreSlots(tables);
        openhost::OfferValuesSlots(tables);
        openhost::OfferFilesSlots(tables);
        m_blocks = openhost::LiveSharedBlocks();
    }
    void TearDown() override
    {
        EXPECT_EQ(openhost::LiveCabs(), 0u);
        EXPECT_EQ(openhost::LiveTexts(), 0u);
        EXPECT_EQ(openhost::LivePaths(), 0u);
        EXPECT_EQ(openhost::LivePlatformPaths(), 0u);
        EXPECT_EQ(openhost::LiveFiles(), 0u);
        EXPECT_EQ(openhost::LiveStreams(), 0u);
        EXPECT_EQ(openhost::LiveSharedBlocks(), m_blocks);
    }

private:
    openhost::CHost m_host;
    std::size_t m_blocks = 0;
};

template <class SlotProc>
SlotProc At(openhost::Table table, int slot)
{
    return reinterpret_cast<SlotProc>(openhost::Part<openhost::CTables>().Get(table)[slot]);
}

#define EXTRA(function) At<function##SlotProc>(openhost::Table::ASExtra, kSlot##function)
#define SUPPORT(function) At<function##SlotProc>(openhost::Table::AcroSupport, kSlot##function)
#define CORE(function) At<function##SlotProc>(openhost::Table::Core, kSlot##function)

/// An object of the host that goes with its scope.
template <class Handle>
class COwn {
public:
    COwn(Handle handle) : m_handle(handle) {}
    COwn(const COwn&) = delete;
    ~COwn() { Destroy(m_handle); }
    operator Handle() const { return m_handle; }

private:
    static void Destroy(ASCab cab) { EXTRA(ASCabDestroy)(cab); }
    static void Destroy(ASText text) { EXTRA(ASTextDestroy)(text); }
    static void Destroy(ASPathName path) { SUPPORT(ASFileSysReleasePath)(nullptr, path); }

    Handle m_handle;
};
using OwnCab = COwn<ASCab>;
using OwnText = COwn<ASText>;
using OwnPath = COwn<ASPathName>;

/// The code with which `work` raised, or 0. No object with a destructor may be made inside.
template <class Work>
ASErrorCode Raised(Work work)
{
    return openhost::RunInFrame([](void* body) { (*static_cast<Work*>(body))(); }, &work);
}

#define EXPECT_RAISES(code, ...) EXPECT_EQ(Raised([&] { __VA_ARGS__; }), code)
#define EXPECT_REFUSED(...) EXPECT_RAISES(genErrBadParm, __VA_ARGS__)

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
