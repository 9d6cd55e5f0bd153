#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "base/Overseer.h"
#include "support/TemporaryFolder.h"

/// Notes what it is asked, with the content that the act is about, and answers as it was told.
class CScriptedOverseer final : public COverseer {
public:
    explicit CScriptedOverseer(Answer answer, bool pretends = false) : m_answer(answer), m_pretends(pretends) {}
    ~CScriptedOverseer() override { InstallOverseer(nullptr); }

    Answer Ask(Act act, const std::string& file, const std::string& target) override
    {
        static constexpr const char* kNames[] = {"put", "move", "delete", "start"};
        asked += std::string(kNames[static_cast<int>(act)]) + ' ' + (file.empty() ? "" : FileBytes(file)) + '>' +
                 std::filesystem::path(target).filename().string() + ';';
        return m_answer;
    }
    bool Pretends() const override { return m_pretends; }
    std::optional<bool> Exists(const std::string& path) const override
    {
        const auto found = exists.find(path);
        return found == exists.end() ? std::nullopt : std::optional(found->second);
    }

    std::string asked;
    std::map<std::string, bool> exists;

private:
    Answer m_answer;
    bool m_pretends;
};
