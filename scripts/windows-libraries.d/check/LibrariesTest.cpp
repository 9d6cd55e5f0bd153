// Each library does its work in a Windows program. Documents are written into the current folder, samples read there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/evp.h>
#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>
#include <poppler-document.h>
#include <poppler-page.h>
#include <sqlite3.h>
#include <stringprep.h>
#include <tinyxml.h>
#include <windows.h>
#include <zlib.h>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFCryptoProvider.hh>
#include <qpdf/QPDFWriter.hh>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <jpeglib.h>

namespace {

constexpr char kPassword[] = "öffnen";

void Encrypt(QPDFWriter& writer, const std::string& method)
{
    if (method == "AES-256") {
        writer.setR6EncryptionParameters(kPassword, "owner", true, true, true, true, true, true, qpdf_r3p_full, true);
    } else if (method == "AES-128") {
        writer.setR4EncryptionParametersInsecure(kPassword, "owner", true, true, true, true, true, true,
                                                 qpdf_r3p_full, true, true);
    } else {
        writer.setR3EncryptionParametersInsecure(kPassword, "owner", true, true, true, true, true, true,
                                                 qpdf_r3p_full);
    }
}

std::vector<unsigned char> CompressedGreyImage(int side)
{
    jpeg_compress_struct image{};
    jpeg_error_mgr errors{};
    image.err = jpeg_std_error(&errors);
    jpeg_create_compress(&image);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&image, &bytes, &size);
    image.image_width = image.image_height = static_cast<JDIMENSION>(side);
    image.input_components = 1;
    image.in_color_space = JCS_GRAYSCALE;
    jpeg_set_defaults(&image);
    jpeg_start_compress(&image, TRUE);
    std::vector<JSAMPLE> row(static_cast<size_t>(side), 128);
    JSAMPROW rows[] = {row.data()};
    while (image.next_scanline < image.image_height) jpeg_write_scanlines(&image, rows, 1);
    jpeg_finish_compress(&image);
    std::vector<unsigned char> result(bytes, bytes + size);
    jpeg_destroy_compress(&image);
    free(bytes);
    return result;
}

}  // namespace

TEST(Libraries, QpdfEncryptsWithEachMethodThroughOpenssl)
{
    EXPECT_EQ(QPDFCryptoProvider::getDefaultProvider(), "openssl");
    EXPECT_THAT(QPDFCryptoProvider::getRegisteredImpls(), testing::UnorderedElementsAre("native", "openssl"));
    for (const std::string method : {"RC4-128", "AES-128", "AES-256"}) {
        SCOPED_TRACE(method);
        const auto name = method + ".pdf";
        QPDF pdf;
        pdf.emptyPDF();
        pdf.addPage(pdf.makeIndirectObject(QPDFObjectHandle::parse("<</Type/Page/MediaBox[0 0 99 99]>>")), true);
        pdf.getTrailer().replaceKey("/Info",
                                    pdf.makeIndirectObject(QPDFObjectHandle::parse("<</Title (Schon da)>>")));
        QPDFWriter writer(pdf, name.c_str());
        Encrypt(writer, method);
        writer.write();

        QPDF back;
        EXPECT_THROW(QPDF().processFile(name.c_str(), "wrong"), QPDFExc);
        back.processFile(name.c_str(), kPassword);
        EXPECT_EQ(back.getTrailer().getKey("/Info").getKey("/Title").getUTF8Value(), "Schon da");
    }
}

TEST(Libraries, QpdfOpensNamesBeyondTheCodePage)
{
    QPDF pdf;
    pdf.emptyPDF();
    QPDFWriter(pdf, "名前.pdf").write();
    EXPECT_TRUE(std::filesystem::exists(L"名前.pdf"));
    EXPECT_NO_THROW(QPDF().processFile("名前.pdf"));
}

TEST(Libraries, OpensslDigests)
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    ASSERT_EQ(EVP_Digest("abc", 3, digest, &size, EVP_sha256(), nullptr), 1);
    EXPECT_EQ(size, 32u);
    EXPECT_EQ(digest[0], 0xba);
    EXPECT_EQ(digest[31], 0xad);
}

TEST(Libraries, TinyXmlReadsAttributes)
{
    TiXmlDocument document;
    document.Parse("<a b=\"&#xE9;\"><c/></a>", nullptr, TIXML_ENCODING_UTF8);
    ASSERT_NE(document.RootElement(), nullptr);
    EXPECT_STREQ(document.RootElement()->Attribute("b"), "\xC3\xA9");
    EXPECT_NE(document.RootElement()->FirstChildElement("c"), nullptr);
}

TEST(Libraries, IdnPreparesPasswords)
{
    char* prepared = nullptr;
    ASSERT_EQ(stringprep_profile("\xC2\xAA\xC2\xAD", &prepared, "SASLprep", STRINGPREP_NO_UNASSIGNED), STRINGPREP_OK);
    EXPECT_STREQ(prepared, "a");
    free(prepared);
}

TEST(Libraries, PcreKnowsLettersBeyondAsciiAndCompilesThem)
{
    const auto units = [](const char16_t* text) { return reinterpret_cast<PCRE2_SPTR>(text); };
    int error = 0;
    PCRE2_SIZE at = 0;
    pcre2_code* expression = pcre2_compile(units(u"^\\p{Lu}\\w+$"), PCRE2_ZERO_TERMINATED,
                                           PCRE2_UTF | PCRE2_UCP | PCRE2_CASELESS, &error, &at, nullptr);
    ASSERT_NE(expression, nullptr) << error;
    EXPECT_EQ(pcre2_jit_compile(expression, PCRE2_JIT_COMPLETE), 0);
    pcre2_match_data* data = pcre2_match_data_create_from_pattern(expression, nullptr);
    EXPECT_GE(pcre2_match(expression, units(u"\u00C9t\u00E9"), 3, 0, 0, data, nullptr), 0);
    pcre2_match_data_free(data);
    pcre2_code_free(expression);
}

