#ifndef FERRULE_OPENHOST_JOBS_LEDGER_H
#define FERRULE_OPENHOST_JOBS_LEDGER_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "openhost/jobs/ContentHashes.h"
#include "openhost/jobs/JobSource.h"

namespace openhost {

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
    /// A signed document of the present input is going to be written as a whole.
    void SignaturesBroken() { m_file.signaturesBroken = true; }
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
    };

    void NoteBefore(const std::string& path);
    Content Before(const std::string& path);
    bool MayBeOnRecord(const Deed& deed) const;
    Answer AskSource(const Deed& deed);
    void SettleLast();
    bool HasHappened(const Deed& deed);
    std::vector<FileOutput> Outputs() const;
    std::optional<FinalActionRecord> FinalActionOf(FileOutcome outcome) const;
    FileRecord NewRecord(const std::string& path);

    CJobSource& m_source;
    std::function<std::uint64_t()> m_clock;
    CContentHashes m_hashes;
    PresentFile m_file;
    int m_filesDone = 0;
};

}  // namespace openhost

#endif
