#ifndef FERRULE_OPENHOST_JOBS_JOB_SOURCE_H
#define FERRULE_OPENHOST_JOBS_JOB_SOURCE_H

#include <optional>
#include <string>
#include <string_view>

#include "protocol/Messages.h"

namespace openhost {

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

}  // namespace openhost

#endif
