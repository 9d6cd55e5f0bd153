#include "hostcalls/Jobs.h"

#include "hostapi/JobsTable.h"
#include "hostcalls/HostTables.h"

namespace {

/// Tables of the first version end before the slots of jobs.
bool HasJobSlots() { return HostTables().Version(HostTable::FerruleJobs) > kTableJobsFirstVersion; }

bool HasLossSlot() { return HostTables().Version(HostTable::FerruleJobs) > kTableJobsSecondVersion; }

bool HasNewSaveSlot() { return HostTables().Version(HostTable::FerruleJobs) > kTableJobsThirdVersion; }

bool HasFoundSlot() { return HostTables().Version(HostTable::FerruleJobs) > kTableJobsFourthVersion; }

bool HasCopyingSlot() { return HostTables().Version(HostTable::FerruleJobs) > kTableJobsFifthVersion; }

bool HasSignedSlot() { return HostTables().Version(HostTable::FerruleJobs) > kTableJobsSixthVersion; }

bool HasAppendSlots() { return HostTables().Version(HostTable::FerruleJobs) > kTableJobsSeventhVersion; }

bool HasForgetSlot() { return HostTables().Version(HostTable::FerruleJobs) > kTableJobsEighthVersion; }

template <class Call>
void Tell(bool possible, Call call) noexcept
{
    if (possible) hostcalls::Quietly(call);
}

}  // namespace

bool JobsTablePresent() { return HostTables().Has(HostTable::FerruleJobs); }

void JobRunStarts(int inputs) noexcept
{
    Tell(JobsTablePresent(), [&] { HostCall(HOST_SLOT(FerruleJobs, JobsRunStarts), inputs); });
}

void JobFileDone(const std::string& path, int outcome, const std::string& message) noexcept
{
    Tell(JobsTablePresent(),
         [&] { HostCall(HOST_SLOT(FerruleJobs, JobsFileDone), path.c_str(), outcome, message.c_str()); });
}

void JobRunEnds(int end, const std::string& message) noexcept
{
    Tell(JobsTablePresent(), [&] { HostCall(HOST_SLOT(FerruleJobs, JobsRunEnds), end, message.c_str()); });
}

std::optional<std::string> JobText() noexcept
{
    std::optional<std::string> text;
    Tell(HasJobSlots(), [&] {
        if (const char* job = HostCall(HOST_SLOT(FerruleJobs, JobsNextJob))) text = job;
    });
    return text;
}

std::optional<HostJobInput> NextJobInput() noexcept
{
    std::optional<HostJobInput> next;
    Tell(HasJobSlots(), [&] {
        JobInput input = {};
        input.size = sizeof(input);
        if (HostCall(HOST_SLOT(FerruleJobs, JobsNextInput), &input) == 0 || input.path == nullptr) return;
        next = {input.path, input.number, input.total, input.toDo == kJobInputFinalAction};
    });
    return next;
}

int JobMayAct(int act, const std::string& file, const std::string& target) noexcept
{
    int answer = HasJobSlots() ? kJobActRefused : kJobActAllowed;
    Tell(HasJobSlots(),
         [&] { answer = HostCall(HOST_SLOT(FerruleJobs, JobsMayAct), act, file.c_str(), target.c_str()); });
    return answer;
}

int JobPathState(const std::string& path) noexcept
{
    int state = kJobPathAsOnDisk;
    Tell(HasJobSlots(), [&] { state = HostCall(HOST_SLOT(FerruleJobs, JobsPathState), path.c_str()); });
    return state;
}

std::optional<std::string> JobDocumentLoss(PDDoc document) noexcept
{
    std::optional<std::string> loss;
    Tell(HasLossSlot(), [&] {
        if (const char* told = HostCall(HOST_SLOT(FerruleJobs, JobsDocumentLoss), document)) loss = told;
    });
    return loss;
}

std::optional<bool> JobDocumentSigned(PDDoc document) noexcept
{
    int answer = -1;
    Tell(HasSignedSlot(), [&] { answer = HostCall(HOST_SLOT(FerruleJobs, JobsDocumentSigned), document); });
    return answer < 0 ? std::nullopt : std::optional(answer != 0);
}

std::optional<bool> JobDocumentCertified(PDDoc document) noexcept
{
    int answer = -1;
    Tell(HasAppendSlots(), [&] { answer = HostCall(HOST_SLOT(FerruleJobs, JobsDocumentSigned), document); });
    return answer < 0 ? std::nullopt : std::optional(answer > 1);
}

bool JobNextSaveAppends(PDDoc document, bool only) noexcept
{
    bool told = false;
    Tell(HasAppendSlots(), [&] {
        HostCall(HOST_SLOT(FerruleJobs, JobsNextSaveAppends), document, only ? 1 : 0);
        told = true;
    });
    return told;
}

bool JobNextSaveForgets(PDDoc document) noexcept
{
    bool told = false;
    Tell(HasForgetSlot(), [&] {
        HostCall(HOST_SLOT(FerruleJobs, JobsNextSaveForgets), document);
        told = true;
    });
    return told;
}

std::optional<std::string> JobAppendObstacle(PDDoc document) noexcept
{
    std::optional<std::string> obstacle;
    Tell(HasAppendSlots(), [&] {
        if (const char* text = HostCall(HOST_SLOT(FerruleJobs, JobsAppendObstacle), document)) obstacle = text;
    });
    return obstacle;
}

std::optional<std::string> JobWrittenWhole(PDDoc document) noexcept
{
    std::optional<std::string> reason;
    Tell(HasAppendSlots(), [&] {
        if (const char* text = HostCall(HOST_SLOT(FerruleJobs, JobsWrittenWhole), document)) reason = text;
    });
    return reason;
}

void JobNextSaveIsNew(PDDoc document) noexcept
{
    Tell(HasNewSaveSlot(), [&] { HostCall(HOST_SLOT(FerruleJobs, JobsNextSaveIsNew), document); });
}

void JobFinalActionBegins() noexcept
{
    Tell(HasJobSlots(), [&] { HostCall(HOST_SLOT(FerruleJobs, JobsFinalActionBegins)); });
}

void JobReport(const std::string& json) noexcept
{
    Tell(HasJobSlots(), [&] { HostCall(HOST_SLOT(FerruleJobs, JobsReport), json.c_str()); });
}

void JobLogMark(int mark) noexcept
{
    Tell(HasJobSlots(), [&] { HostCall(HOST_SLOT(FerruleJobs, JobsLogMark), mark); });
}

void JobFileFound(const std::string& json) noexcept
{
    Tell(HasFoundSlot(), [&] { HostCall(HOST_SLOT(FerruleJobs, JobsFileFound), json.c_str()); });
}

CJobCopying::CJobCopying() noexcept
{
    Tell(HasCopyingSlot(), [] { HostCall(HOST_SLOT(FerruleJobs, JobsCopying), 1); });
}

CJobCopying::~CJobCopying()
{
    Tell(HasCopyingSlot(), [] { HostCall(HOST_SLOT(FerruleJobs, JobsCopying), 0); });
}
