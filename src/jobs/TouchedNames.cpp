#include "jobs/TouchedNames.h"

#include "base/Names.h"
#include "base/PathNames.h"
#include "engine/SaveStepRedirection.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace {

constexpr std::uint64_t kAnyFolder = 0;

std::uint64_t HashOf(std::string_view bytes, std::uint64_t start)
{
    constexpr std::uint64_t kPrime = 0x100000001B3;
    std::uint64_t hash = start ^ 0xCBF29CE484222325;
    for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * kPrime;
    return hash ^ (hash >> 29);
}

/// The name without " (number)" at its end; the same when there is none.
std::string_view WithoutNumber(std::string_view base)
{
    if (!base.ends_with(')')) return base;
    const std::size_t open = base.rfind(" (");
    if (open == std::string_view::npos || open + 3 > base.size() - 1) return base;
    const std::string_view number = base.substr(open + 2, base.size() - open - 3);
    const bool digits = std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; });
    return digits ? base.substr(0, open) : base;
}

std::string ComparableText(std::string base)
{
    base = LowerCasedName(base);
    for (std::size_t before = 0; before != base.size();) {
        before = base.size();
        base.resize(WithoutNumber(base).size());
    }
    return base;
}

bool IsFolder(const std::string& path) { return !path.empty() && platform::FolderExists(path); }

}  // namespace

std::string ComparableBase(std::string_view fileName) { return ComparableText(SplitPath(fileName).base); }

CTouchedNames::CTouchedNames(const SequenceFacts& facts, const RunSettings& settings)
{
    m_results.push_back({});  // the input itself
    AddOutput(facts, settings);
    for (const StepFacts& step : facts.steps) {
        if (!step.available) continue;
        if (step.save) AddSaveStep(*step.save, facts, settings);
        if (step.maker == StepMaker::Other) m_anyFolder = true;
    }
    AddFinalAction(settings);
}

void CTouchedNames::AddOutput(const SequenceFacts& facts, const RunSettings& settings)
{
    const OutputSettings& output = facts.output;
    Result result{std::nullopt, output.insertBefore, output.insertAfter, std::nullopt};
    if (output.kind == kOutputAskUser || output.kind == kOutputFolder) {
        const bool redirected = facts.output.namesDestination && facts.hostMajor >= kFirstMajorWithSaveStep;
        if (IsFolder(settings.execution.alternativeOutputPath))
            result.folder = settings.execution.alternativeOutputPath;
        else if (!redirected)
            result.folder = output.selectedFolder;
    } else if (output.kind != kOutputInputFolder) {
        return;
    }
    m_results.push_back(std::move(result));
}

void CTouchedNames::AddSaveStep(const SaveStepFacts& save, const SequenceFacts& facts, const RunSettings& settings)
{
    Result result{save.folder, save.before, save.after, std::nullopt};
    if (save.namesDestination && facts.hostMajor >= kFirstMajorWithSaveStep) {
        result.folder.reset();
        if (IsFolder(settings.execution.alternativeOutputPath))
            result.folder = settings.execution.alternativeOutputPath;
    }
    m_results.push_back(std::move(result));
}

void CTouchedNames::AddFinalAction(const RunSettings& settings)
{
    if (WantsFolder(settings.finalAction)) m_results.push_back({settings.destination, {}, {}, std::nullopt});
    if (settings.finalAction == FinalAction::Rename)
        m_results.push_back({std::nullopt, {}, {}, settings.destination});
}

void CTouchedNames::AppendKeys(const std::string& folder, std::string_view name, std::vector<std::uint64_t>& keys)
{
    const std::string base = SplitPath(name).base;
    const auto append = [&](const std::string& made, std::uint64_t folderHash) {
        const std::uint64_t key = HashOf(ComparableText(made), folderHash);
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) keys.push_back(key);
    };
    for (const Result& result : m_results)
        append(result.name ? SplitPath(*result.name).base : result.before + base + result.after,
               FolderHash(result.folder ? *result.folder : folder));
    if (m_anyFolder) append(base, kAnyFolder);
    // What is done to the file behind a link is done to an input, too, when that is one.
    const std::string path = folder + std::string(name);
    std::error_code error;
    if (!std::filesystem::is_symlink(platform::StandardPath(path), error)) return;
    if (const std::string real = platform::CanonicalPath(path); !real.empty())
        append(SplitPath(real).base, FolderHash(FolderOf(real)));
}

std::uint64_t CTouchedNames::FolderHash(const std::string& folder)
{
    const auto [place, isNew] = m_folderHashes.emplace(folder, 0);
    if (!isNew) return place->second;
    const std::string canonical = platform::CanonicalPath(folder.empty() ? "." : folder);
    return place->second = HashOf(LowerCasedName(canonical.empty() ? folder : canonical), 1);
}
