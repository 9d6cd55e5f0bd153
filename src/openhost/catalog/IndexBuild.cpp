#include "openhost/catalog/IndexBuild.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <thread>

#include "openhost/catalog/FoundFiles.h"
#include "platform/Clock.h"
#include "platform/FileDigest.h"
#include "platform/HeldFiles.h"
#include "platform/NarrowText.h"
#include "platform/Paths.h"

namespace openhost {

namespace {

/// A file may change within the unit in which its file system counts the time, and show the same time after it.
constexpr std::int64_t kYoungNanoseconds = 2'000'000'000;

bool IsYoung(const platform::FileStamp& stamp)
{
    const std::int64_t now = platform::NanosecondsSince1970();
    return std::max(stamp.modifiedNanoseconds, stamp.changedNanoseconds) > now - kYoungNanoseconds;
}

/// The document as it is now; without times when a change might not show in them.
IndexedDocument DocumentFor(const FoundFile& file)
{
    IndexedDocument document{.path = file.key, .size = file.stamp.size};
    if (IsYoung(file.stamp)) return document;
    document.modified = file.stamp.modifiedNanoseconds;
    document.changed = file.stamp.changedNanoseconds;
    return document;
}

struct BuildPlan {
    std::vector<IndexedDocument> keep = {}, restamp = {};  // restamped ones are kept, too
    std::vector<IndexedDocument> remove = {};              // as the former index has them, changed ones among them
    std::vector<FoundFile> read = {};
    int vanished = 0;

    bool ChangesNothing() const { return restamp.empty() && remove.empty() && read.empty(); }
};

class CPlanner {
public:
    CPlanner(const IndexPlace& place, const IndexDescription& description, const ReaderSettings& readers,
             const FoundFiles& found)
        : m_place(place), m_description(description), m_readers(readers), m_found(found)
    {
    }

    BuildPlan Plan(const std::vector<IndexedDocument>& former)
    {
        std::map<std::string, const IndexedDocument*> known;
        for (const IndexedDocument& document : former) known[document.path] = &document;
        for (const FoundFile& file : m_found.files) {
            const auto entry = known.find(file.key);
            if (entry == known.end()) {
                m_plan.read.push_back(file);
            } else {
                Compare(file, *entry->second);
                known.erase(entry);
            }
        }
        for (const auto& [key, document] : known) Missing(*document);
        return std::move(m_plan);
    }

private:
    void Compare(const FoundFile& file, const IndexedDocument& document)
    {
        if (!MustBeReadAgain(document) && document.size == file.stamp.size) {
            if (document.modified == file.stamp.modifiedNanoseconds &&
                document.changed == file.stamp.changedNanoseconds)
                return m_plan.keep.push_back(document);
            if (!document.sha256.empty() && platform::Sha256OfFile(file.path) == document.sha256)
                return Restamp(file, document);
        }
        m_plan.remove.push_back(document);
        m_plan.read.push_back(file);
    }

    void Restamp(const FoundFile& file, IndexedDocument document)
    {
        const IndexedDocument now = DocumentFor(file);
        const bool same = now.modified == document.modified && now.changed == document.changed;
        document.modified = now.modified;
        document.changed = now.changed;
        if (!same) m_plan.restamp.push_back(document);
        m_plan.keep.push_back(document);
    }

    /// Also when what decides is not in the file.
    bool MustBeReadAgain(const IndexedDocument& document) const
    {
        if (document.state == DocumentState::Unreadable) return true;
        const bool isIn = document.encrypted && document.state != DocumentState::LeftOut;
        if (isIn && !m_description.includeEncrypted) return true;
        if (document.state == DocumentState::LeftOut) return m_description.includeEncrypted;
        return m_readers.hasPasswords &&
               (document.state == DocumentState::NeedsPassword || document.state == DocumentState::NotPermitted);
    }

    void Missing(const IndexedDocument& document)
    {
        const std::string path = PathOfKey(m_place, document.path);
        const bool hidden = std::any_of(m_found.unreadable.begin(), m_found.unreadable.end(),
                                        [&](const std::string& folder) { return LiesIn(path, folder); });
        if (hidden && IsStillWanted(path) && (!document.encrypted || m_description.includeEncrypted))
            return m_plan.keep.push_back(document);
        m_plan.remove.push_back(document);
        ++m_plan.vanished;
    }

    bool IsStillWanted(const std::string& path) const
    {
        return std::any_of(m_description.folders.begin(), m_description.folders.end(),
                           [&](const std::string& folder) { return LiesIn(path, PathOfKey(m_place, folder)); });
    }

    const IndexPlace& m_place;
    const IndexDescription& m_description;
    const ReaderSettings& m_readers;
    const FoundFiles& m_found;
    BuildPlan m_plan;
};

[[noreturn]] void CannotSave(const std::string& path, const std::string& why)
{
    throw CBuildFailure(CBuildFailure::Kind::CannotSave, path + " cannot be written: " + why);
}

// The files of an index belong to no job: nobody is asked about them, and no record tells of them.

void RemoveQuietly(const std::string& path)
{
    std::error_code failed;
    std::filesystem::remove(platform::StandardPath(path), failed);
}

void PutInPlace(const std::string& newPath, const std::string& path)
{
    constexpr int kAttempts = platform::kOpenFilesKeepTheirNames ? 40 : 1;  // a search has it open for a moment
    std::error_code failed;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        if (attempt > 0) std::this_thread::sleep_for(std::chrono::milliseconds(250));
        std::filesystem::rename(platform::StandardPath(newPath), platform::StandardPath(path), failed);
        if (!failed) return;
    }
    CannotSave(path, failed.message());
}

/// An empty file that its owner alone may read, or such a copy of the former index.
void BeginFile(const std::string& path, const std::string& former)
{
    RemoveQuietly(path);
    platform::CAppendFile file;
    auto result = file.Open(path);
    if (result && !former.empty()) {
        const auto read = platform::ReadPieces(former, [&](std::string_view bytes) {
            result = file.Write(bytes);
            return result.Ok();
        });
        if (result) result = read;
    }
    if (!result) CannotSave(path, platform::ErrorText(result.errorNumber));
}

class CBuild {
public:
    CBuild(const IndexPlace& place, const IndexDescription& description, const ReaderSettings& readers,
           const BuildProgress& progress)
        : m_place(place), m_description(description), m_readers(readers), m_progress(progress)
    {
    }

