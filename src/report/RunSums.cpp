#include "report/RunSums.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <tuple>

#include "base/Names.h"
#include "base/Text.h"

namespace {

constexpr std::size_t kLongestReason = 300;
constexpr std::size_t kShortestName = 4;  // a shorter one may be a part of other words

/// The worst first, saved files with a remark last.
int Rank(FileOutcome outcome)
{
    constexpr FileOutcome order[] = {FileOutcome::Failed,  FileOutcome::Incomplete,      FileOutcome::Stopped,
                                     FileOutcome::Skipped, FileOutcome::CopiedUnchanged, FileOutcome::Saved};
    return static_cast<int>(std::ranges::find(order, outcome) - std::begin(order));
}

void TakeOut(std::string& text, const std::string& what)
{
    if (what.size() >= kShortestName) text = ReplaceAll(text, TextFromBytes(what), "\xE2\x80\xA6");
}

/// Numbers differ from file to file: those of pages, lines, objects.
std::string WithoutNumbers(const std::string& text)
{
    std::string result;
    for (const char letter : text) {
        const bool digit = std::isdigit(static_cast<unsigned char>(letter)) != 0;
        if (!digit)
            result += letter;
        else if (result.empty() || result.back() != '#')
            result += '#';
    }
    return result;
}

std::string CutText(std::string text)
{
    if (text.size() <= kLongestReason) return text;
    std::size_t end = kLongestReason;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
    text.resize(end);
    return text + "\xE2\x80\xA6";
}

std::string MessageWithoutNames(const FileRecord& record)
{
    std::string text = record.message;
    for (const FileOutput& output : record.outputs) TakeOut(text, output.path);
    if (record.finalAction) TakeOut(text, record.finalAction->target);
    TakeOut(text, record.path);
    TakeOut(text, FileName(record.path));
    return text;
}

template <class Value>
void KeepGreatest(std::vector<ListedFile>& list, const ListedFile& file, Value value)
{
    const auto greater = [&](const ListedFile& one, const ListedFile& other) {
        return std::tuple(value(one), other.path) > std::tuple(value(other), one.path);
    };
    if (list.size() == FileList::kMost && !greater(file, list.back())) return;
    list.insert(std::ranges::upper_bound(list, file, greater), file);
    if (list.size() > FileList::kMost) list.pop_back();
}

std::int64_t Growth(const ListedFile& file)
{
    return static_cast<std::int64_t>(file.sizeAfter.value_or(0)) - static_cast<std::int64_t>(file.size);
}

}  // namespace

double MillisecondsPerMegabyte(const ListedFile& file)
{
    return file.size == 0 ? 0 : static_cast<double>(file.milliseconds) * 1e6 / static_cast<double>(file.size);
}

void FileList::Add(const ListedFile& file)
{
    if (++count <= kMost) first.push_back(file);
}

double CLogHistogram::Begin(std::size_t step) { return std::pow(10, static_cast<double>(step) / kStepsOfDecade); }

void CLogHistogram::Add(double value)
{
    const double step = value > 1 ? std::floor(std::log10(value) * kStepsOfDecade + 1e-9) : 0;
    ++m_steps[static_cast<std::size_t>(std::min(step, static_cast<double>(kSteps - 1)))];
    ++m_count;
}

double CLogHistogram::Quantile(double share) const
{
    const double wanted = share * static_cast<double>(m_count);
    double passed = 0;
    for (std::size_t step = 0; step < kSteps; ++step) {
        passed += static_cast<double>(m_steps[step]);
        if (m_steps[step] != 0 && passed >= wanted) return std::sqrt(Begin(step) * Begin(step + 1));
    }
    return 0;
}

void TimeGrid::Add(std::uint64_t size, std::int64_t milliseconds, bool saved)
{
    const auto place = [](double value, double smallest, int steps) {
        if (value <= smallest) return 0;
        return std::min(static_cast<int>(std::log10(value / smallest) * kStepsOfDecade + 1e-9), steps - 1);
    };
    const int column = place(static_cast<double>(size), kSmallest, kColumns);
    const int row = place(static_cast<double>(milliseconds), kShortest, kRows);
    Cell& cell = cells[static_cast<std::size_t>(row * kColumns + column)];
    ++cell.files;
    if (!saved) ++cell.notSaved;
}

