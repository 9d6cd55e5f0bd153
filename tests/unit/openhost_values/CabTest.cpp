// Collections of values: reading and changing them, who owns what is inside, and their form as bytes.
#include <cstring>
#include <functional>

#include "openhost/values/CabStream.h"
#include "unit/openhost_values/ValuesHost.h"

namespace {

using Keys = std::vector<std::string>;

char* Shared(std::string_view text) { return openhost::SharedCopy(text); }

class Cabs : public CValuesHost {
protected:
    ASCab cab = EXTRA(ASCabNew)();
    void TearDown() override
    {
        if (cab) EXTRA(ASCabDestroy)(cab);
        CValuesHost::TearDown();
    }
};

struct Walk {
    Keys visited;
    std::function<void(ASCab)> atB;
    ASBool goesOnAtB = 1;

    static ASBool HOSTCALL Visit(ASCab cab, const char* key, ASCabValueType, void* walk)
    {
        auto& self = *static_cast<Walk*>(walk);
        self.visited.emplace_back(key);
        if (self.visited.back() != "b") return 1;
        if (self.atB) self.atB(cab);
        return self.goesOnAtB;
    }
};

Keys KeysOf(ASCab cab)
{
    Walk walk;
    EXTRA(ASCabEnum)(cab, &Walk::Visit, &walk);
    return walk.visited;
}

TEST_F(Cabs, NumbersComeFirstByValueThenTheOtherKeysByBytesAndANullKeyTakesTheNumberBehindAllOthers)
{
    EXTRA(ASCabPutInt)(cab, nullptr, 1);
    EXTRA(ASCabPutNull)(cab, "99");
    EXTRA(ASCabPutString)(cab, nullptr, Shared("x"));
    EXTRA(ASCabPutCab)(cab, nullptr, EXTRA(ASCabNew)());
    EXPECT_EQ(KeysOf(cab), (Keys{"1", "99", "100", "101"}));
    EXTRA(ASCabMakeEmpty)(cab);
    for (const char* key : {"b", "10", "a10", "9", "Z", "007", "a9", "1x", "99999999999999999999999", "7", "!"})
        EXTRA(ASCabPutNull)(cab, key);
    EXPECT_EQ(KeysOf(cab),
              (Keys{"007", "7", "9", "10", "99999999999999999999999", "!", "1x", "Z", "a10", "a9", "b"}));
}

TEST_F(Cabs, AWalkSkipsWhatWasAddedOrRemovedMeanwhileAndEndsWithItsCab)
{
    for (const char* key : {"a", "b", "c", "d", "e"}) EXTRA(ASCabPutNull)(cab, key);
    Walk walk;
    walk.atB = [](ASCab walked) {
        for (const char* key : {"a", "b", "c", "d"}) EXTRA(ASCabRemove)(walked, key);  // visited, present, ahead
        EXTRA(ASCabPutNull)(walked, "d");                                              // removed and added again
        EXTRA(ASCabPutInt)(walked, "e", 2);
        EXTRA(ASCabPutNull)(walked, "f");  // added
    };
    EXTRA(ASCabEnum)(cab, &Walk::Visit, &walk);
    EXPECT_EQ(walk.visited, (Keys{"a", "b", "e"}));
    EXPECT_EQ(KeysOf(cab), (Keys{"d", "e", "f"}));
    EXTRA(ASCabPutNull)(cab, "b");
    Walk last;
    last.atB = [](ASCab walked) { EXTRA(ASCabDestroy)(walked); };
    EXTRA(ASCabEnum)(cab, &Walk::Visit, &last);
    EXPECT_EQ(last.visited, (Keys{"b"}));
    cab = nullptr;
}

TEST_F(Cabs, ARaiseInAWalkPassesThroughAndLeavesTheCabUsable)
{
    for (const char* key : {"a", "b", "c"}) EXTRA(ASCabPutNull)(cab, key);
    const auto constantly = reinterpret_cast<ASConstCabEnumProc>(&Walk::Visit);
    Walk raising, changing, stopping;
    raising.atB = [](ASCab) { CORE(ASRaise)(fileErrIO); };
    EXPECT_RAISES(fileErrIO, EXTRA(ASCabEnum)(cab, &Walk::Visit, &raising));
    EXPECT_RAISES(fileErrIO, EXTRA(ASConstCabEnum)(cab, constantly, &raising));
    EXPECT_EQ(raising.visited, (Keys{"a", "b", "a", "b"}));
    changing.atB = [](ASCab walked) {
        EXPECT_REFUSED(EXTRA(ASCabPutNull)(walked, "x"));
        EXPECT_REFUSED(EXTRA(ASCabRemove)(walked, "a"));
        EXPECT_REFUSED(EXTRA(ASCabRename)(walked, "a", "y"));
        EXPECT_REFUSED(EXTRA(ASCabMakeEmpty)(walked));
        EXPECT_REFUSED(EXTRA(ASCabDestroy)(walked));
    };
    EXTRA(ASConstCabEnum)(cab, constantly, &changing);
    EXPECT_EQ(changing.visited, (Keys{"a", "b", "c"}));
    stopping.goesOnAtB = 0;
    EXTRA(ASConstCabEnum)(cab, constantly, &stopping);
    EXPECT_EQ(stopping.visited, (Keys{"a", "b"}));
    EXTRA(ASCabRemove)(cab, "a");
    EXPECT_EQ(KeysOf(cab), (Keys{"b", "c"}));
}

TEST_F(Cabs, APathOfKeysWalksThroughNestedCabs)
{
    EXTRA(ASCabPutInt)(cab, "a:b:c", 5);
    EXTRA(ASCabPutNull)(cab, "n");
    EXTRA(ASCabPutInt)(cab, "n:x", 6);  // a null value makes way
    const ASCab a = EXTRA(ASCabGetCab)(cab, "a");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(EXTRA(ASCabGetInt)(a, "b:c", 0), 5);
    EXPECT_EQ(EXTRA(ASCabGetInt)(cab, "a:b:c", 0), 5);
    for (const char* key : {"a:b:d", "a:x:c", "x:b:c", "a:b:c:d", "a:b:", ":a", ""}) {
        EXPECT_EQ(EXTRA(ASCabGetInt)(cab, key, -1), -1) << key;
        EXPECT_EQ(EXTRA(ASCabKnown)(cab, key), 0) << key;
        EXTRA(ASCabRemove)(cab, key);
    }
    EXPECT_EQ(EXTRA(ASCabGetInt)(cab, "n:x", 0), 6);
    EXTRA(ASCabRename)(cab, "a:b:c", "a:b:e");
    EXPECT_EQ(EXTRA(ASCabGetInt)(cab, "a:b:e", 0), 5);
    EXPECT_REFUSED(EXTRA(ASCabRename)(cab, "a:b:e", "a:e"));
    EXTRA(ASCabRemove)(cab, "a:b:e");
    EXTRA(ASCabDestroyEmpties)(cab, 1);
    EXPECT_EQ(KeysOf(cab), (Keys{"n"}));
}

TEST_F(Cabs, UnusableArgumentsRaiseAndChangeNothing)
{
    EXTRA(ASCabPutInt)(cab, "number", 1);
    const std::string longest(1024, 'k');
    EXTRA(ASCabPutNull)(cab, longest.c_str());
    const std::string longer = longest + "k";
    for (const char* key : {"", ":", "a:", ":a", "a::b", "gr\xC3\xBC", "tab\t", "number:x", longer.c_str()})
        EXPECT_REFUSED(EXTRA(ASCabPutInt)(cab, key, 1)) << key;
    EXPECT_REFUSED(EXTRA(ASCabGetInt)(nullptr, "a", 1));
    EXPECT_REFUSED(EXTRA(ASCabGetInt)(cab, nullptr, 1));
    EXPECT_REFUSED(EXTRA(ASCabCopy)(cab, nullptr));
    EXPECT_REFUSED(EXTRA(ASCabEnum)(cab, nullptr, nullptr));
    EXPECT_REFUSED(EXTRA(ASCabReadFromStream)(nullptr));
    EXPECT_EQ(EXTRA(ASCabNumEntries)(cab), 2);
    EXPECT_EQ(openhost::LiveCabs(), 1u);
}

TEST_F(Cabs, ACopyIsEqualStandsAloneAndMayBeMadeOfWhatHoldsIt)
{
    EXTRA(ASCabPutInt)(cab, "same", 1);
    EXTRA(ASCabPutInt)(cab, "nested:x", 3);
    const ASCab dup = EXTRA(ASCabDup)(cab);
    EXPECT_TRUE(EXTRA(ASCabEqual)(dup, cab));
    EXTRA(ASCabPutInt)(dup, "nested:x", 5);
    EXPECT_FALSE(EXTRA(ASCabEqual)(dup, cab));
    EXPECT_FALSE(EXTRA(ASCabValueEqual)(dup, "nested", cab, "nested"));
    EXPECT_TRUE(EXTRA(ASCabValueEqual)(dup, "same", cab, "same"));
    EXTRA(ASCabPutCab)(cab, "inside", dup);
    EXTRA(ASCabCopy)(cab, dup);  // the target is inside the source
    EXPECT_EQ(EXTRA(ASCabGetInt)(cab, "inside:inside:nested:x", 0), 5);
}

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

TEST_F(CabOwnership, APointerIsReadByTheNameOfItsTypeAndDestroyedOnce)
{
    const ASCab cab = EXTRA(ASCabNew)();
    for (int round = 0; round < 2; ++round)  // the second time the same once more
        EXTRA(ASCabPutPointerRaw)(cab, "p", "PDDoc", &g_destroyed, &CountDestroy);
    EXPECT_EQ(EXTRA(ASCabGetPointerRaw)(cab, "p", "AVDoc"), nullptr);
    EXPECT_STREQ(EXTRA(ASCabGetPointerType)(cab, "p"), "PDDoc");
    EXPECT_EQ(EXTRA(ASCabGetPointerDestroyProc)(cab, "p"), &CountDestroy);
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

constexpr std::size_t kHeader = 24;

class CabStreams : public CValuesHost {
protected:
    static std::string BytesOf(ASCab cab)
    {
        std::string bytes;
        const ASStm stream = SUPPORT(ASProcStmWrOpen)(&Append, nullptr, &bytes);
        EXTRA(ASCabWriteToStream)(cab, stream);
        SUPPORT(ASStmClose)(stream);
        return bytes;
    }
    /// Null when refused. What is taken can be looked at to its last value, and a copy is its own.
    static ASCab Read(const std::string& bytes)
    {
        const ASStm stream = SUPPORT(ASMemStmRdOpen)(bytes.data(), static_cast<ASArraySize>(bytes.size()));
        const ASCab cab = EXTRA(ASCabReadFromStream)(stream);
        SUPPORT(ASStmClose)(stream);
        if (!cab) return nullptr;
        const ASCab copy = EXTRA(ASCabDup)(cab), part = EXTRA(ASCabGetCab)(copy, "Nested");
        const ASCab copyOfPart = part ? EXTRA(ASCabDup)(part) : nullptr;
        EXTRA(ASCabPutInt)(copy, "Nested:more:deep", 1);
        EXPECT_FALSE(EXTRA(ASCabEqual)(cab, copy));
        EXTRA(ASCabRemove)(copy, "Nested:more");
        EXPECT_TRUE(!copyOfPart || EXTRA(ASCabEqual)(EXTRA(ASCabGetCab)(cab, "Nested"), copyOfPart));
        EXPECT_TRUE(!copyOfPart || EXTRA(ASCabEqual)(cab, copy));
        for (const ASCab each : {copy, copyOfPart})
            if (each) EXTRA(ASCabDestroy)(each);
        return cab;
    }
    static bool Refused(const std::string& bytes)
    {
        const ASCab cab = Read(bytes);
        if (cab) EXTRA(ASCabDestroy)(cab);
        return !cab;
    }
    static ASTCount HOSTCALL Append(char* data, ASTArraySize size, void* bytes)
    {
        static_cast<std::string*>(bytes)->append(data, static_cast<std::size_t>(size));
        return size;
    }
};

ASCab CabOfAllTypes()
{
    const ASCab cab = EXTRA(ASCabNew)();
    EXTRA(ASCabPutBool)(cab, "Bool", 1);
    EXTRA(ASCabPutInt)(cab, "Int", -2147483647 - 1);
    EXTRA(ASCabPutUns)(cab, "Uns", 0xFFFFFFFFu);
    EXTRA(ASCabPutInt64)(cab, "Int64", -1);
    EXTRA(ASCabPutUns64)(cab, "Uns64", ~0ull);
    EXTRA(ASCabPutDouble)(cab, "Double", -0.1);
    EXTRA(ASCabPutAtom)(cab, "Atom", CORE(ASAtomFromString)("WorkflowName"));
    EXTRA(ASCabPutAtom)(cab, "NullAtom", 0xFFFF);
    EXTRA(ASCabPutString)(cab, "String", Shared("caf\xC3\xA9 \xFF"));
    EXTRA(ASCabPutString)(cab, "EmptyString", Shared(""));
    EXTRA(ASCabPutBinary)(cab, "Binary", Shared(std::string_view("\0\1\xFF", 3)), 3);
    EXTRA(ASCabPutNull)(cab, "Null");
    const ASUTF16Val lone[] = {'a', 0xDC80, 0xD83D, 0xDE00};
    const ASText text = EXTRA(ASTextFromSizedUnicode)(lone, kUTF16HostEndian, sizeof lone);
    EXTRA(ASTextSetCountry)(text, 0x4445);
    EXTRA(ASTextSetLanguage)(text, 0x6465);
    EXTRA(ASCabPutText)(cab, "Nested:1", text);
    EXTRA(ASCabPutCab)(cab, "Nested:2", EXTRA(ASCabNew)());
    return cab;
}

TEST_F(CabStreams, AllTypesComeBackAndPointersAreLeftOut)
{
    const ASCab cab = CabOfAllTypes();
    const ASCab stored = EXTRA(ASCabDup)(cab);
    EXTRA(ASCabPutPointerRaw)(stored, "Nested:Pointer", "PDDoc", this, nullptr);
    const ASCab back = Read(BytesOf(stored));
    ASSERT_NE(back, nullptr);
    EXPECT_TRUE(EXTRA(ASCabEqual)(back, cab));
    const ASText text = EXTRA(ASCabGetText)(back, "Nested:1");
    EXPECT_EQ(EXTRA(ASTextGetCountry)(text), 0x4445);
    EXPECT_EQ(EXTRA(ASTextGetLanguage)(text), 0x6465);
    for (const ASCab each : {cab, stored, back}) EXTRA(ASCabDestroy)(each);
}

TEST_F(CabStreams, ExactlyOneCabIsReadAndForeignBytesStay)
{
    std::string bytes;
    for (const int number : {1, 2}) {
        const ASCab cab = EXTRA(ASCabNew)();
        EXTRA(ASCabPutInt)(cab, "number", number);
        bytes += BytesOf(cab);
        EXTRA(ASCabDestroy)(cab);
    }
    bytes += "<?xml version=\"1.0\"?><Workflow/>";
    const ASStm stream = SUPPORT(ASMemStmRdOpen)(bytes.data(), static_cast<ASArraySize>(bytes.size()));
    for (const int number : {1, 2}) {
        const ASCab cab = EXTRA(ASCabReadFromStream)(stream);
        ASSERT_NE(cab, nullptr);
        EXPECT_EQ(EXTRA(ASCabGetInt)(cab, "number", 0), number);
        EXTRA(ASCabDestroy)(cab);
    }
    EXPECT_EQ(EXTRA(ASCabReadFromStream)(stream), nullptr);
    char rest[64] = {};
    EXPECT_EQ(SUPPORT(ASStmRead)(rest, 1, sizeof rest, stream), 32);
    EXPECT_STREQ(rest, "<?xml version=\"1.0\"?><Workflow/>");
    SUPPORT(ASStmClose)(stream);
}

std::uint32_t Crc32(std::string_view bytes)
{
    std::uint32_t sum = ~0u;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1) ^ (sum & 1 ? 0xEDB88320u : 0);
    }
    return ~sum;
}

