#include "openhost/program/OpenHost.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "openhost/app/AppState.h"
#include "openhost/app/Events.h"
#include "openhost/app/Slots.h"
#include "openhost/app/Views.h"
#include "openhost/catalog/Catalog.h"
#include "openhost/catalog/Slots.h"
#include "openhost/commands/Commands.h"
#include "openhost/commands/Handlers.h"
#include "openhost/commands/Slots.h"
#include "openhost/conversion/Converters.h"
#include "openhost/core/Extensions.h"
#include "openhost/documents/Documents.h"
#include "openhost/documents/Slots.h"
#include "openhost/files/Slots.h"
#include "openhost/jobs/Jobs.h"
#include "openhost/jobs/RunRecord.h"
#include "openhost/script/Slots.h"
#include "openhost/values/Slots.h"

namespace openhost {

namespace {

constexpr std::uint64_t kLongestWaitMs = 100;

bool QuitIsWanted() { return Part<AppWishes>().quit; }
bool AllIsDone() { return Part<CIdleProcedures>().AllCalled() && !Part<CRunRecord>().Running(); }

void WaitForNextCall(const EventLoopOptions& options)
{
    const std::uint64_t now = Part<AppClock>().milliseconds();
    const auto next = Part<CIdleProcedures>().NextDue().value_or(now + kLongestWaitMs);
    const std::uint64_t wait = next > now ? std::min(next - now, kLongestWaitMs) : 0;
    if (options.work) return options.work(wait);
    if (wait == 0) return;
    if (options.sleep)
        options.sleep(wait);
    else
        std::this_thread::sleep_for(std::chrono::milliseconds(wait));
}

int CodeWithoutQuit()
{
    if (Part<CRunRecord>().Told())
        Diagnose("the run is over, but the host was not asked to quit");
    else if (Part<CIdleProcedures>().AnyEverRegistered())
        Diagnose("the plug-ins have nothing more to do, but the host was not asked to quit");
    else
        Diagnose("nothing was scheduled: no plug-in has anything to do");
    return kExitBroken;
}

int CodeOfRuns()
{
    const auto& record = Part<CRunRecord>();
    if (record.Broken() || Part<CJobs>().Source().Broken()) return kExitBroken;
    return record.Saved() == record.Files() ? kExitFine : kExitSomeFailed;
}

}  // namespace

int RunEventLoop(const EventLoopOptions& options)
{
    while (!QuitIsWanted()) {
        Part<CIdleProcedures>().CallDue();
        if (QuitIsWanted()) break;
        if (!options.stay && AllIsDone()) return CodeWithoutQuit();
        WaitForNextCall(options);
    }
    return CodeOfRuns();
}

namespace {

void OfferAllSlots(CTables& tables)
{
    OfferCoreSlots(tables);
    OfferValuesSlots(tables);
    OfferFilesSlots(tables);
    OfferDocumentsSlots(tables);
    OfferAppSlots(tables);
    OfferConversionSlots(tables);
    OfferScriptSlots(tables);
    OfferCommandsSlots(tables);
    OfferCatalogSlots(tables);
    OfferJobsTable();
}

void SayLoaded()
{
    for (ASExtension extension : Part<CExtensions>().InOrder()) {
        const CExtension& plugIn = Part<CExtensions>().At(extension);
        if (plugIn.living) Diagnose("loaded: " + AtomText(plugIn.registeredName) + " from " + plugIn.fileName);
    }
}

void SayThrough(const std::shared_ptr<CJobSource>& source)
{
    Part<CDiagnostics>().SetListener([source](std::string_view remark) {
        if (!source->Remark(remark)) SayOnStandardError(remark);
    });
}

/// Whatever plug-ins left open; nothing of it is saved.
void CloseViews()
{
    const auto open = Part<CViews>().All();
    for (AVDoc view : open) {
        try {
            Part<CViews>().Close(view, true);
        } catch (const CHostRaise& raise) {
            Diagnose("a document view could not be closed: " + raise.Message());
        }
    }
}

ProtectionState ProtectionOf(const SecurityInfo& security)
{
    using Method = ProtectionState::Method;
    if (!security.encrypted) return {};
    const Method method = security.method == 7                           ? Method::Aes256
                          : security.method == 5 || security.method == 6 ? Method::Aes128
                          : security.method == 2                         ? Method::Rc4
                                                                         : Method::Other;
    return {method, security.hasUser};
}

}  // namespace

COpenHost::COpenHost(OpenHostOptions options) : m_options(std::move(options)), m_host(std::make_unique<CHost>())
{
    Prepare();
}

COpenHost::~COpenHost() { ShutDown(); }

/// Without jobs there is nobody to tell what becomes of documents.
void COpenHost::TakeJobs()
{
    Part<CJobs>().TakeFrom(m_options.jobs);
    DocumentEvents& events = Part<CDocuments>().events;
    events.didBreakSignatures = [](PDDoc) { Part<CJobs>().Ledger().SignaturesBroken(); };
    events.didLookAtSecurity = [](const std::string& path, const SecurityInfo& security) {
        Part<CJobs>().Ledger().Read(path, ProtectionOf(security));
    };
    events.willProtect = [](const std::string& path, const SecurityInfo& security) {
        Part<CJobs>().Ledger().WillWrite(path, ProtectionOf(security));
    };
}

void COpenHost::Prepare()
{
    if (m_options.jobs) SayThrough(m_options.jobs);
    if (m_options.diagnostics) Part<CDiagnostics>().SetListener(m_options.diagnostics);
    if (m_options.clockMilliseconds) Part<AppClock>().milliseconds = m_options.clockMilliseconds;
    Part<AppSettings>().majorVersion = m_options.majorVersion;
    Part<AppSettings>().quitItem = m_options.quitItem;
    Part<CRunRecord>().verbose = m_options.verbose;
    Part<CRunRecord>().silent = !m_options.sayRun;
    if (m_options.jobs) TakeJobs();
    Part<CDocuments>().passwordCandidates = m_options.passwordCandidates;
    if (!m_options.textCacheFolder.empty())
        Part<CDocuments>().textCache = std::make_unique<CTextCache>(m_options.textCacheFolder);
    Part<CCatalog>().readers = m_options.textReaders;
    OfferAllSlots(Tables());
    if (m_options.afterOffering) m_options.afterOffering(Tables());
    PrepareApplication();
    RegisterBuiltInConverters();
    RegisterBuiltInCommands();
}

bool COpenHost::OpenWindow(std::string& problem)
{
    m_content = std::make_unique<CHostContent>();
    m_window = MakeHostWindow(*m_content, problem);
    Part<WindowPlace>().window = m_window.get();
    return m_window != nullptr;
}

bool COpenHost::StartUp()
{
    m_up = true;
    for (const PlugInSource& source : m_options.plugIns) m_plugIns.Load(source);
    m_plugIns.RunStages();
    Part<CCommandHandlers>().Start();
    if (m_options.verbose) SayLoaded();
    return m_plugIns.Living() > 0;
}

int COpenHost::Run()
{
    Notify(AVAppDidInitializeNSEL);
    EventLoopOptions loop;
    loop.stay = m_options.stay || m_window;
    loop.sleep = m_options.sleep;
    if (m_window) loop.work = [this](std::uint64_t wait) { m_window->Work(static_cast<unsigned>(wait)); };
    for (const std::string& file : m_options.files) CHostContent::Open(file);
    return RunEventLoop(loop);
}

void COpenHost::ShutDown()
{
    if (!m_up) return;
    m_up = false;
    Notify(AVAppWillQuitNSEL);
    CloseViews();
    Part<CCommands>().DestroyAll();
    Part<CCommandHandlers>().Terminate();
    m_plugIns.Unload();
    Part<WindowPlace>().window = nullptr;
    m_window.reset();
}

}  // namespace openhost
