#include "supervisor/resume/PlanChanges.h"

#include <algorithm>

#include "base/Names.h"
#include "base/Text.h"
#include "platform/FileDigest.h"
#include "supervisor/journal/JournalIndex.h"

namespace {

constexpr char kGoOn[] = "To go on with the run, make that as it was and give the command again.";

/// An option whose value makes other results.
struct ValueRow {
    const char* option;
    bool place;  ///< a file or folder, compared by where it really is
    std::string (*value)(const RunDescription&);
};
constexpr ValueRow kValues[] = {
    {"--input", true, [](const RunDescription& run) { return run.inputs.empty() ? "" : run.inputs.front(); }},
    {"--output", true, [](const RunDescription& run) { return run.outputFolder; }},
    {"--final-action", false, [](const RunDescription& run) { return std::string(FactsOf(run.finalAction).word); }},
    {"--destination", true, [](const RunDescription& run) { return run.destination; }},
    {"--keep-originals", true, [](const RunDescription& run) { return run.keepOriginals; }},
    {"--ext", false, [](const RunDescription& run) { return run.extensions; }},
    {"--no-subfolders", false, [](const RunDescription& run) { return std::string(run.noSubfolders ? "yes" : ""); }}};

/// A permission: it may be given later, but not taken back.
struct PermissionRow {
    const char* option;
    bool RunDescription::*given;
};
constexpr PermissionRow kPermissions[] = {{"--skip-unavailable", &RunDescription::skipUnavailable},
                                          {"--accept-damaged", &RunDescription::acceptDamaged},
                                          {"--allow-no-output", &RunDescription::allowNoOutput},
                                          {"--allow-in-place", &RunDescription::allowInPlace}};

bool IsSameFile(const std::string& one, const std::string& other)
{
    return one == other || platform::ResolvedPath(one) == platform::ResolvedPath(other);
}

bool IsSame(const ValueRow& row, const std::string& one, const std::string& other)
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

/// Option by option, as "--ext (was "pdf", is "tif")".
std::vector<std::string> Differences(const RunDescription& planned, const RunDescription& request)
{
    std::vector<std::string> found;
    for (const ValueRow& row : kValues) {
        const std::string was = row.value(planned), is = row.value(request);
        if (!IsSame(row, was, is))
            found.push_back(std::string(row.option) + " (was " + Told(was) + ", is " + Told(is) + ")");
    }
    for (const PermissionRow& row : kPermissions)
        if (planned.*row.given && !(request.*row.given))
            found.push_back(std::string(row.option) + " (was given, is not)");
    return found;
}

bool IsSameWork(const WorkDescription& planned, const WorkDescription& request)
{
    return planned.kind == request.kind && WorkIdentity(planned) == WorkIdentity(request) &&
           std::ranges::equal(planned.files, request.files, [](const WorkFile& one, const WorkFile& other) {
               return one.name == other.name && IsSameFile(one.path, other.path);
           });
}

bool HaveSameInputs(const RunDescription& planned, const RunDescription& request)
{
    return IsSameWork(planned.work, request.work) && std::ranges::equal(planned.inputs, request.inputs, IsSameFile);
}

std::string ChangedFile(const WorkFile& file, const std::string& plannedHash)
{
    if (plannedHash.empty()) return {};
    const std::string what = "The " + file.name + ' ' + file.path;
    platform::FileResult read;
    const std::string hash = platform::Sha256OfFile(file.path, &read);
    if (!read) return what + " cannot be read (" + platform::ErrorText(read.errorNumber) + ").";
    if (hash == plannedHash) return {};
    return what +
           " was changed since the run was planned, so that the rest of the files would come out in another way. " +
           kGoOn;
}

bool IsUnfinished(const ManifestHeader& header, const std::string& journalPath)
{
    CDoneIndex done(header.total);
    CJournalIndex journal(done);
    const auto content = ReadJournal(journalPath, header.order.run, journal);
    return content && content->name && journal.Ending() != "finished";
}

}  // namespace

std::string ChangedWork(const ManifestHeader& header)
{
    const auto& files = header.order.description.work.files;
    for (std::size_t i = 0; i < std::min(files.size(), header.workHashes.size()); ++i)
        if (std::string changed = ChangedFile(files[i], header.workHashes[i]); !changed.empty()) return changed;
    return {};
}

std::string ChangedOptions(const ManifestHeader& header, const RunDescription& request)
{
    const std::vector<std::string> found = Differences(header.order.description, request);
    if (found.empty()) return {};
    return "The run was planned with other options: " + Joined(found) + ". " + kGoOn;
}

std::string UnfinishedRelative(const std::string& ownFolder, const RunDescription& request)
{
    const std::string runs = FolderOf(ownFolder);
    for (const platform::FolderEntry& entry : platform::ListFolder(runs)) {
        const std::string folder = runs + entry.name;
        if (!entry.isFolder || folder == ownFolder) continue;
        CManifestReader manifest;
        const auto header = manifest.Open(ManifestIn(folder));
        if (!header || !HaveSameInputs(header->order.description, request)) continue;
        const std::string changed = ChangedOptions(*header, request);
        if (!changed.empty() && IsUnfinished(*header, JournalIn(folder)))
            return "There is no run with these options to go on with, but an unfinished one of the same " +
                   request.work.kind + " over the same inputs. " + changed;
    }
    return {};
}
