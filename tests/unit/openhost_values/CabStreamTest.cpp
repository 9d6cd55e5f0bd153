#include <cmath>
#include <cstring>

#include "openhost/values/CabStream.h"
#include "unit/openhost_values/ValuesHost.h"

namespace {

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
    EXTRA(ASCabPutString)(cab, "String", openhost::SharedCopy("caf\xC3\xA9 \xFF"));
    EXTRA(ASCabPutString)(cab, "EmptyString", openhost::SharedCopy(""));
    EXTRA(ASCabPutBinary)(cab, "Binary", openhost::SharedCopy(std::string_view("\0\1\xFF", 3)), 3);
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
