// Steps of another maker, each with one flaw, written on the bare interface.
//
// A handler's name tells what it does: "T:<How>In<Stage>" fails in one callback (raise, answer an error, answer
// cancelled, throw a C++ exception); the others are listed at kOwnWays. Every callback adds a line "<handler>
// <stage>" to the file that FOREIGN_STEPS_TRACE names. FOREIGN_STEPS_FILE is a path that a step may save to,
// FOREIGN_STEPS_ARRIVES the input that one of them replaces. The step that
// FOREIGN_STEPS_REPLACED names behaves like the one that FOREIGN_STEPS_BY names, whoever had it before.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "hostapi/HostInterface.h"

namespace {

HFT g_core, g_support, g_view, g_pdModel, g_extra;

#define CALL(table, name, ...) (reinterpret_cast<name##SlotProc>((table)[kSlot##name])(__VA_ARGS__))

std::vector<std::string> Words(const char* text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

const char* const kHows[] = {"Raise", "Error", "Cancel", "Throw"};
const std::vector<std::string> kStages = Words(
    "Initialize RegisterCommands Created SetParams GetParams GetProps Work Cancel Reset PreflightSequence "
    "PreflightFile PostflightFile PostflightSequence");
const std::vector<std::string> kOwnWays = Words(
    "T:Plain T:Other T:WorksThreeTimes T:ContinuesInTmp T:ClosesDoc T:ClosesView T:LeavesThingsOpen "
    "T:NeverEnds T:TurnsOnPageCount T:NewVersionArrives COMP:AddWatermark HeadFootCmd");

ASAtom AtomOf(const std::string& text) { return CALL(g_core, ASAtomFromString, text.c_str()); }

std::string Setting(const char* name)
{
    const char* const value = std::getenv(name);
    return value ? value : "";
}

std::string TextOf(ASAtom atom)
{
    const std::string name = CALL(g_core, ASAtomGetString, atom);
    return name == Setting("FOREIGN_STEPS_REPLACED") ? Setting("FOREIGN_STEPS_BY") : name;
}

bool IsIn(std::string_view name, std::string_view stage) { return name.ends_with("In" + std::string(stage)); }

void Trace(const std::string& name, const char* stage)
{
    if (const char* path = std::getenv("FOREIGN_STEPS_TRACE"))
        std::ofstream(path, std::ios::app) << name << ' ' << stage << '\n';
}

void RaiseNow() { CALL(g_core, ASRaise, genErrBadParm); }

/// Notes the stage and fails there when the name says so; otherwise answers `usual`. No object with a destructor may
/// be alive when it raises.
AVCommandStatus Reach(const std::string& name, const char* stage, AVCommandStatus usual)
{
    Trace(name, stage);
    if (!IsIn(name, stage)) return usual;
    if (name.starts_with("T:Error")) return kAVCommandInError;
    if (name.starts_with("T:Cancel")) return kAVCommandCanceled;
    if (name.starts_with("T:Throw")) throw std::runtime_error("thrown in " + std::string(stage));
    return -1;
}

std::string NameOf(AVCommand command) { return TextOf(CALL(g_view, AVCommandGetName, command)); }

AVCommandStatus At(AVCommand command, const char* stage, AVCommandStatus usual)
{
    const AVCommandStatus answer = Reach(NameOf(command), stage, usual);
    if (answer == -1) RaiseNow();
    return answer;
}

ASBool HOSTCALL Initialize(ASAtom name)
{
    const AVCommandStatus answer = Reach(TextOf(name), "Initialize", kAVCommandDone);
    if (answer == -1) RaiseNow();
    return answer == kAVCommandDone;
}

void HOSTCALL RegisterCommands(ASAtom name)
{
    if (Reach(TextOf(name), "RegisterCommands", kAVCommandDone) == -1) RaiseNow();
}

void HOSTCALL Created(AVCommand command) { At(command, "Created", kAVCommandDone); }
void HOSTCALL Destroy(AVCommand command) { At(command, "Destroy", kAVCommandDone); }
AVCommandStatus HOSTCALL SetParams(AVCommand command, ASCab) { return At(command, "SetParams", kAVCommandReady); }
void HOSTCALL GetParams(AVCommand command, ASCab) { At(command, "GetParams", kAVCommandDone); }

/// A step that fails in Reset must first be in need of one: describing it puts it in error.
void HOSTCALL GetProps(AVCommand command, ASCab props)
{
    if (IsIn(NameOf(command), "Reset") && CALL(g_extra, ASCabKnown, props, kAVCommandKeyParamsDesc)) RaiseNow();
    At(command, "GetProps", kAVCommandDone);
}

void ContinueInTmp(PDDoc document)
{
    ASPathName path = CALL(g_support, ASFileSysCreatePathName, nullptr, AtomOf("Cstring"),
                           std::getenv("FOREIGN_STEPS_FILE"), nullptr);
    CALL(g_pdModel, PDDocSave, document, PDSaveFull, path, nullptr, nullptr, nullptr);
}

/// Somebody puts a new version in the place of the input.
void ReplaceInput()
{
    const std::string path = Setting("FOREIGN_STEPS_ARRIVES");
    std::ofstream(path + ".part", std::ios::binary) << "a new version";
    std::rename((path + ".part").c_str(), path.c_str());
}

void LeaveThingsOpen(PDDoc document)
{
    static_cast<void>(CALL(g_extra, ASCabNew));
    CALL(g_pdModel, PDDocAcquire, document);
}

/// What ends a process, by the number of pages, so that one sequence meets good and bad documents.
void TurnOnPageCount(PDDoc document)
{
    static std::vector<std::string> kept;
    const ASInt32 pages = CALL(g_pdModel, PDDocGetNumPages, document);
    while (pages == 7) std::this_thread::sleep_for(std::chrono::seconds(1));
    if (pages == 8) std::raise(SIGSEGV);
    while (pages == 9) kept.emplace_back(std::size_t{16} << 20, 'x');
}

AVCommandStatus WorkOf(const std::string& name, AVCommand command)
{
    static int calls = 0;
    PDDoc document = CALL(g_view, AVCommandGetPDDoc, command);
    if (name == "T:WorksThreeTimes") return ++calls % 3 == 0 ? kAVCommandDone : kAVCommandWorking;
    if (name == "T:NeverEnds") return kAVCommandWorking;
    if (name == "T:ContinuesInTmp") ContinueInTmp(document);
    if (name == "T:NewVersionArrives") ReplaceInput();
    if (name == "T:ClosesDoc") CALL(g_pdModel, PDDocClose, document);
    if (name == "T:ClosesView") CALL(g_view, AVDocClose, CALL(g_view, AVCommandGetAVDoc, command), 1);
    if (name == "T:LeavesThingsOpen") LeaveThingsOpen(document);
    if (name == "T:TurnsOnPageCount") TurnOnPageCount(document);
    if (IsIn(name, "Cancel")) return kAVCommandInError;  // so that it is cancelled
    return kAVCommandDone;
}

AVCommandStatus HOSTCALL Work(AVCommand command)
{
    const AVCommandStatus answer = At(command, "Work", kAVCommandDone);
    return answer == kAVCommandDone ? WorkOf(NameOf(command), command) : answer;
}

AVCommandStatus HOSTCALL Cancel(AVCommand command) { return At(command, "Cancel", kAVCommandCanceled); }
AVCommandStatus HOSTCALL Reset(AVCommand command) { return At(command, "Reset", kAVCommandReady); }
AVCommandStatus HOSTCALL PreflightSequence(AVCommand command)
{
    return At(command, "PreflightSequence", kAVCommandReady);
}
AVCommandStatus HOSTCALL PreflightFile(AVCommand command, PDDoc)
{
    return At(command, "PreflightFile", kAVCommandReady);
}
AVCommandStatus HOSTCALL PostflightFile(AVCommand command, PDDoc)
{
    return At(command, "PostflightFile", kAVCommandDone);
}
AVCommandStatus HOSTCALL PostflightSequence(AVCommand command)
{
    return At(command, "PostflightSequence", kAVCommandDone);
}

AVCommandHandlerRec Record(ASSize_t size)
{
    return {size,
            &Initialize,
            nullptr,
            &RegisterCommands,
            &Created,
            &Destroy,
            &SetParams,
            &GetParams,
            &GetProps,
            nullptr,
            &Work,
            &Cancel,
            &Reset,
            &PreflightSequence,
            &PreflightFile,
            &PostflightFile,
            &PostflightSequence,
            nullptr};
}

AVCommandHandlerRec g_handler = Record(sizeof(AVCommandHandlerRec));
AVCommandHandlerRec g_withoutFlights = Record(offsetof(AVCommandHandlerRec, PreflightSequence));
AVCommandHandlerRec g_withoutReserve = Record(offsetof(AVCommandHandlerRec, reserved));

void Register(const std::string& name, AVCommandHandlerRec& record)
{
    CALL(g_view, AVAppRegisterCommandHandler, AtomOf(name), &record);
}

HFT Table(const char* name, ASVersion version) { return CALL(g_core, ASExtensionMgrGetHFT, AtomOf(name), version); }

ASBool HOSTCALL Import()
{
    g_support = Table(HOST_TABLE_ACROSUPPORT, 0x00060000);
    g_view = Table(HOST_TABLE_ACROVIEW, 0x00060000);
    g_pdModel = Table(HOST_TABLE_PDMODEL, 0x00060000);
    g_extra = Table(HOST_TABLE_ASEXTRA, 0x00060000);
    for (const std::string& stage : kStages)
        for (const char* how : kHows) Register("T:" + std::string(how) + "In" + stage, g_handler);
    for (const std::string& name : kOwnWays) Register(name, g_handler);
    Register("T:WithoutFlights", g_withoutFlights);
    Register("T:WithoutReserve", g_withoutReserve);
    return 1;
}

/// Not before the others have offered their steps.
ASBool HOSTCALL Replace()
{
    const std::string name = Setting("FOREIGN_STEPS_REPLACED");
    if (!name.empty()) Register(name, g_handler);
    return 1;
}

ASBool HOSTCALL Handshake(ASUns32, void* data)
{
    auto& handshake = *static_cast<PIHandshakeData_V0200*>(data);
    handshake.extensionName = AtomOf("T:ForeignSteps");
    handshake.importReplaceAndRegisterCallback = reinterpret_cast<ASCallback>(&Import);
    handshake.initCallback = reinterpret_cast<ASCallback>(&Replace);
    return 1;
}

ASBool HOSTCALL Setup(ASUns32, void* data)
{
    auto& sdk = *static_cast<PISDKData_V0200*>(data);
    g_core = sdk.coreHFT;
    sdk.handshakeCallback = reinterpret_cast<ASCallback>(&Handshake);
    return 1;
}

}  // namespace

extern "C" HOSTEXPORT ASBool HOSTCALL PlugInMain(ASUns32 hostVersion, ASUns32* version, PISetupSDKProcType* setup,
                                                 void*)
{
    *version = hostVersion;
    *setup = &Setup;
    return 1;
}
