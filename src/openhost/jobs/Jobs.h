// The job that this host is started for: what is asked and told on its way, and the ledger of what is done for good.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "openhost/jobs/Originals.h"
#include "platform/Files.h"
#include "protocol/Messages.h"

namespace openhost {

/// The stamp of a regular file; links are followed.
std::optional<platform::FileStamp> StampOfRegularFile(const std::string& path);

/// SHA-256 of files, each content read once: the last few are remembered by the files' stamps.
class CContentHashes {
public:
    /// Empty when the file cannot be read.
    std::string Of(const std::string& path);
    /// `path` has got a new name and is otherwise what it was as `former`.
    void Renamed(const platform::FileStamp& former, const std::string& path);

private:
    struct Entry {
        platform::FileStamp stamp;
        std::string sha256;
    };
    void Keep(const platform::FileStamp& stamp, std::string sha256);
    std::deque<Entry> m_known;  // the latest first
};

/// Where the job of this host comes from and who hears how it goes. This one is the run without a job: the plug-in
/// finds its inputs itself, may do everything, and nobody listens.
class CJobSource {
public:
    using Answer = COverseer::Answer;

    virtual ~CJobSource() = default;

    /// One JSON object, UTF-8; null when there is no job. Valid as long as this object; always the same.
    virtual const std::string* Job() { return nullptr; }
    /// True when the job is a trial. Asks for the job when that is not known yet.
    virtual bool Pretends() { return false; }
    /// Nothing when there is none left.
    virtual std::optional<JobInputFile> NextInput() { return std::nullopt; }

    /// Whether records are wanted at all: making them takes a look at every byte of every file.
    virtual bool WantsRecords() const { return false; }
    /// Whether records have the hashes of the inputs. Asks for the job when that is not known yet.
    virtual bool WantsHashes() { return true; }
    /// Where what acts take away is to be kept. Asks for the job when that is not known yet.
    virtual Keeping KeepsOriginals() { return {}; }
    virtual Answer MayAct(const IntendedAct&) { return Answer::Go; }
    /// What pretended acts made of the path; nothing when the disk tells.
    virtual std::optional<bool> Exists(const std::string&) { return std::nullopt; }

    virtual void RunStarts(int) {}
    virtual void FileDone(const FileRecord&) {}
    virtual void RunEnds(RunEnd, std::string_view) {}
    /// A place in the plug-in's log; returns when it is noted.
    virtual void LogMark(LogPlace) {}
    /// One JSON object, UTF-8.
    virtual void Report(std::string_view) {}
    /// Hears the host's own remarks; false: they go to standard error.
    virtual bool Remark(std::string_view) { return false; }
    /// Whether whoever gave the job is gone, or what he ordered to be written could not be written.
    virtual bool Broken() const { return false; }
};

/// Knows the input file that is being worked on and what is done for it: acts of the host and of the plug-in come
/// together here, are asked about at the source of the job, and, where records are wanted, end up in the file's
/// record.
class CLedger final : public COverseer {
public:
    /// Source: borrowed. The clock answers milliseconds of any origin.
    CLedger(CJobSource& source, std::function<std::uint64_t()> clock);

    void InputBegins(const JobInputFile& input);
    /// What is asked from here on until the file is done is its final action.
    void FinalActionBegins() { m_file.finalActionBegun = true; }
    /// What is put from here on, until false, are copies beside the results.
    void Copying(bool begins) { m_file.copying = begins; }
    /// A signed document of the present input is going to be written as a whole.
    void SignaturesBroken() { m_file.signaturesBroken = true; }
    /// A document was opened from the file.
    void Read(const std::string& path, const ProtectionState& protection);
    /// A document, protected so, is going to be written into the file.
    void WillWrite(const std::string& path, const ProtectionState& protection);
    /// Closes the present input. Without one that began, `path` names it.
    FileRecord FileDone(const std::string& path, FileOutcome outcome, const std::string& message);

    Answer Ask(Act act, const std::string& file, const std::string& target) override;
    bool Pretends() const override { return m_source.Pretends(); }
    std::optional<bool> Exists(const std::string& path) const override;

private:
    struct Deed {
        Act act = Act::Put;
        bool finalAction = false;
        std::string file, target, sha256;
        std::optional<platform::FileStamp> stamp;  // of the file before
        bool done = false;
        std::optional<FormerFile> former = {};  // what it takes away
        std::optional<FileTraits> traits = {};  // of what it moves
        std::string objection = {};             // why it must not happen
        bool copy = false;
        std::optional<ProtectionState> protection = {};  // of what is put
    };
    struct Content {
        std::uint64_t size = 0;
        std::string sha256;
    };
    struct PresentFile {
        std::optional<JobInputFile> input;
        std::uint64_t beganAt = 0;
        std::map<std::string, Content> before;  // what stood at these paths before anything was done to them
        std::vector<Deed> deeds;
        bool unsettled = false;  // nobody has looked yet whether the last deed happened
        bool finalActionBegun = false;
        bool signaturesBroken = false;
        bool copying = false;
        std::map<std::string, ProtectionState> read, written;  // of the files at these paths: the first, the latest
    };

    void NoteBefore(const std::string& path);
    Content Before(const std::string& path);
    void KeepFormer(Deed& deed);
    std::string KeepOriginal(const std::string& path, FormerFile& former);
    bool MayBeOnRecord(const Deed& deed) const;
    std::optional<ProtectionState> ProtectionBefore(const std::string& path) const;
    ProtectionChange ProtectionDone(const FileRecord& record) const;
    Answer AskSource(const Deed& deed);
    Answer AskAfterKeeping(Deed& deed);
    void SettleLast();
    bool HasHappened(const Deed& deed);
    std::vector<FileOutput> Outputs() const;
    const Deed* OwnMove(const std::string& path) const;
    std::optional<FinalActionRecord> FinalActionOf(FileOutcome outcome) const;
    FileRecord NewRecord(const std::string& path);

    CJobSource& m_source;
    std::function<std::uint64_t()> m_clock;
    CContentHashes m_hashes;
    std::optional<COriginals> m_originals;  // once the job is known
    PresentFile m_file;
    int m_filesDone = 0;
};

/// The job of this host: its source, and the ledger that watches over what this process does to files for good. The
/// ledger is installed as the overseer of this program as long as this object lives.
class CJobs {
public:
    CJobs();
    ~CJobs();
    CJobs(const CJobs&) = delete;
    CJobs& operator=(const CJobs&) = delete;

    /// Before anything is done; without it the run is one without a job.
    void TakeFrom(std::shared_ptr<CJobSource> source);

    CJobSource& Source() { return *m_source; }
    CLedger& Ledger() { return *m_ledger; }
    /// Null when there is none left.
    const JobInputFile* NextInput();

    std::string findings;  ///< what was found in the present input, until it is done

private:
    void Install();

    std::shared_ptr<CJobSource> m_source;
    std::unique_ptr<CLedger> m_ledger;
    COverseer* m_former = nullptr;
    std::optional<JobInputFile> m_input;  // the one handed out last
};

/// Offers the table through which plug-ins get their job and tell of their runs. Once for each host.
void OfferJobsTable();

}  // namespace openhost