TEST(Libraries, PopplerReadsText)
{
    for (const auto& [name, line] : {std::pair{"letter.pdf", "thank you for your order of 29 February."},
                                     {"Café à la carte.pdf", "Crème brûlée 5,80 €"},
                                     {"Письмо о поставке.pdf", "груз прибывает в понедельник."},
                                     {"三月二十日.pdf", "三月二十日"}}) {
        std::ifstream file(std::filesystem::path(reinterpret_cast<const char8_t*>(name)), std::ios::binary);
        std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        const std::unique_ptr<poppler::document> document(poppler::document::load_from_data(&bytes));
        ASSERT_NE(document, nullptr) << name;
        const std::unique_ptr<poppler::page> page(document->create_page(0));
        ASSERT_NE(page, nullptr) << name;
        const auto text = page->text().to_utf8();
        EXPECT_THAT(std::string(text.begin(), text.end()), testing::HasSubstr(line)) << name;
    }
}

// What stands in for iconv, with texts that outgrow the room of the first attempt, and with invalid ones.
TEST(Libraries, PopplerConvertsTexts)
{
    std::u16string euros(1000, u'€');
    const struct {
        std::string utf8;
        std::u16string utf16;
    } rows[] = {{"", u""},
                {"A", u"A"},
                {"é€文", u"é€文"},
                {"a😀b", u"a😀b"},
                {std::string("a\0b", 3), std::u16string(u"a\0b", 3)}};
    for (const auto& row : rows) {
        const auto wide = poppler::ustring::from_utf8(row.utf8.data(), static_cast<int>(row.utf8.size()));
        EXPECT_EQ(std::u16string(wide.begin(), wide.end()), row.utf16) << row.utf8;
        const auto back = wide.to_utf8();
        EXPECT_EQ(std::string(back.begin(), back.end()), row.utf8);
    }
    poppler::ustring wide;
    wide.assign(euros.begin(), euros.end());
    EXPECT_EQ(wide.to_utf8().size(), 3000u);
    const auto repaired = poppler::ustring::from_utf8("a\xFF\xC3!").to_utf8();
    EXPECT_EQ(std::string(repaired.begin(), repaired.end()), "a��!");
}

TEST(Libraries, JpegWritesAnImage)
{
    const auto bytes = CompressedGreyImage(64);
    ASSERT_GT(bytes.size(), 4u);
    EXPECT_EQ(bytes[0], 0xFF);
    EXPECT_EQ(bytes[1], 0xD8);
}

TEST(Libraries, ZlibRoundTrip)
{
    const std::string text(10000, 'x');
    std::vector<Bytef> packed(compressBound(static_cast<uLong>(text.size())));
    uLongf packedSize = static_cast<uLongf>(packed.size());
    ASSERT_EQ(compress(packed.data(), &packedSize, reinterpret_cast<const Bytef*>(text.data()),
                       static_cast<uLong>(text.size())),
              Z_OK);
    std::string back(text.size(), ' ');
    uLongf size = static_cast<uLongf>(back.size());
    ASSERT_EQ(uncompress(reinterpret_cast<Bytef*>(back.data()), &size, packed.data(), packedSize), Z_OK);
    EXPECT_EQ(back, text);
    EXPECT_LT(packedSize, 100u);
}

TEST(Libraries, SqliteFindsWordsInAFile)
{
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open("w\xC3\xB6rter.sqlite", &database), SQLITE_OK);
    int found = 0;
    const auto count = [](void* counted, int, char**, char**) { return ++*static_cast<int*>(counted), 0; };
    const char* const statements =
        "DROP TABLE IF EXISTS words; CREATE VIRTUAL TABLE words USING fts5(text);"
        "INSERT INTO words VALUES('one two'), ('three'); SELECT * FROM words WHERE words MATCH 'two'";
    EXPECT_EQ(sqlite3_exec(database, statements, count, &found, nullptr), SQLITE_OK);
    EXPECT_EQ(found, 1);
    sqlite3_close(database);
}

TEST(Libraries, OptionsAndJson)
{
    CLI::App app;
    int jobs = 0;
    app.add_option("--jobs", jobs);
    app.parse("--jobs 3");
    EXPECT_EQ(jobs, 3);
    EXPECT_EQ(nlohmann::json::parse(R"({"a":[1,2]})")["a"][1], 2);
}

TEST(Runtime, ThreadsAndFiles)
{
    std::vector<int> squares(8);
    std::vector<std::thread> threads;
    for (int n = 0; n < 8; ++n) threads.emplace_back([&squares, n] { squares[static_cast<size_t>(n)] = n * n; });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(squares.back(), 49);

    const std::filesystem::path folder = L"ein Ordner mit ä und 文";
    std::filesystem::create_directory(folder);
    std::ofstream(folder / L"Datei.txt") << "12345";
    EXPECT_EQ(std::filesystem::file_size(folder / L"Datei.txt"), 5u);
}

TEST(Runtime, ADllWithALibraryInsideLoadsAndCatchesItsOwnExceptions)
{
    wchar_t program[1024];
    ASSERT_GT(GetModuleFileNameW(nullptr, program, 1024), 0u);
    const auto path = std::filesystem::path(program).parent_path() / "plugin.api";
    const HMODULE module = LoadLibraryW(path.c_str());
    ASSERT_NE(module, nullptr) << GetLastError();
    const auto check = reinterpret_cast<int (*)()>(reinterpret_cast<void*>(GetProcAddress(module, "PlugInCheck")));
    ASSERT_NE(check, nullptr);
    EXPECT_EQ(check(), 1);
}
