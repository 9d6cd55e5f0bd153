// Loads the built plug-in as a host does. The rest of the handshake needs a whole host and is tested with one.
#include "hostapi/HostInterface.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>

namespace {

using PlugInMainProc = ASBool(HOSTCALL*)(ASUns32, ASUns32*, PISetupSDKProcType*, void*);

PlugInMainProc LoadEntry()
{
    void* library = dlopen(FERRULE_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    EXPECT_NE(library, nullptr) << dlerror();
    return library != nullptr ? reinterpret_cast<PlugInMainProc>(dlsym(library, "PlugInMain")) : nullptr;
}

int tablesAskedFor = 0;

void HOSTCALL PushFrame(void*, restoreEnvironProc) {}
void HOSTCALL PopFrame() {}
ASAtom HOSTCALL AnyAtom(const char*) { return 1; }
HFT HOSTCALL NoTable(ASAtom, ASVersion)
{
    ++tablesAskedFor;
    return nullptr;
}

}  // namespace

TEST(Entry, AnswersTheSmallerHandshakeVersion)
{
    const PlugInMainProc entry = LoadEntry();
    ASSERT_NE(entry, nullptr);
    const struct {
        ASUns32 host, answer;
    } rows[] = {{0x00030000, 0x00020000}, {0x00020000, 0x00020000}, {0x00010000, 0x00010000}};
    for (const auto& row : rows) {
        void* words[] = {nullptr, nullptr};
        ASUns32 version = 0;
        PISetupSDKProcType setup = nullptr;
        EXPECT_EQ(entry(row.host, &version, &setup, words), 1);
        EXPECT_EQ(version, row.answer);
        EXPECT_NE(setup, nullptr);
    }
}

TEST(Entry, SetupRefusesOtherVersionsAndHostsWithoutTheTables)
{
    const PlugInMainProc entry = LoadEntry();
    ASSERT_NE(entry, nullptr);
    ASUns32 version = 0;
    PISetupSDKProcType setup = nullptr;
    ASSERT_EQ(entry(0x00020000, &version, &setup, nullptr), 1);

    std::array<HFTEntry, kTableCoreSelectors + 1> core{};
    core[kSlotASPushExceptionFrame] = reinterpret_cast<HFTEntry>(&PushFrame);
    core[kSlotASPopExceptionFrame] = reinterpret_cast<HFTEntry>(&PopFrame);
    core[kSlotASAtomFromString] = reinterpret_cast<HFTEntry>(&AnyAtom);
    core[kSlotASExtensionMgrGetHFT] = reinterpret_cast<HFTEntry>(&NoTable);
    const struct {
        ASUns32 asked, inRecord;
        bool looksForTables;
    } rows[] = {{0x00030000, 0x00020000, false},
                {0x00010000, 0x00020000, false},
                {0x00020000, 0x00030000, false},
                {0x00020000, 0x00020000, true}};
    for (const auto& row : rows) {
        PISDKData_V0200 data = {};
        data.handshakeVersion = row.inRecord;
        data.coreHFT = core.data();
        tablesAskedFor = 0;
        EXPECT_EQ(setup(row.asked, &data), 0) << row.asked << ", " << row.inRecord;
        EXPECT_EQ(tablesAskedFor > 0, row.looksForTables) << row.asked << ", " << row.inRecord;
        EXPECT_EQ(data.handshakeCallback, nullptr);
    }
}
