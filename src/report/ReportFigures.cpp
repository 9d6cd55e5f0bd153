#include "report/ReportFigures.h"

#include <algorithm>
#include <cmath>

#include "base/Text.h"

std::string Grouped(std::uint64_t number)
{
    std::string digits = std::to_string(number);
    for (std::size_t end = digits.size(); end > 3; end -= 3) digits.insert(end - 3, 1, ',');
    return digits;
}

std::string Counted(std::uint64_t number, const char* one, const char* many)
{
    return Grouped(number) + " " + (number == 1 ? one : many);
}

std::string Bytes(std::uint64_t number)
{
    if (number < 1000) return Counted(number, "byte", "bytes");
    double value = static_cast<double>(number);
    const char* unit = "";
    for (const char* const next : {"kB", "MB", "GB", "TB"}) {
        if (value < 999.5) break;
        value /= 1000;
        unit = next;
    }
    return FormatText(value < 9.95 ? "%.1f %s" : "%.0f %s", value, unit);
}

std::string TimeText(double milliseconds)
{
    if (milliseconds < 999.5) return FormatText("%.0f ms", milliseconds);
    const double seconds = milliseconds / 1000;
    if (seconds < 59.95) return FormatText(seconds < 9.95 ? "%.1f s" : "%.0f s", seconds);
    const auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    if (whole < 3600) return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
    return Grouped(whole / 3600) + " h " + std::to_string(whole / 60 % 60) + " min";
}

std::string ShareText(std::uint64_t part, std::uint64_t whole)
{
    if (whole == 0 || part == 0) return "0 %";
    const double percent = 100.0 * static_cast<double>(part) / static_cast<double>(whole);
    if (percent < 0.1) return "less than 0.1 %";
    if (part < whole && percent > 99.9) return "more than 99.9 %";
    return FormatText(percent < 9.95 || (part < whole && percent > 99) ? "%.1f %%" : "%.0f %%", percent);
}

std::string GroupTitle(const ReasonGroup& group)
{
    return OutcomePhrase(group.outcome) + (group.outcome == FileOutcome::Saved ? ", with a remark" : "");
}

std::string ReasonText(const ReasonGroup& group)
{
    return group.reason.empty() ? "No reason was given." : group.reason;
}

std::string ProtectionText(const std::optional<ProtectionState>& protection)
{
    if (!protection) return "not known";
    constexpr const char* kNames[kProtectionMethods] = {"not protected", "RC4", "AES with 128 bits",
                                                        "AES with 256 bits", "protected otherwise"};
    return std::string(kNames[static_cast<std::size_t>(protection->method)]) +
           (protection->password ? ", opens with a password" : "");
}

std::string FinalActionText(const CRunSums::FinalActionKind& kind)
{
    using State = FinalActionRecord::State;
    if (!kind.first) return "failed before anything was done";
    constexpr const char* kDone[] = {"copied", "moved", "deleted", "given to a program"};
    constexpr const char* kNames[] = {"copying", "moving", "deleting", "starting a program"};
    const auto act = static_cast<std::size_t>(*kind.first);
    if (kind.second == State::Done) return kDone[act];
    if (kind.second == State::Failed) return std::string(kNames[act]) + " failed";
    return std::string("not known whether ") + kNames[act] + " has happened";
}

std::string GrowthText(std::uint64_t before, std::uint64_t after)
{
    if (before == after) return "as large as before";
    const std::uint64_t difference = std::max(before, after) - std::min(before, after);
    return ShareText(difference, before) + (after < before ? " smaller" : " larger");
}

std::string LeadText(const CRunSums& sums)
{
    std::string text = Counted(sums.all.files, "file", "files") + ", " + Bytes(sums.all.bytes) + ": ";
    std::string counts;
    for (const FileOutcome outcome : {FileOutcome::Saved, FileOutcome::CopiedUnchanged, FileOutcome::Incomplete,
                                      FileOutcome::Failed, FileOutcome::Skipped, FileOutcome::Stopped})
        if (const std::uint64_t files = sums.Of(outcome).files; files != 0 || outcome == FileOutcome::Saved)
            counts += (counts.empty() ? "" : ", ") + Grouped(files) + ' ' + OutcomePhrase(outcome);
    text += counts + ". Working time of all files together: " + TimeText(static_cast<double>(sums.all.milliseconds)) +
            ".";
    return text;
}
