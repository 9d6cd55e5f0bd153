#include "platform/Handle_win.h"
#include "platform/WideText_win.h"
#include "unit/openhost_values/ValuesHost.h"

namespace {

using Files = CFilesHost;

/// Made by the system's own call, whatever the name.
std::wstring MakeFile(const std::string& path, DWORD attributes = FILE_ATTRIBUTE_NORMAL)
{
    const std::wstring wide = platform::WidePath(path);
    const platform::CHandle made(
        CreateFileW(wide.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, attributes, nullptr));
    DWORD done = 0;
    EXPECT_TRUE(made.Valid() && WriteFile(made.Get(), "12345", 5, &done, nullptr)) << path;
    return wide;
}

TEST_F(Files, DevicesAndPipesAreNoFiles)
{
    for (const char* name : {"NUL", "con", "COM1.pdf", "a.pdf:stream"}) {
        ASFile file = nullptr;
        EXPECT_EQ(Open(folder / name, kCreate, &file), fileErrOpenFailed) << name;
        EXPECT_EQ(file, nullptr) << name;
        const OwnPath path = Path(folder / name);
        EXPECT_EQ(SUPPORT(ASFileSysCreateFolder)(nullptr, path, 0), fileErrOpenFailed) << name;
    }
    const platform::CHandle pipe(CreateNamedPipeW(L"\\\\.\\pipe\\ferrule-files-test", PIPE_ACCESS_DUPLEX,
                                                  PIPE_TYPE_BYTE, 1, 0, 0, 0, nullptr));
    ASSERT_TRUE(pipe.Valid());
    ASFile file = nullptr;
    EXPECT_EQ(Open("\\\\.\\pipe\\ferrule-files-test", kRead, &file), fileErrOpenFailed);
    EXPECT_FALSE(Properties("\\\\.\\pipe\\ferrule-files-test").isThere);
}

TEST_F(Files, AttributesShow)
{
    const std::string hidden = folder / "hidden.pdf", readOnly = folder / "readonly.pdf";
    MakeFile(hidden, FILE_ATTRIBUTE_HIDDEN);
    const std::wstring wide = MakeFile(readOnly, FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(Properties(hidden).isHidden);
    EXPECT_FALSE(Properties(hidden).isReadOnly);
    EXPECT_TRUE(Properties(readOnly).isReadOnly);
    EXPECT_TRUE(Properties(readOnly).modDateKnown);
    EXPECT_GE(Properties(readOnly).modDate.year, 2025);
    EXPECT_FALSE(Properties(folder.Path()).isReadOnly);
    SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(Files, WhatAnotherProcessKeepsToItselfIsBusy)
{
    const std::string path = folder / "kept.pdf";
    const std::wstring wide = MakeFile(path);
    const platform::CHandle kept(CreateFileW(wide.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(kept.Valid());
    ASFile file = nullptr;
    EXPECT_EQ(Open(path, kRead, &file), fileErrBusy);
    const OwnPath name = Path(path);
    EXPECT_EQ(SUPPORT(ASFileSysRemoveFile)(nullptr, name), fileErrBusy);
}

TEST_F(Files, AnOpenFileKeepsNobodyFromReadingWritingAndRenaming)
{
    const std::string path = folder.Write("a.pdf", "12345");
    const ASFile file = Opened(path, kRead | kWrite);
    EXPECT_EQ(FileBytes(path), "12345");
    EXPECT_TRUE(MoveFileExW(platform::WidePath(path).c_str(), platform::WidePath(folder / "b.pdf").c_str(), 0));
    EXPECT_EQ(SUPPORT(ASFileWrite)(file, "x", 1), 1);
    EXPECT_EQ(SUPPORT(ASFileClose)(file), 0);
    EXPECT_EQ(FileBytes(folder / "b.pdf"), "x2345");
}

}  // namespace
