#include "openhost/catalog/Catalog.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <utility>

#include "openhost/catalog/FoundFiles.h"
#include "openhost/catalog/Query.h"
#include "openhost/files/FilePaths.h"
#include "platform/HeldFiles.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

/// Says for as long as it lives what the catalog is doing.
class CDoing {
public:
    CDoing(CatalogStatus& status, CatalogStatus now) : m_status(status) { m_status = now; }
    CDoing(const CDoing&) = delete;
    CDoing& operator=(const CDoing&) = delete;
    ~CDoing() { m_status = CatalogIdle; }

private:
    CatalogStatus& m_status;
};

CatalogAnswer Invalid(std::string message) { return {IndexInvalid, std::move(message)}; }

CatalogAnswer NotSaved(const std::string& path, platform::FileResult result)
{
    return {IndexCouldNotBeSaved, path + " cannot be written: " + platform::ErrorText(result.errorNumber)};
}

/// Why the folder of an index cannot be used; empty when it can. A folder with other files in it, and none of an
/// index, is somebody's own.
std::string ObjectionToFolder(const IndexPlace& place)
{
    if (!platform::NameExists(place.folder)) return {};
    if (!platform::IsOwnFolder(place.folder))
        return place.folder + " is where the index would lie, and it is no folder of yours; move it away";
    if (platform::NameExists(place.lock) || platform::NameExists(place.index)) return {};
    const auto entries = platform::ListFolder(place.folder);
    if (entries.empty()) return {};
    return place.folder + " is where the index would lie, and it holds something else, \"" + entries.front().name +
           "\"; move it away";
}

/// Makes the folder when it is missing, and keeps others out while `lock` lives. Done: nothing is answered.
std::optional<CatalogAnswer> Claim(const IndexPlace& place, platform::CFileLock& lock)
{
    if (const std::string objection = ObjectionToFolder(place); !objection.empty()) return Invalid(objection);
    auto result = platform::CreatePrivateFolder(place.folder);
    if (platform::ProblemOf(result) == platform::FileProblem::Exists)
        result = platform::MakeFolderPrivate(place.folder);
    if (!result) return NotSaved(place.folder, result);
    result = lock.TryLock(place.lock);
    if (platform::ProblemOf(result) == platform::FileProblem::InUse)
        return CatalogAnswer{CatalogBusy, place.description + ": another program is building or purging this index"};
    if (!result) return NotSaved(place.lock, result);
    return std::nullopt;
}

/// Whatever goes wrong inside becomes an answer.
template <class Work>
CatalogAnswer Answered(const std::string& path, IndexStatus otherwise, Work work)
{
    try {
        return work();
    } catch (const CBuildFailure& failure) {
        const bool nothing = failure.Why() == CBuildFailure::Kind::NothingToIndex;
        return {nothing ? IndexInvalid : IndexCouldNotBeSaved, failure.what()};
    } catch (const std::exception& error) {
        return {otherwise, path + ": " + error.what()};
    }
}

/// The sentence about an index that cannot be read.
std::string Unusable(const IndexPlace& place, const std::string& why)
{
    return "The index of " + place.description + " " + why + "; build it with \"ferrule index build\"";
}

std::string OneLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, ' ');
    return text;
}

}  // namespace

CatalogAnswer CCatalog::Create(const std::string& path, const IndexDescription& description)
{
    const IndexPlace place = PlaceOfIndex(path);
    if (const std::string objection = ObjectionToFolder(place); !objection.empty()) return Invalid(objection);
    IndexDescription written = description;
    for (std::string& folder : written.folders) folder = KeyOfPath(place, AbsoluteNative(folder));
    std::string problem = WriteIndexDescription(place.description, written);
    if (!problem.empty()) return {IndexCouldNotBeSaved, std::move(problem)};
    return {IndexLoadDone, {}};
}

CatalogAnswer CCatalog::Load(const std::string& path)
{
    IndexContents contents;
    return Contents(path, contents);
}

