// The services that change files, as functions of a source and a target: what several tests have in their rows.
#pragma once

#include <functional>
#include <string>

#include "platform/AtomicFile.h"
#include "platform/Files.h"

using FileAct = std::function<platform::FileResult(const std::string& from, const std::string& to)>;

inline FileAct Copying(platform::Existing existing)
{
    return [=](const auto& from, const auto& to) { return platform::CopyFile(from, to, existing); };
}

inline FileAct Moving(platform::Existing existing)
{
    return [=](const auto& from, const auto& to) { return platform::MoveFile(from, to, existing); };
}

inline FileAct Deleting()
{
    return [](const auto& from, const auto&) { return platform::DeleteFile(from); };
}

/// A result with the rights of its source.
inline FileAct Writing(platform::Existing existing, const std::string& bytes = "new")
{
    return [=](const auto& from, const auto& to) {
        platform::CAtomicFile file(to, existing, from);
        file.Write(bytes.data(), bytes.size());
        return file.Commit();
    };
}

inline FileAct WritingSettings()
{
    return [](const auto&, const auto& to) {
        return platform::WriteFileAtomically(to, "new", platform::Readers::Owner);
    };
}