bool CRunSums::ProtectionOrder::operator()(const ProtectionPair& one, const ProtectionPair& other) const
{
    const auto key = [](const std::optional<ProtectionState>& each) {
        return each ? static_cast<int>(each->method) * 2 + (each->password ? 1 : 0) : 100;
    };
    return std::pair(key(one.first), key(one.second)) < std::pair(key(other.first), key(other.second));
}

void CRunSums::Add(const FileRecord& record)
{
    const std::int64_t milliseconds = std::clamp<std::int64_t>(record.milliseconds, 0, std::int64_t{1} << 40);
    ListedFile file{record.path, record.size, milliseconds};
    const bool saved = record.outcome == FileOutcome::Saved;
    for (OutcomeSums* const sums : {&all, &outcomes[static_cast<std::size_t>(record.outcome)]}) {
        ++sums->files;
        sums->bytes += record.size;
        sums->milliseconds += milliseconds;
    }
    if (!saved || !record.message.empty()) AddReason(record, file);
    // Nothing was done to the others that took its time.
    if (record.outcome != FileOutcome::Skipped) {
        timePerFile.Add(static_cast<double>(milliseconds));
        timeBySize.Add(record.size, milliseconds, saved);
        KeepGreatest(slowest, file, [](const ListedFile& each) { return each.milliseconds; });
        if (record.size >= kLeastForSpeed) {
            timePerMegabyte.Add(MillisecondsPerMegabyte(file));
            KeepGreatest(slowestPerMegabyte, file, MillisecondsPerMegabyte);
        }
    }
    AddSizes(record, file);
    if (record.protection.Known())
        ++protection[{record.protection.before, record.protection.after}];
    else
        ++protectionUnknown;
    if (record.finalAction) finalActions[{record.finalAction->act, record.finalAction->state}].Add(file);
    if (record.signaturesBroken) signaturesBroken.Add(file);
}

void CRunSums::AddReason(const FileRecord& record, const ListedFile& file)
{
    const std::string message = MessageWithoutNames(record);
    const std::string reason = CutText(WithoutNumbers(message));
    auto place = m_places.find({record.outcome, reason});
    if (place == m_places.end()) {
        if (reasons.size() == kMostReasons) return otherReasons.Add(file);
        place = m_places.emplace(std::pair(record.outcome, reason), reasons.size()).first;
        reasons.push_back({record.outcome, CutText(message), CutText(record.message), {}});
    }
    ReasonGroup& group = reasons[place->second];
    if (group.reason != CutText(message)) group.reason = reason;
    group.files.Add(file);
}

void CRunSums::AddSizes(const FileRecord& record, const ListedFile& file)
{
    std::uint64_t after = 0, results = 0;
    bool known = true;
    for (const FileOutput& output : record.outputs) {
        if (output.copy) continue;
        ++results;
        known = known && output.size;
        after += output.size.value_or(0);
    }
    if (results == 0) return;
    if (!known) {
        ++sizes.unknown;
        return;
    }
    ++sizes.files;
    sizes.before += record.size;
    sizes.after += after;
    sizes.results += results;
    ++(after < record.size ? sizes.smaller : after == record.size ? sizes.same : sizes.larger);
    ListedFile grown = file;
    grown.sizeAfter = after;
    if (after > record.size) KeepGreatest(grownMost, grown, Growth);
}

void CRunSums::AddProblem(std::string sentence)
{
    if (++problemCount <= kMostProblems) problems.push_back(std::move(sentence));
}

void CRunSums::Complete()
{
    std::ranges::stable_sort(reasons, [](const ReasonGroup& one, const ReasonGroup& other) {
        return std::tuple(Rank(one.outcome), other.files.count, one.reason) <
               std::tuple(Rank(other.outcome), one.files.count, other.reason);
    });
    m_places.clear();
}
