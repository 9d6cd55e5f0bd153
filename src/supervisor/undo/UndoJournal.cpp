#include "supervisor/undo/UndoJournal.h"

#include <algorithm>

#include "base/Text.h"
#include "protocol/Json.h"
#include "supervisor/journal/LineReader.h"

namespace {

constexpr int kUndoVersion = 1;

}  // namespace

std::string CUndoJournal::Read(const std::string& path, const std::string& run)
{
    CLineReader reader;
    std::string line;
    if (!reader.Open(path)) {
        if (!platform::NameExists(path)) return {};
        return "The journal " + path + " cannot be opened.";
    }
    if (!reader.Next(line)) return {};
    const auto header = ParseObject(line);
    if (!header || TextAt(*header, "ferrule") != "undo" || CountAt(*header, "version") != kUndoVersion)
        return HeaderProblem(path, "undo", kUndoVersion, line);
    if (TextAt(*header, "run") != run) return "The journal " + path + " belongs to another run.";
    while (reader.Next(line)) {
        const auto object = ParseObject(line);
        if (!object)
            return "Line " + std::to_string(reader.LineNumber()) + " of the journal " + path +
                   " is none that belongs there.";
        const Json& undone = ObjectAt(*object, "undone");
        if (!undone.empty()) m_undone.emplace_back(UnsignedAt(undone, "order"), CountAt(undone, "number"));
    }
    if (reader.Failed()) return "The journal " + path + " cannot be read.";
    m_length = reader.NextOffset();
    std::ranges::sort(m_undone);
    return {};
}

std::string CUndoJournal::Open(const std::string& path, const std::string& run)
{
    platform::FileResult opened = m_file.Open(path);
    if (opened) opened = m_file.Truncate(m_length);
    if (opened && m_length == 0)
        opened = AddLine(LineOf({{"ferrule", "undo"}, {"version", kUndoVersion}, {"run", run}}));
    if (opened) return {};
    return "The journal " + path + " cannot be written (" + platform::ErrorText(opened.errorNumber) + ").";
}

bool CUndoJournal::IsUndone(const IntendedAct& act) const { return std::ranges::binary_search(m_undone, KeyOf(act)); }

platform::FileResult CUndoJournal::Add(const IntendedAct& act, const UndoStep& step)
{
    return AddLine(LineOf({{"undone",
                            {{"number", act.number},
                             {"order", act.order},
                             {"step", UndoWord(step.kind)},
                             {"path", TextFromBytes(act.target.empty() ? act.file : act.target)}}}}));
}

platform::FileResult CUndoJournal::AddEnd(int left) { return AddLine(LineOf({{"end", {{"left", left}}}})); }

platform::FileResult CUndoJournal::AddLine(std::string line)
{
    line += '\n';
    platform::FileResult result = m_file.Write(line);
    if (result) result = m_file.Flush();
    if (!result) (void)m_file.Truncate(m_length);
    if (result) m_length += line.size();
    return result;
}
