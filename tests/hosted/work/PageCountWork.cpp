// A second kind of work for a plug-in of the tests: tells how many pages each document has, and saves nothing. The
// setting "atLeast" lets documents with fewer pages fail; a file "not yet" beside a document stops the run before it.
#include "batchrun/WorkKinds.h"
#include "common/Log.h"
#include "engine/InputOpening.h"
#include "hostcalls/HostFrame.h"
#include "platform/Files.h"
#include "protocol/Json.h"

namespace {

class CPageCountWork final : public CWork {
public:
    explicit CPageCountWork(int atLeast) : m_atLeast(atLeast) {}

    std::string Load(CLogWriter&) override { return {}; }
    std::string Refusal(CLogWriter&) override { return {}; }
    std::vector<std::string> Extensions(CLogWriter&) const override { return {"pdf"}; }
    std::string InputPlaces(const ExecutorSettings& settings, const std::vector<std::string>&, Asking, CLogWriter&,
                            const TakePlace& take) const override
    {
        if (take) take(settings.alternativeInputPath);
        return {};
    }
    WorkFacts Facts(const PlanRequest&) const override
    {
        return {.noun = "page count", .noInputs = "There is nothing to count."};
    }
    void Begin(const WorkServices& services) override { m_log = &services.log; }
    ProcessedFile Process(const std::string& path, int) override
    {
        ProcessedFile file{.path = path, .outcome = FileOutcome::Failed};
        if (platform::FileExists(path + ".not yet")) {
            m_stopReason = file.message = "Not yet.";
            file.outcome = FileOutcome::Stopped;
            return file;
        }
        if (const auto error = CatchHostError([&] { Count(file); })) file.message = error->text;
        return file;
    }
    std::string StopReason() const override { return m_stopReason; }

private:
    void Count(ProcessedFile& file) const
    {
        CAcrobatDoc document;
        file.message = OpenInput(document, file.path, *m_log);
        if (!file.message.empty()) return;
        m_log->NameNumber("Pages", document.PageCount(), 1);
        if (document.PageCount() < m_atLeast)
            file.message = "Too few pages.";
        else
            file.outcome = FileOutcome::Saved;
    }

    int m_atLeast;
    CLogWriter* m_log = nullptr;
    std::string m_stopReason;
};

Expected<std::unique_ptr<CWork>> MakePageCount(const WorkDescription& description)
{
    const Json settings = ParseObject(description.settings).value_or(Json::object());
    return std::unique_ptr<CWork>(std::make_unique<CPageCountWork>(CountAt(settings, "atLeast")));
}

constexpr WorkKind kKinds[] = {{"page count", MakePageCount}};

}  // namespace

std::span<const WorkKind> WorkKinds() { return kKinds; }
