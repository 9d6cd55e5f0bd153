// The lowest level of the open host, used the way a plug-in uses it: through the entries of the tables.
#include <csetjmp>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "openhost/core/Atoms.h"
#include "openhost/core/Extensions.h"
#include "openhost/core/Host.h"
#include "openhost/core/Memory.h"
#include "openhost/core/Tables.h"

namespace {

using namespace openhost;

class CoreTables : public ::testing::Test {
protected:
    CoreTables()
    {
        Part<CDiagnostics>().SetListener([this](std::string_view text) { said.emplace_back(text); });
        OfferCoreSlots(Part<CTables>());
    }

    template <class SlotProc>
    SlotProc At(Table table, int slot)
    {
        return reinterpret_cast<SlotProc>(Part<CTables>().Get(table)[slot]);
    }
#define CALL(table, function) At<function##SlotProc>(Table::table, kSlot##function)

    CHost host;
    std::vector<std::string> said;
};

/// The code with which `work` raised, or 0: what a plug-in's own frame would see.
template <class Work>
ASErrorCode Raised(Work work)
{
    return RunInFrame([](void* body) { (*static_cast<Work*>(body))(); }, &work);
}

int g_destroyed = 0;
struct CountsDestruction {
    ~CountsDestruction() { ++g_destroyed; }
};

void RaisesWithAnObjectAlive(AVMenu)
{
    const CountsDestruction object;
    Raise(fileErrDiskFull, "cannot write out.pdf: the disk is full");
}

TEST_F(CoreTables, ARaiseDestroysTheHostsObjectsAndKeepsItsMessageUntilAnotherOne)
{
    OFFER(Part<CTables>(), AcroView, AVMenuRelease, RaisesWithAnObjectAlive);
    g_destroyed = 0;
    EXPECT_EQ(Raised([&] { CALL(AcroView, AVMenuRelease)(nullptr); }), fileErrDiskFull);
    EXPECT_EQ(g_destroyed, 1);
    char buffer[100] = "";
    CALL(AcroSupport, ASGetErrorString)(fileErrDiskFull, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "cannot write out.pdf: the disk is full");
    char small[11] = "";
    CALL(AcroSupport, ASGetErrorString)(fileErrDiskFull, small, sizeof small);
    EXPECT_STREQ(small, "ca... full");
    EXPECT_EQ(Raised([&] { CALL(Core, ASRaise)(fileErrDiskFull); }), fileErrDiskFull);
    EXPECT_EQ(ErrorText(fileErrDiskFull), buffer) << "passed on";
    EXPECT_EQ(Raised([&] { CALL(Core, ASRaise)(genErrBadParm); }), genErrBadParm);
    EXPECT_EQ(ErrorText(genErrBadParm).find("out.pdf"), std::string::npos);
    CALL(AcroSupport, ASGetErrorString)(0x7FFFFFFF, small, sizeof small);
    EXPECT_STREQ(small, "ca... full") << "an unknown code changes nothing";
}

TEST_F(CoreTables, AnEntryThatIsNotOfferedRaisesAndIsNamedOnce)
{
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ(Raised([&] { CALL(PDModel, PDDocClose)(nullptr); }), genErrMethodNotImplemented);
    EXPECT_EQ(Raised([&] { At<void (*)()>(Table::PDFEditRead, 163)(); }), genErrMethodNotImplemented);
    ASSERT_EQ(said.size(), 2u);
    EXPECT_NE(said[0].find("PDModel 71 (PDDocClose)"), std::string::npos) << said[0];
    EXPECT_NE(said[1].find("PDFEditRead 163"), std::string::npos) << said[1];
}

ASBool HOSTCALL RaisingVisitor(ASExtension, void* frames)
{
    static_cast<CFrames*>(frames)->Push(nullptr, nullptr);  // pushed and forgotten
    static_cast<CFrames*>(frames)->Pop();
    const auto raise = reinterpret_cast<ASRaiseSlotProc>(Part<CTables>().Get(Table::Core)[kSlotASRaise]);
    raise(genErrCanceled);
    return 1;
}

ASBool HOSTCALL ForgetfulVisitor(ASExtension, void* frames)
{
    static_cast<CFrames*>(frames)->Push(nullptr, nullptr);
    return 1;
}

TEST_F(CoreTables, AVisitorMayRaiseOrForgetAFrameWithoutHarm)
{
    Part<CExtensions>().Add("one.api");
    auto& frames = Part<CFrames>();
    EXPECT_EQ(Raised([&] { CALL(Core, ASEnumExtensions)(&RaisingVisitor, &frames, 0); }), genErrCanceled);
    EXPECT_EQ(frames.Depth(), 0u);
    EXPECT_EQ(Raised([&] { CALL(Core, ASEnumExtensions)(&ForgetfulVisitor, &frames, 0); }), 0);
    EXPECT_EQ(frames.Depth(), 0u);
    ASSERT_FALSE(said.empty());
    EXPECT_NE(said.back().find("frames in disorder"), std::string::npos);
}

ASBool HOSTCALL ThrowingVisitor(ASExtension, void*)
{
    const CountsDestruction object;
    throw std::runtime_error("out of the plug-in");
}

/// A plug-in's own jump: its buffer is not the host's business, and neither is the function that jumps to it.
std::jmp_buf g_ownTarget;
void HOSTCALL OwnJump(void* target) { std::longjmp(*static_cast<std::jmp_buf*>(target), 1); }
void CallWithOwnFrame(void* core)
{
    const HFT table = static_cast<HFT>(core);
    const CountsDestruction object;
    reinterpret_cast<ASPushExceptionFrameSlotProc>(table[kSlotASPushExceptionFrame])(&g_ownTarget, &OwnJump);
    if (setjmp(g_ownTarget) == 0) reinterpret_cast<ASRaiseSlotProc>(table[kSlotASRaise])(genErrCanceled);
    reinterpret_cast<ASPopExceptionFrameSlotProc>(table[kSlotASPopExceptionFrame])();
}

ASBool HOSTCALL VisitorWithOwnFrame(ASExtension, void* core)
{
    CallWithOwnFrame(core);
    reinterpret_cast<ASRaiseSlotProc>(static_cast<HFT>(core)[kSlotASRaise])(genErrBadParm);
    return 1;
}

TEST_F(CoreTables, WhatLeavesAVisitorReachesTheCallerAsARaiseAndDestroysEachObjectOnce)
{
    Part<CExtensions>().Add("one.api");
    const HFT core = Part<CTables>().Get(Table::Core);
    const struct {
        ASExtensionEnumProc visitor;
        ASErrorCode code;
    } rows[] = {{&ThrowingVisitor, genErrGeneral}, {&VisitorWithOwnFrame, genErrBadParm}};
    for (const auto& row : rows) {
        g_destroyed = 0;
        // Two hosts' frames, one of the plug-in's, one of the host's again.
        EXPECT_EQ(Raised([&] {
                      EXPECT_EQ(Raised([&] {
                                    CALL(Core, ASEnumExtensions)
                                    (row.visitor, core, 0);
                                }),
                                row.code);
                  }),
                  0);
        EXPECT_EQ(g_destroyed, 1);
        EXPECT_EQ(Part<CFrames>().Depth(), 0u);
    }
}

TEST_F(CoreTables, TablesAreFoundByNameUpToTheirVersion)
{
    const auto find = CALL(Core, ASExtensionMgrGetHFT);
    const struct {
        const char* name;
        ASVersion version;
        bool there;
    } rows[] = {{"Core", 0x00050000, true},      {"AcroView", 0x00060000, true},
                {"AcroView", 0x000C0003, true},  {"AcroView", 0x000C0004, false},
                {"Win", 0x00050000, true},       {"Forms", 0x00010002, false},
                {"acroview", 0x00060000, false}, {"", 0, false},
                {"PDSRead", 0x00060000, true},   {"PDFEditWrite", 0x00060000, true}};
    for (const auto& row : rows) {
        const HFT table = find(AtomFromText(row.name), row.version);
        EXPECT_EQ(table != nullptr, row.there) << row.name << " " << std::hex << row.version;
        if (table) {
            EXPECT_NE(CALL(AcroSupport, HFTGetVersion)(table), HFT_ERROR_NO_VERSION) << row.name;
        }
    }
}

TEST_F(CoreTables, AtomsAreEqualForEqualTextsAndUnknownOnesHaveNoText)
{
    const auto make = CALL(Core, ASAtomFromString);
    EXPECT_EQ(make("Params"), make("Params"));
    EXPECT_NE(make("Params"), make("params"));
    EXPECT_EQ(make(""), kNullAtom);
    EXPECT_STREQ(CALL(Core, ASAtomGetString)(make("Params")), "Params");
    EXPECT_STREQ(CALL(Core, ASAtomGetString)(kNullAtom), "");
    EXPECT_EQ(CALL(Core, ASAtomGetString)(1234), nullptr);
    EXPECT_EQ(Raised([&] { make(nullptr); }), genErrBadParm);
}

}  // namespace