/// A cab of all types as it is stored, and what somebody does to it.
class StoredCabs : public CabStreams {
protected:
    StoredCabs()
    {
        const ASCab cab = CabOfAllTypes();
        bytes = BytesOf(cab);
        EXTRA(ASCabDestroy)(cab);
    }
    /// With this body, as somebody with bad intentions would make it: length and checksum are right.
    bool ForgedIsRefused(const std::string& body) const
    {
        std::string forged = bytes.substr(0, kHeader);
        const std::uint32_t sum = Crc32(body);
        const std::uint64_t length = body.size();
        std::memcpy(forged.data() + 12, &sum, sizeof sum);
        std::memcpy(forged.data() + 16, &length, sizeof length);
        return Refused(forged + body);
    }
    std::string bytes;
};

TEST_F(StoredCabs, DamagedAndForeignBytesAreRefused)
{
    for (std::size_t length = 0; length < bytes.size(); ++length)
        EXPECT_TRUE(Refused(bytes.substr(0, length))) << "cut off after " << length << " bytes";
    for (const std::string& foreign : {std::string("<?xml version=\"1.0\"?>\n<Workflow></Workflow>"),
                                       std::string(200, '\0'), "\xEF\xBB\xBF" + bytes, bytes.substr(1)})
        EXPECT_TRUE(Refused(foreign)) << foreign.substr(0, 10);
    for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
        std::string damaged = bytes;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << (bit % 8)));
        EXPECT_TRUE(Refused(damaged)) << "bit " << bit;
    }
}

TEST_F(StoredCabs, ForgedBytesNeverDoHarm)
{
    const std::string body = bytes.substr(kHeader);
    ASSERT_FALSE(ForgedIsRefused(body));
    std::size_t refused = 0;
    for (std::size_t at = 0; at < body.size(); ++at)
        for (const int value : {0, 1, 8, 0x3A, 0x7F, 0x80, 0xFF}) {
            std::string damaged = body;
            damaged[at] = static_cast<char>(value);
            refused += ForgedIsRefused(damaged);
        }
    EXPECT_GT(refused, body.size());
    EXPECT_TRUE(ForgedIsRefused(body + "x"));
    EXPECT_TRUE(ForgedIsRefused({}));
    EXPECT_TRUE(ForgedIsRefused(std::string("\2\0\0\0\x09\1\0\0\0k\x09\1\0\0\0k", 16))) << "the same key twice";
    for (const int depth : {128, 129, 100000}) {
        std::string nested;
        for (int level = 1; level < depth; ++level) nested += std::string("\1\0\0\0\x08\1\0\0\0k", 10);
        EXPECT_EQ(ForgedIsRefused(nested + std::string(4, '\0')), depth > 128) << depth;
    }
}

}  // namespace