    BuildSummary Run()
    {
        m_found = FindFiles(m_place, m_description);
        if (m_found.folders == 0)
            throw CBuildFailure(CBuildFailure::Kind::NothingToIndex,
                                m_place.description + ": no folder that it names can be read, the first is " +
                                    m_found.unreadable.front());
        const bool former = StateOfIndexFile(m_place.index) == IndexFileState::Fine;
        try {
            return BuildFrom(former);
        } catch (const CIndexError& error) {
            if (!former || !error.Damaged()) CannotSave(m_place.newIndex, error.what());
        }
        try {  // the former index is broken inside
            return BuildFrom(false);
        } catch (const CIndexError& error) {
            CannotSave(m_place.newIndex, error.what());
        }
    }

private:
    BuildSummary BuildFrom(bool former)
    {
        m_summary = {};
        std::vector<IndexedDocument> documents;
        if (former) documents = CIndexReader(m_place.index).Documents();
        BuildPlan plan = CPlanner(m_place, m_description, m_readers, m_found).Plan(documents);
        m_documents = std::move(plan.keep);
        m_summary.unchanged = static_cast<int>(m_documents.size());
        m_summary.removed = plan.vanished;
        if (!former || !plan.ChangesNothing()) Write(plan, former);
        return Finished();
    }

    void Write(const BuildPlan& plan, bool former)
    {
        try {
            BeginFile(m_place.newIndex, former ? m_place.index : std::string());
            CIndexWriter writer(m_place.newIndex);
            for (const IndexedDocument& document : plan.remove) writer.Remove(document);
            for (const IndexedDocument& document : plan.restamp) writer.Restamp(document);
            ReadTexts(plan.read, writer);
            writer.Finish();
            PutInPlace(m_place.newIndex, m_place.index);
        } catch (...) {
            RemoveQuietly(m_place.newIndex);
            throw;
        }
    }

    void ReadTexts(const std::vector<FoundFile>& files, CIndexWriter& writer)
    {
        std::vector<TextOrder> orders;
        std::vector<IndexedDocument> documents;
        for (const FoundFile& file : files) {
            orders.push_back({.path = file.path, .includeEncrypted = m_description.includeEncrypted});
            documents.push_back(DocumentFor(file));
        }
        std::size_t done = 0;
        ReadAllTexts(m_readers, orders, [&](std::size_t number, DocumentTexts texts) {
            IndexedDocument& document = documents[number];
            document.state = texts.state;
            document.encrypted = texts.encrypted;
            document.pages = texts.pageCount;
            document.message = texts.message;
            document.sha256 = platform::Sha256OfFile(files[number].path);
            if (platform::StampOf(files[number].path) != files[number].stamp) {  // what was read may be half of both
                document.state = DocumentState::Unreadable;
                document.message = "It changed while it was being read.";
                texts.pages.clear();
            }
            writer.Add(document, texts.pages);
            m_documents.push_back(document);
            ++m_summary.read;
            if (m_progress) m_progress(++done, files.size());
        });
    }

    BuildSummary Finished()
    {
        for (const std::string& folder : m_found.unreadable)
            m_summary.problems.push_back({folder, DocumentState::Unreadable,
                                          "The folder cannot be read; what the index holds of it stays as it was."});
        std::sort(m_documents.begin(), m_documents.end(),
                  [](const IndexedDocument& a, const IndexedDocument& b) { return a.path < b.path; });
        for (IndexProblem& problem : ProblemsOf(m_place, m_documents))
            m_summary.problems.push_back(std::move(problem));
        for (const IndexedDocument& document : m_documents) {
            if (document.state != DocumentState::Indexed) continue;
            ++m_summary.documents;
            m_summary.pages += document.pages;
        }
        return std::move(m_summary);
    }

    const IndexPlace& m_place;
    const IndexDescription& m_description;
    const ReaderSettings& m_readers;
    const BuildProgress& m_progress;
    FoundFiles m_found;
    std::vector<IndexedDocument> m_documents;  // of the new index
    BuildSummary m_summary;
};

}  // namespace

BuildSummary BuildIndex(const IndexPlace& place, const IndexDescription& description, const ReaderSettings& readers,
                        const BuildProgress& progress)
{
    return CBuild(place, description, readers, progress).Run();
}

std::vector<IndexProblem> ProblemsOf(const IndexPlace& place, const std::vector<IndexedDocument>& documents)
{
    std::vector<IndexProblem> problems;
    for (const IndexedDocument& document : documents)
        if (document.state != DocumentState::Indexed || !document.message.empty())
            problems.push_back({PathOfKey(place, document.path), document.state, document.message});
    return problems;
}

}  // namespace openhost