CatalogAnswer CCatalog::Build(const std::string& path, const ReaderSettings& how, BuildSummary& summary,
                              const BuildProgress& progress)
{
    return Answered(path, IndexCouldNotBeSaved, [&]() -> CatalogAnswer {
        const auto description = ReadIndexDescription(path);
        if (!description) return Invalid(description.Error());
        const IndexPlace place = PlaceOfIndex(path);
        platform::CFileLock lock;
        if (auto refused = Claim(place, lock)) return std::move(*refused);
        const CDoing doing(m_status, CatalogBuilding);
        summary = BuildIndex(place, *description, how, progress);
        return {IndexBuildDone, {}};
    });
}

CatalogAnswer CCatalog::Purge(const std::string& path)
{
    return Answered(path, IndexCouldNotBeSaved, [&]() -> CatalogAnswer {
        const auto description = ReadIndexDescription(path);
        if (!description) return Invalid(description.Error());
        const IndexPlace place = PlaceOfIndex(path);
        if (!platform::NameExists(place.folder)) return {IndexPurgeDone, {}};
        platform::CFileLock lock;
        if (auto refused = Claim(place, lock)) return std::move(*refused);
        const CDoing doing(m_status, CatalogPurging);
        if (StateOfIndexFile(place.index) == IndexFileState::Foreign)
            return Invalid(place.index + " " + TextOfState(IndexFileState::Foreign) + " and stays where it is");
        for (const std::string& file : {place.newIndex, place.index}) {
            std::error_code failed;
            std::filesystem::remove(platform::StandardPath(file), failed);
            if (failed) return {IndexCouldNotBeSaved, file + " cannot be removed: " + failed.message()};
        }
        return {IndexPurgeDone, {}};
    });
}

CatalogAnswer CCatalog::Contents(const std::string& path, IndexContents& contents)
{
    return Answered(path, IndexInvalid, [&]() -> CatalogAnswer {
        const auto description = ReadIndexDescription(path);
        if (!description) return Invalid(description.Error());
        const IndexPlace place = PlaceOfIndex(path);
        const IndexFileState state = StateOfIndexFile(place.index);
        if (state == IndexFileState::Missing) return {IndexLoadDone, {}};
        if (state != IndexFileState::Fine) return Invalid(Unusable(place, TextOfState(state)));
        CIndexReader index(place.index);
        if (!index.IsSound()) return Invalid(Unusable(place, "is damaged; remove it with \"ferrule index purge\""));
        const auto documents = index.Documents();
        contents.built = true;
        contents.empty = false;
        for (const IndexedDocument& document : documents) {
            if (document.state != DocumentState::Indexed) continue;
            ++contents.documents;
            contents.pages += document.pages;
        }
        contents.problems = ProblemsOf(place, documents);
        if (const auto stamp = platform::StampOf(place.index)) {
            contents.bytes = stamp->size;
            contents.builtAt = stamp->modifiedNanoseconds;
        }
        return {IndexLoadDone, {}};
    });
}

CatalogAnswer CCatalog::Search(const std::string& path, const std::string& query, const SearchOptions& options,
                               const std::function<void(const IndexHit&)>& take)
{
    return Answered(path, IndexInvalid, [&]() -> CatalogAnswer {
        const auto description = ReadIndexDescription(path);
        if (!description) return Invalid(description.Error());
        const auto parsed = CIndexQuery::Parse(query);
        if (!parsed) return Invalid(parsed.Error());
        const IndexPlace place = PlaceOfIndex(path);
        if (const auto state = StateOfIndexFile(place.index); state != IndexFileState::Fine)
            return Invalid(Unusable(place, TextOfState(state)));
        CIndexReader index(place.index);
        std::unordered_map<std::int64_t, std::vector<PageKey>> pages;
        for (const PageKey page : parsed->Run(index, options.onOnePage)) pages[DocumentOf(page)].push_back(page);
        const std::string texts = parsed->WantedTexts();
        std::size_t told = 0;
        for (const IndexedDocument& document : index.Documents()) {
            const auto found = pages.find(document.id);
            if (found == pages.end()) continue;
            for (const PageKey page : found->second) {
                if (options.most != 0 && told == options.most) return {IndexLoadDone, {}};
                take({PathOfKey(place, document.path), PageOf(page),
                      options.withSnippets ? OneLine(index.Snippet(texts, page)) : std::string()});
                ++told;
            }
        }
        return {IndexLoadDone, {}};
    });
}

}  // namespace openhost
