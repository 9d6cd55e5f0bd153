#include "supervisor/PlanChanges.h"

#include "base/PathNames.h"
#include "base/Text.h"
#include "platform/FileDigest.h"
#include "supervisor/JournalIndex.h"
#include "protocol/Json.h"
#include "supervisor/Planning.h"

#include <algorithm>
#include <array>

namespace {

constexpr char kGoOn[] = "To go on with the run, make that as it was and give the command again.";

struct SettingRow {
    const char *name, *option;
    bool place;  ///< a file or folder, compared by where it really is
};
constexpr std::array<SettingRow, 6> kSettings = {{{"FERRULEALTPATH", "--input", true},
                                                  {"FERRULEALTOUTPUTPATH", "--output", true},
                                                  {"FERRULEFINAL", "--final-action", false},
                                                  {"FERRULEDEST", "--destination", true},
                                                  {"FERRULEFILEEXT", "--ext", false},
                                                  {"FERRULENOSUBFOLDERS", "--no-subfolders", false}}};

std::string SettingOf(const RunRequest& request, std::string_view name)
{
    for (const auto& [setting, value] : request.settings)
        if (setting == name) return RemoveQuotes(value);
    return {};
}

Json JobOf(const ManifestHeader& header) { return ParseObject(header.job).value_or(Json::object()); }

std::string PlannedSetting(const Json& job, const char* name)
{
    return RemoveQuotes(BytesAt(ObjectAt(job, "settings"), name));
}

bool IsSameFile(const std::string& one, const std::string& other)
{
    return one == other || platform::ResolvedPath(one) == platform::ResolvedPath(other);
}

bool IsSame(const SettingRow& row, const std::string& one, const std::string& other)
{
    return row.place ? IsSameFile(one, other) : ToLowerAscii(one) == ToLowerAscii(other);
}

std::string Told(const std::string& value) { return value.empty() ? "nothing" : '"' + value + '"'; }

std::string Joined(const std::vector<std::string>& parts)
{
    std::string text;
    for (const std::string& part : parts) text += (text.empty() ? "" : ", ") + part;
    return text;
}

/// "--skip-unavailable" for the permission "skipUnavailable" of a job.
std::string OptionOf(const std::string& key)
{
    std::string option = "--";
    for (const char letter : key) {
        const bool capital = letter >= 'A' && letter <= 'Z';
        if (capital) option += '-';
        option += capital ? static_cast<char>(letter - 'A' + 'a') : letter;
    }
    return option;
}

/// Option by option, as "--ext (was "pdf", is "tif")".
std::vector<std::string> Differences(const ManifestHeader& header, const RunRequest& request)
{
    const Json job = JobOf(header);
    std::vector<std::string> found;
    for (const SettingRow& row : kSettings) {
        const std::string was = PlannedSetting(job, row.name), is = SettingOf(request, row.name);
        if (!IsSame(row, was, is))
            found.push_back(std::string(row.option) + " (was " + Told(was) + ", is " + Told(is) + ")");
    }
    const Json now = ParseObject(RunJobText(request, {}, false)).value_or(Json::object());
    const auto compare = [&](const std::string& option, bool was, bool is) {
        if (was && !is) found.push_back(option + " (was given, is not)");
    };
    for (const auto& [key, value] : job.items())
        if (value.is_boolean()) compare(OptionOf(key), value.get<bool>(), FlagAt(now, key.c_str()));
    compare("--allow-no-output", header.allowNoOutput, request.allowNoOutput);
    compare("--allow-in-place", header.allowInPlace, request.allowInPlace);
    return found;
}

bool HaveSameInputs(const ManifestHeader& header, const RunRequest& request)
{
    const Json job = JobOf(header);
    return IsSameFile(PlannedSetting(job, "FERRULESEQU"), SequenceOf(request)) &&
           IsSameFile(PlannedSetting(job, "FERRULEALTPATH"), SettingOf(request, "FERRULEALTPATH")) &&
           std::ranges::equal(header.inputs, request.inputs, IsSameFile);
}

bool IsUnfinished(const ManifestHeader& header, const std::string& journalPath)
{
    CDoneIndex done(header.total);
    CJournalIndex journal(done);
    const auto content = ReadJournal(journalPath, header.run, journal);
    return content && content->name && journal.Ending() != "finished";
}

}  // namespace

std::string SequenceOf(const RunRequest& request) { return SettingOf(request, "FERRULESEQU"); }

void NoteRequest(ManifestHeader& header, const RunRequest& request)
{
    header.sequenceHash = platform::Sha256OfFile(SequenceOf(request));
    header.inputs = request.inputs;
    header.allowNoOutput = request.allowNoOutput;
    header.allowInPlace = request.allowInPlace;
}

std::string ChangedSequence(const ManifestHeader& header)
{
    if (header.sequenceHash.empty()) return {};
    const std::string sequence = PlannedSetting(JobOf(header), "FERRULESEQU");
    platform::FileResult read;
    const std::string hash = platform::Sha256OfFile(sequence, &read);
    if (!read) return "The sequence " + sequence + " cannot be read (" + platform::ErrorText(read.errorNumber) + ").";
    if (hash == header.sequenceHash) return {};
    return "The sequence " + sequence +
           " was changed since the run was planned, so that the rest of the files would come out in another way. " +
           kGoOn;
}

std::string ChangedOptions(const ManifestHeader& header, const RunRequest& request)
{
    const std::vector<std::string> found = Differences(header, request);
    if (found.empty()) return {};
    return "The run was planned with other options: " + Joined(found) + ". " + kGoOn;
}

std::string UnfinishedRelative(const std::string& ownFolder, const RunRequest& request)
{
    const std::string runs = FolderOf(ownFolder);
    for (const platform::FolderEntry& entry : platform::ListFolder(runs)) {
        const std::string folder = runs + entry.name;
        if (!entry.isFolder || folder == ownFolder) continue;
        CManifestReader manifest;
        const auto header = manifest.Open(folder + kSeparator + "manifest.jsonl");
        if (!header || !HaveSameInputs(*header, request)) continue;
        const std::string changed = ChangedOptions(*header, request);
        if (!changed.empty() && IsUnfinished(*header, folder + kSeparator + "journal.jsonl"))
            return "There is no run with these options to go on with, but an unfinished one of the same sequence "
                   "over "
                   "the same inputs. " +
                   changed;
    }
    return {};
}
