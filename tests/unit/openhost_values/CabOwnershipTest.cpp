#include "unit/openhost_values/ValuesHost.h"

namespace {

int g_destroyed;
void HOSTCALL CountDestroy(void*) { ++g_destroyed; }
void HOSTCALL RaiseInDestroy(void*)
{
    ++g_destroyed;
    CORE(ASRaise)(fileErrIO);
}

class CabOwnership : public CValuesHost {
protected:
    CabOwnership() { g_destroyed = 0; }
    static char* Shared(const char* text) { return openhost::SharedCopy(text); }
};

TEST_F(CabOwnership, DestroyingPuttingNullOrAnotherValueFreesTheOldOne)
{
    const ASCab cab = EXTRA(ASCabNew)();
    const auto refill = [&] {
        EXTRA(ASCabPutString)(cab, "s", Shared("x"));
        EXTRA(ASCabPutText)(cab, "t", EXTRA(ASTextNew)());
        EXTRA(ASCabPutBinary)(cab, "b", Shared("x"), 1);
        EXTRA(ASCabPutCab)(cab, "c", EXTRA(ASCabNew)());
        EXTRA(ASCabPutText)(cab, "c:d:t", EXTRA(ASTextNew)());
        EXTRA(ASCabPutPointerRaw)(cab, "p", "Thing", &g_destroyed, &CountDestroy);
    };
    refill();
    EXTRA(ASCabPutString)(cab, "s", nullptr);
    EXTRA(ASCabPutText)(cab, "t", nullptr);
    EXTRA(ASCabPutBinary)(cab, "b", nullptr, 0);
    EXTRA(ASCabPutCab)(cab, "c", nullptr);
    EXTRA(ASCabPutPointerRaw)(cab, "p", "Thing", nullptr, nullptr);
    EXPECT_EQ(EXTRA(ASCabNumEntries)(cab), 0);
    EXPECT_EQ(g_destroyed, 1);
    refill();
    for (const char* key : {"s", "t", "b", "c", "p"}) EXTRA(ASCabPutInt)(cab, key, 1);
    EXPECT_EQ(g_destroyed, 2);
    EXPECT_EQ(openhost::LiveTexts() + openhost::LiveCabs(), 1u);
    refill();
    EXTRA(ASCabDestroy)(cab);
    EXPECT_EQ(g_destroyed, 3);
}

TEST_F(CabOwnership, WhatIsInsideOneCabIsRefusedByOthers)
{
    const ASCab outer = EXTRA(ASCabNew)();
    const ASCab other = EXTRA(ASCabNew)();
    const ASCab nested = EXTRA(ASCabNew)();
    const ASText text = EXTRA(ASTextNew)();
    EXTRA(ASCabPutCab)(outer, "a:b", nested);
    EXTRA(ASCabPutText)(outer, "text", text);
    EXPECT_REFUSED(EXTRA(ASCabPutCab)(other, "x", nested));
    EXPECT_REFUSED(EXTRA(ASCabPutCab)(outer, "a:b", nested));
    EXPECT_REFUSED(EXTRA(ASCabPutText)(other, "x", text));
    EXPECT_REFUSED(EXTRA(ASCabDestroy)(nested));
    EXPECT_REFUSED(EXTRA(ASTextDestroy)(text));
    EXPECT_REFUSED(EXTRA(ASCabPutCab)(nested, "x", outer));
    EXPECT_REFUSED(EXTRA(ASCabPutCab)(outer, "x:y", outer));
    EXPECT_EQ(EXTRA(ASCabNumEntries)(other), 0);
    EXPECT_EQ(EXTRA(ASCabGetCab)(outer, "a:b"), nested);
    EXPECT_EQ(EXTRA(ASCabDetachCab)(outer, "a:b"), nested);
    EXTRA(ASCabPutCab)(other, "x", nested);
    EXTRA(ASCabDestroy)(outer);
    EXTRA(ASCabDestroy)(other);
    EXPECT_REFUSED(EXTRA(ASCabDestroy)(nested));
    EXPECT_REFUSED(EXTRA(ASTextDestroy)(text));
}

TEST_F(CabOwnership, AFailedPutLeavesTheValueWithTheCaller)
{
    const OwnCab cab = EXTRA(ASCabNew)();
    char* const string = Shared("still mine");
    const OwnText text = EXTRA(ASTextNew)();
    const OwnCab nested = EXTRA(ASCabNew)();
    EXPECT_REFUSED(EXTRA(ASCabPutString)(cab, "a::b", string));
    EXPECT_REFUSED(EXTRA(ASCabPutBinary)(cab, "", string, 3));
    EXPECT_REFUSED(EXTRA(ASCabPutBinary)(cab, "b", string, -1));
    EXPECT_REFUSED(EXTRA(ASCabPutText)(cab, ":", text));
    EXPECT_REFUSED(EXTRA(ASCabPutCab)(cab, ":", nested));
    EXPECT_STREQ(string, "still mine");
    SUPPORT(ASfree)(string);
}

TEST_F(CabOwnership, DetachedAndCopiedValuesBelongToTheCaller)
{
    const ASCab cab = EXTRA(ASCabNew)();
    char* const given = Shared("string");
    EXTRA(ASCabPutString)(cab, "s", given);
    EXTRA(ASCabPutString)(cab, "s", EXTRA(ASCabGetString)(cab, "s"));  // its own value again
    EXTRA(ASCabPutBinary)(cab, "b", Shared("bytes"), 5);
    EXTRA(ASCabPutText)(cab, "t", EXTRA(ASTextFromPDText)("text"));
    EXTRA(ASCabPutPointerRaw)(cab, "p", "Thing", &g_destroyed, &CountDestroy);
    char* const copy = EXTRA(ASCabGetStringCopy)(cab, "s");
    ASTArraySize size = 0;
    void* const bytesCopy = EXTRA(ASCabGetBinaryCopy)(cab, "b", &size);
    EXPECT_EQ(std::string(static_cast<char*>(bytesCopy), static_cast<std::size_t>(size)), "bytes");
    EXPECT_EQ(EXTRA(ASCabDetachString)(cab, "t"), nullptr);  // another type stays
    char* const string = EXTRA(ASCabDetachString)(cab, "s");
    void* const bytes = EXTRA(ASCabDetachBinary)(cab, "b", &size);
    const ASText text = EXTRA(ASCabDetachText)(cab, "t");
    const ASCab dup = EXTRA(ASCabDup)(cab);
    ASBool noReferences = 7;
    EXPECT_EQ(EXTRA(ASCabDetachPointerRaw)(cab, "p", "Other", &noReferences), nullptr);
    EXPECT_EQ(EXTRA(ASCabDetachPointerRaw)(cab, "p", "Thing", &noReferences), &g_destroyed);
    EXPECT_EQ(noReferences, 0);
    EXPECT_EQ(EXTRA(ASCabDetachPointerRaw)(dup, "p", "Thing", &noReferences), &g_destroyed);
    EXPECT_EQ(noReferences, 1);
    EXPECT_EQ(EXTRA(ASCabNumEntries)(cab), 0);
    EXTRA(ASCabDestroy)(cab);
    EXTRA(ASCabDestroy)(dup);
    EXPECT_EQ(g_destroyed, 0);
    EXPECT_EQ(string, given);
    EXPECT_STREQ(copy, "string");
    EXTRA(ASTextDestroy)(text);
    for (void* block : {static_cast<void*>(copy), bytesCopy, static_cast<void*>(string), bytes})
        SUPPORT(ASfree)(block);
}

TEST_F(CabOwnership, APointerIsReadByTheNameOfItsTypeAndDestroyedOnce)
{
    const ASCab cab = EXTRA(ASCabNew)();
    EXTRA(ASCabPutPointerRaw)(cab, "p", "PDDoc", &g_destroyed, &CountDestroy);
    EXPECT_EQ(EXTRA(ASCabGetPointerRaw)(cab, "p", "PDDoc"), &g_destroyed);
    EXPECT_EQ(EXTRA(ASCabGetPointerRaw)(cab, "p", "AVDoc"), nullptr);
    EXPECT_STREQ(EXTRA(ASCabGetPointerType)(cab, "p"), "PDDoc");
    EXPECT_EQ(EXTRA(ASCabGetPointerDestroyProc)(cab, "p"), &CountDestroy);
    EXTRA(ASCabPutPointerRaw)(cab, "p", "PDDoc", &g_destroyed, &CountDestroy);  // the same once more
    const ASCab dup = EXTRA(ASCabDup)(cab);
    EXTRA(ASCabDestroy)(cab);
    EXPECT_EQ(g_destroyed, 0);
    EXTRA(ASCabDestroy)(dup);
    EXPECT_EQ(g_destroyed, 1);
}

TEST_F(CabOwnership, ARaiseInADestroyProcedureFreesTheRestAndPassesThrough)
{
    const ASCab cab = EXTRA(ASCabNew)();
    EXTRA(ASCabPutPointerRaw)(cab, "a:p", "Thing", &g_destroyed, &RaiseInDestroy);
    EXTRA(ASCabPutText)(cab, "a:text", EXTRA(ASTextNew)());
    EXTRA(ASCabPutPointerRaw)(cab, "b", "Thing", cab, &CountDestroy);
    EXPECT_RAISES(fileErrIO, EXTRA(ASCabDestroy)(cab));
    EXPECT_EQ(g_destroyed, 2);
}

TEST_F(CabOwnership, NestingHasALimit)
{
    std::string key = "k";
    for (int depth = 1; depth < 128; ++depth) key += ":k";
    const OwnCab deep = EXTRA(ASCabNew)();
    EXTRA(ASCabPutInt)(deep, key.c_str(), 1);
    const std::string deeper = key + ":k";
    const OwnCab other = EXTRA(ASCabNew)();
    EXPECT_REFUSED(EXTRA(ASCabPutInt)(other, deeper.c_str(), 1));
    EXPECT_REFUSED(EXTRA(ASCabPutCab)(other, "k", deep));
    EXPECT_RAISES(0, EXTRA(ASCabCopy)(deep, deep));
    EXPECT_EQ(EXTRA(ASCabNumEntries)(other), 0);
}

}  // namespace
