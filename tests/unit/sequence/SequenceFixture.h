// Sequences for tests of the jobs on them, with the plug-in inside the open host.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "jobs/SequenceJobs.h"
#include "protocol/Json.h"
#include "support/PlugInHost.h"

class CSequenceJobs : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_host.Started()); }

    /// Answers the report, or {"failed": sentence}.
    static Json Answer(const Expected<Json>& answer) { return answer ? *answer : Json{{"failed", answer.Error()}}; }

    /// A file of the test's folder, which every test has for itself.
    const CTemporaryFolder& Folder() const { return m_folder; }

    std::string Sequence(const std::string& inner, const std::string& name = "s.sequ") const
    {
        return m_folder.Write(name, "<Workflow title='T'>" + inner + "</Workflow>");
    }
    std::string Steps(const std::string& commands, const std::string& name = "s.sequ") const
    {
        return Sequence("<Group label='g'>" + commands + "</Group>", name);
    }

    /// The codes that a check finds, with severity and step: "warning saves-nothing, error parameter-type 1".
    static std::string Codes(const Json& report, const char* list = "findings")
    {
        std::string codes;
        if (report.contains("failed")) return "failed: " + report["failed"].get<std::string>();
        for (const auto& finding : report.at(list)) {
            codes += (codes.empty() ? "" : ", ") + finding["severity"].get<std::string>() + ' ' +
                     finding["code"].get<std::string>();
            if (finding.contains("step")) codes += ' ' + std::to_string(finding["step"].get<int>());
        }
        return codes;
    }
    static std::string Check(const std::string& path, const Json& settings = Json::object())
    {
        return Codes(Answer(CheckSequence({{"path", path}, {"description", settings}})));
    }

private:
    CPlugInHost m_host;
    CTemporaryFolder m_folder;
};

inline std::string Item(const std::string& name, const std::string& type, const std::string& value)
{
    return "<Item name='" + name + "' type='" + type + "' value='" + value + "'/>";
}
inline std::string Step(const std::string& handler, const std::string& items = "")
{
    return "<Command name='" + handler + "'><Items>" + items + "</Items></Command>";
}
inline std::string Protect(const std::string& items) { return Step("QLNX_FerrulePasswordProtectCommand", items); }
/// A save step that says where to save.
inline std::string Save(const std::string& items = "")
{
    return Step("WorkflowPlaybackSaveFiles", Item("DocSaveDestType", "string", "WorkflowPlaybackSave") + items);
}
