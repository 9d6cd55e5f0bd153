#include "sequence/Findings.h"

#include <algorithm>

#include "base/Text.h"
#include "protocol/Json.h"
#include "sequence/SequenceFile.h"

namespace {

const char* SeverityWord(SequenceFinding::Severity severity)
{
    switch (severity) {
        case SequenceFinding::Severity::Error:
            return "error";
        case SequenceFinding::Severity::Warning:
            return "warning";
        case SequenceFinding::Severity::Note:
            return "note";
    }
    return "error";
}

}  // namespace

void CSequenceFindings::Add(SequenceFinding finding)
{
    Kind& kind = m_kinds[{finding.severity, finding.code}];
    if (++kind.count > kMostOfAKind) return;
    kind.lastStep = finding.step;
    m_findings.push_back(std::move(finding));
}

void CSequenceFindings::Add(SequenceFinding::Severity severity, const char* code, std::string text)
{
    Add({severity, code, std::move(text), m_step ? m_step->number : 0, m_step ? m_step->place : TextPlace{}});
}

std::vector<SequenceFinding> CSequenceFindings::All() const
{
    std::vector<SequenceFinding> all = m_findings;
    for (const auto& [name, kind] : m_kinds)
        if (kind.count > kMostOfAKind)
            all.push_back({name.first,
                           name.second,
                           "... and " + std::to_string(kind.count - kMostOfAKind) + " more of this kind.",
                           kind.lastStep,
                           {}});
    return all;
}

long CountOf(const std::vector<SequenceFinding>& findings, SequenceFinding::Severity severity)
{
    return static_cast<long>(std::count_if(findings.begin(), findings.end(), [&](const SequenceFinding& finding) {
        return finding.severity == severity;
    }));
}

std::string ErrorTexts(const std::vector<SequenceFinding>& findings)
{
    std::string all;
    for (const SequenceFinding& finding : findings)
        if (finding.severity == SequenceFinding::Severity::Error) all += (all.empty() ? "" : " ") + finding.text;
    return all;
}

std::string FindingSentence(const std::string& path, const SequenceFinding& finding)
{
    const std::string line = finding.place.line == 0 ? std::string()
                                                     : " (line " + std::to_string(finding.place.line) + ", column " +
                                                           std::to_string(finding.place.column) + ")";
    return "The sequence " + path + " cannot be used" + line + ": " + finding.text;
}

Json FindingsReport(const std::vector<SequenceFinding>& findings)
{
    Json list = Json::array();
    for (const SequenceFinding& finding : findings) {
        Json one = {{"severity", SeverityWord(finding.severity)},
                    {"code", finding.code},
                    {"text", TextFromBytes(finding.text)}};
        if (finding.step > 0) one["step"] = finding.step;
        if (finding.place.line > 0) {
            one["line"] = finding.place.line;
            one["column"] = finding.place.column;
        }
        list.push_back(std::move(one));
    }
    return list;
}
