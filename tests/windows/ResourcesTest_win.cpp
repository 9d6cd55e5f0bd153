// What Windows reads from the built files without running them.
#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

/// A text of the file's version resource; empty when it is not there.
std::string VersionText(const char* file, const std::string& name)
{
    DWORD ignored = 0;
    std::vector<char> block(GetFileVersionInfoSizeA(file, &ignored));
    if (block.empty() || !GetFileVersionInfoA(file, 0, static_cast<DWORD>(block.size()), block.data())) return "";
    void* text = nullptr;
    UINT length = 0;
    const std::string path = "\\StringFileInfo\\040904B0\\" + name;
    if (!VerQueryValueA(block.data(), path.c_str(), &text, &length)) return "";
    return static_cast<const char*>(text);
}

/// The manifest inside a program or DLL; empty when there is none under the number that Windows looks for.
std::string Manifest(const char* file, WORD number)
{
    const HMODULE module = LoadLibraryExA(file, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    EXPECT_NE(module, nullptr) << file << ": " << GetLastError();
    std::string manifest;
    if (const HRSRC found = FindResourceA(module, MAKEINTRESOURCEA(number), MAKEINTRESOURCEA(24))) {
        manifest.assign(static_cast<const char*>(LockResource(LoadResource(module, found))),
                        SizeofResource(module, found));
    }
    FreeLibrary(module);
    return manifest;
}

constexpr WORD kOfPrograms = 1, kOfDlls = 2;

}  // namespace

TEST(Resources, FilesSayWhatTheyAre)
{
    const struct {
        const char *file, *name, *description;
    } rows[] = {{PLUG_IN, "Ferrule.api", "Ferrule plug-in"},
                {HOST_PROGRAM, "ferrule-host.exe", "Ferrule host"},
                {COMMAND_LINE, "ferrule.exe", "Ferrule command line"}};
    for (const auto& row : rows) {
        EXPECT_EQ(VersionText(row.file, "OriginalFilename"), row.name) << row.file;
        EXPECT_EQ(VersionText(row.file, "FileDescription"), row.description) << row.file;
        EXPECT_EQ(VersionText(row.file, "ProductName"), "Ferrule") << row.file;
        EXPECT_EQ(VersionText(row.file, "ProductVersion"), FERRULE_VERSION) << row.file;
    }
}

TEST(Resources, ProgramsHaveAManifestAndThePlugInHasNone)
{
    for (const char* file : {HOST_PROGRAM, COMMAND_LINE}) {
        EXPECT_THAT(Manifest(file, kOfPrograms), testing::HasSubstr(">UTF-8</activeCodePage>")) << file;
        EXPECT_THAT(Manifest(file, kOfPrograms), testing::HasSubstr(">true</longPathAware>")) << file;
    }
    for (const WORD number : {kOfPrograms, kOfDlls}) EXPECT_EQ(Manifest(PLUG_IN, number), "");
}

TEST(Resources, TestsRunInTheCodePageOfThePrograms) { EXPECT_EQ(GetACP(), static_cast<UINT>(CP_UTF8)); }
