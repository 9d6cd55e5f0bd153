#include <functional>

#include "unit/openhost_values/ValuesHost.h"

namespace {

using Keys = std::vector<std::string>;

class Cabs : public CValuesHost {
protected:
    static char* Shared(const char* text) { return openhost::SharedCopy(text); }
    ASCab cab = EXTRA(ASCabNew)();
    void TearDown() override
    {
        if (cab) EXTRA(ASCabDestroy)(cab);
        CValuesHost::TearDown();
    }
};

TEST_F(Cabs, AReadAnswersItsDefaultForAbsentKeysAndOtherTypes)
{
    EXTRA(ASCabPutBool)(cab, "Bool", 7);
    EXTRA(ASCabPutInt)(cab, "Int", -5);
    EXTRA(ASCabPutUns)(cab, "Uns", 4000000000u);
    EXTRA(ASCabPutInt64)(cab, "Int64", -6000000000);
    EXTRA(ASCabPutUns64)(cab, "Uns64", 18000000000000000000u);
    EXTRA(ASCabPutDouble)(cab, "Double", 2.5);
    EXTRA(ASCabPutAtom)(cab, "Atom", 3);
    EXTRA(ASCabPutString)(cab, "String", Shared("text"));
    EXTRA(ASCabPutNull)(cab, "Null");
    EXTRA(ASCabPutCab)(cab, "Cab", EXTRA(ASCabNew)());
    const struct {
        const char* key;
        double real;
        ASCabValueType type;
    } rows[] = {{"Bool", 9, kASValueBool},      {"Int", -5, kASValueInteger},    {"Uns", 4e9, kASValueUns},
                {"Int64", -6e9, kASValueInt64}, {"Uns64", 18e18, kASValueUns64}, {"Double", 2.5, kASValueDouble},
                {"Atom", 9, kASValueAtom},      {"String", 9, kASValueString},   {"Null", 9, kASValueNull},
                {"Cab", 9, kASValueCabinet},    {"Absent", 9, kASValueUnknown}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(EXTRA(ASCabGetBool)(cab, row.key, 33), row.type == kASValueBool ? 1 : 33);
        EXPECT_EQ(EXTRA(ASCabGetInt)(cab, row.key, 77), row.type == kASValueInteger ? -5 : 77);
        EXPECT_EQ(EXTRA(ASCabGetUns)(cab, row.key, 77), row.type == kASValueUns ? 4000000000u : 77u);
        EXPECT_EQ(EXTRA(ASCabGetInt64)(cab, row.key, 77), row.type == kASValueInt64 ? -6000000000 : 77);
        EXPECT_EQ(EXTRA(ASCabGetUns64)(cab, row.key, 77), row.type == kASValueUns64 ? 18000000000000000000u : 77u);
        EXPECT_EQ(EXTRA(ASCabGetAtom)(cab, row.key, 77), row.type == kASValueAtom ? 3 : 77);
        EXPECT_EQ(EXTRA(ASCabGetDouble)(cab, row.key, 9), row.real);
        EXPECT_EQ(EXTRA(ASCabGetType)(cab, row.key), row.type);
        EXPECT_EQ(EXTRA(ASCabKnown)(cab, row.key), row.type != kASValueUnknown);
        EXPECT_EQ(EXTRA(ASCabGetString)(cab, row.key) != nullptr, row.type == kASValueString);
        EXPECT_EQ(EXTRA(ASCabGetCab)(cab, row.key) != nullptr, row.type == kASValueCabinet);
        EXPECT_EQ(EXTRA(ASCabGetText)(cab, row.key), nullptr);
        ASTArraySize size = 5;
        EXPECT_EQ(EXTRA(ASCabGetBinary)(cab, row.key, &size), nullptr);
        EXPECT_EQ(size, 0);
    }
    EXPECT_EQ(EXTRA(ASCabNumEntries)(cab), 10);
}

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

TEST_F(Cabs, NumbersComeFirstByValueThenTheOtherKeysByBytes)
{
    for (const char* key : {"b", "10", "a10", "9", "Z", "007", "a9", "1x", "99999999999999999999999", "7", "!"})
        EXTRA(ASCabPutNull)(cab, key);
    EXPECT_EQ(KeysOf(cab),
              (Keys{"007", "7", "9", "10", "99999999999999999999999", "!", "1x", "Z", "a10", "a9", "b"}));
}

TEST_F(Cabs, ANullKeyTakesTheNumberBehindAllOthers)
{
    EXTRA(ASCabPutInt)(cab, nullptr, 1);
    EXTRA(ASCabPutNull)(cab, "99");
    EXTRA(ASCabPutString)(cab, nullptr, Shared("x"));
    EXTRA(ASCabPutCab)(cab, nullptr, EXTRA(ASCabNew)());
    EXPECT_EQ(KeysOf(cab), (Keys{"1", "99", "100", "101"}));
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

TEST_F(Cabs, UnusableKeysRaiseAndChangeNothing)
{
    EXTRA(ASCabPutInt)(cab, "number", 1);
    const std::string longest(1024, 'k');
    EXTRA(ASCabPutNull)(cab, longest.c_str());
    const std::string longer = longest + "k";
    for (const char* key : {"", ":", "a:", ":a", "a::b", "gr\xC3\xBC", "tab\t", "number:x", longer.c_str()})
        EXPECT_REFUSED(EXTRA(ASCabPutInt)(cab, key, 1)) << key;
    EXPECT_EQ(EXTRA(ASCabNumEntries)(cab), 2);
    EXPECT_EQ(openhost::LiveCabs(), 1u);
}

TEST_F(Cabs, NullArgumentsRaise)
{
    int visits = 0;
    EXPECT_REFUSED(EXTRA(ASCabGetInt)(nullptr, "a", 1));
    EXPECT_REFUSED(EXTRA(ASCabGetInt)(cab, nullptr, 1));
    EXPECT_REFUSED(EXTRA(ASCabPutInt)(nullptr, "a", 1));
    EXPECT_REFUSED(EXTRA(ASCabKnown)(cab, nullptr));
    EXPECT_REFUSED(EXTRA(ASCabDestroy)(nullptr));
    EXPECT_REFUSED(EXTRA(ASCabCopy)(cab, nullptr));
    EXPECT_REFUSED(EXTRA(ASCabDup)(nullptr));
    EXPECT_REFUSED(EXTRA(ASCabEnum)(cab, nullptr, &visits));
    EXPECT_REFUSED(EXTRA(ASCabGetPointerRaw)(cab, "a", nullptr));
    EXPECT_REFUSED(EXTRA(ASCabPutPointerRaw)(cab, "a", nullptr, &visits, nullptr));
    EXPECT_REFUSED(EXTRA(ASCabMunge)(cab, nullptr, kASMungeCopy));
    EXPECT_REFUSED(EXTRA(ASCabFromEntryList)(nullptr));
    EXPECT_REFUSED(EXTRA(ASCabReadFromStream)(nullptr));
    EXPECT_REFUSED(EXTRA(ASCabGetPathNameCopy)(cab, "a", nullptr, nullptr));
}

TEST_F(Cabs, CopyOverwritesEqualKeysAndKeepsTheOthers)
{
    EXTRA(ASCabPutInt)(cab, "same", 1);
    EXTRA(ASCabPutInt)(cab, "mine", 2);
    const OwnCab source = EXTRA(ASCabNew)();
    EXTRA(ASCabPutString)(source, "same", Shared("new"));
    EXTRA(ASCabPutInt)(source, "nested:x", 3);
    EXTRA(ASCabPutNull)(source, "null");
    EXTRA(ASCabCopy)(source, cab);
    EXTRA(ASCabPutInt)(source, "nested:x", 4);
    EXPECT_EQ(KeysOf(cab), (Keys{"mine", "nested", "null", "same"}));
    EXPECT_STREQ(EXTRA(ASCabGetString)(cab, "same"), "new");
    EXPECT_EQ(EXTRA(ASCabGetInt)(cab, "nested:x", 0), 3);
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

TEST_F(Cabs, CombiningFollowsItsAction)
{
    const struct {
        ASCabMungeAction action;
        const char* result;
    } rows[] = {
        {kASMungeRemove, "mine=1 nested:mine=1 "},
        {kASMungeRemoveUnknown, "equal=1 nested:same=1 same=1 type=1 "},
        {kASMungeRemoveDefaults, "mine=1 nested:mine=1 nested:same=1 same=1 type=1 "},
        {kASMungeRemoveBadValues, "equal=1 mine=1 nested:mine=1 nested:same=1 same=1 "},
        {kASMungeCopy, "equal=1 mine=1 nested:mine=1 nested:other=2 nested:same=2 other=2 same=2 type=s "},
        {kASMungeReplace, "equal=1 mine=1 nested:mine=1 nested:same=2 same=2 type=s "},
        {kASMungeCopyMissing, "equal=1 mine=1 nested:mine=1 nested:other=2 nested:same=1 other=2 same=1 type=1 "}};
    for (const auto& row : rows) {
        const OwnCab target = EXTRA(ASCabNew)();
        for (const char* key : {"equal", "mine", "same", "type", "nested:mine", "nested:same"})
            EXTRA(ASCabPutInt)(target, key, 1);
        const OwnCab keys = EXTRA(ASCabNew)();
        EXTRA(ASCabPutInt)(keys, "equal", 1);
        for (const char* key : {"other", "same", "nested:other", "nested:same"}) EXTRA(ASCabPutInt)(keys, key, 2);
        EXTRA(ASCabPutString)(keys, "type", Shared("s"));
        EXTRA(ASCabMunge)(target, keys, row.action);
        std::string result;
        for (const char* key :
             {"equal", "mine", "nested:mine", "nested:other", "nested:same", "other", "same", "type"}) {
            const char* const string = EXTRA(ASCabGetString)(target, key);
            if (!EXTRA(ASCabKnown)(target, key)) continue;
            result.append(key).append("=");
            result.append(string ? string : std::to_string(EXTRA(ASCabGetInt)(target, key, 0))).append(" ");
        }
        EXPECT_EQ(result, row.result) << "action " << row.action;
    }
    EXTRA(ASCabPutNull)(cab, "gone");
    EXTRA(ASCabPutNull)(cab, "nested:gone");
    EXTRA(ASCabPutInt)(cab, "nested:stays", 1);
    EXTRA(ASCabMunge)(cab, nullptr, kASMungeRemoveNulls);
    EXPECT_EQ(KeysOf(cab), (Keys{"nested"}));
    EXPECT_EQ(KeysOf(EXTRA(ASCabGetCab)(cab, "nested")), (Keys{"stays"}));
}

TEST_F(Cabs, AListOfEntriesBecomesACab)
{
    const ASCabEntryRec entries[] = {{"b", kASValueBool, 1, nullptr, 0},       {"i", kASValueInteger, -4, nullptr, 0},
                                     {"s", kASValueString, 0, "text", 0},      {"d", kASValueDouble, 0, nullptr, 1.5},
                                     {"a", kASValueAtom, 0, "SomeAtom", 0},    {"n:x", kASValueNull, 0, nullptr, 0},
                                     {nullptr, kASValueUnknown, 0, nullptr, 0}};
    const OwnCab made = EXTRA(ASCabFromEntryList)(entries);
    EXPECT_EQ(KeysOf(made), (Keys{"a", "b", "d", "i", "n", "s"}));
    EXPECT_EQ(EXTRA(ASCabGetAtom)(made, "a", 0), CORE(ASAtomFromString)("SomeAtom"));
    const ASCabEntryRec wrong[] = {{"i", kASValueInteger, 1, nullptr, 0}, {"p", kASValuePointer, 0, "x", 0}};
    EXPECT_REFUSED(EXTRA(ASCabFromEntryList)(wrong));
}

}  // namespace
