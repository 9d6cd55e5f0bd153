#include <cstring>

#include "openhost/core/Atoms.h"
#include "openhost/core/Extensions.h"
#include "openhost/core/Memory.h"
#include "openhost/core/Raise.h"
#include "openhost/core/Tables.h"

namespace openhost {

void OfferTableServerSlots(CTables& tables);

namespace {

// The four functions of the exception mechanism stand in the table as they are: they must not be wrapped in frames.

void HOSTCALL RaiseCode(ASErrorCode code)
{
    auto& frames = Part<CFrames>();
    // Raising the last error once more keeps its message; a handler passes errors on that way.
    if (code != frames.LastCode()) frames.Remember(code != 0 ? code : static_cast<ASErrorCode>(genErrGeneral), {});
    frames.LeaveThroughTop();
}

void HOSTCALL PushFrame(void* environment, restoreEnvironProc restore) { Part<CFrames>().Push(environment, restore); }

void HOSTCALL PopFrame() { Part<CFrames>().Pop(); }

ASErrorCode HOSTCALL LastErrorCode() { return Part<CFrames>().LastCode(); }

ASAtom AtomFromString(const char* text)
{
    Require(text != nullptr, "an atom needs a text");
    return AtomFromText(text);
}

ASBool AtomExists(const char* text, ASAtom* atom)
{
    Require(text != nullptr, "an atom needs a text");
    if (!Part<CAtoms>().Known(text)) return 0;
    if (atom) *atom = AtomFromText(text);
    return 1;
}

const char* AtomString(ASAtom atom) { return Part<CAtoms>().Text(atom); }

// Plug-ins are compiled for this host's calling convention, so that a callback is the procedure itself.
ASCallback CallbackCreate(ASExtension, void* procedure) { return procedure; }

void CallbackDestroy(ASCallback) {}

HFT FindTable(ASAtom name, ASVersion version)
{
    const std::string wanted = AtomText(name);
    auto& tables = Part<CTables>();
    for (int index = 0; index < static_cast<int>(Table::Count); ++index) {
        const auto table = static_cast<Table>(index);
        if (tables.Name(table) != wanted || !tables.Available(table)) continue;
        return tables.Version(table) >= version ? tables.Get(table) : nullptr;
    }
    return Part<CTableServers>().Find(wanted, version);
}

void* Configuration(ASAtom key)
{
    const std::string name = AtomText(key);
    if (name == "Product") return const_cast<char*>("Exchange-Pro");
    if (name == "CanEdit") return reinterpret_cast<void*>(std::uintptr_t{1});
    return reinterpret_cast<void*>(~std::uintptr_t{0});
}

ASExtension EnumExtensions(ASExtensionEnumProc procedure, void* clientData, ASBool onlyLiving)
{
    Require(procedure != nullptr, "no procedure to call");
    for (ASExtension extension : Part<CExtensions>().InOrder()) {
        if (onlyLiving && !Part<CExtensions>().At(extension).living) continue;
        if (!CallPlugIn(procedure, extension, clientData)) return extension;
    }
    return nullptr;
}

ASTArraySize ExtensionFileName(ASExtension extension, char* buffer, ASTArraySize size)
{
    const std::string& name = Part<CExtensions>().At(extension).fileName;
    if (buffer && size > 0) {
        const std::size_t length = std::min(name.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(buffer, name.data(), length);
        buffer[length] = 0;
    }
    return static_cast<ASTArraySize>(name.size());
}

ASAtom ExtensionName(ASExtension extension) { return Part<CExtensions>().At(extension).registeredName; }

/// An unknown code leaves the buffer as it was.
const char* ErrorString(ASErrorCode code, char* buffer, ASTArraySize size)
{
    Require(buffer != nullptr && size > 0, "no buffer for the error's text");
    const std::string text = ShortenedInMiddle(ErrorText(code), static_cast<std::size_t>(size) - 1);
    if (text.empty()) return buffer;
    std::memcpy(buffer, text.data(), text.size());
    buffer[text.size()] = 0;
    return buffer;
}

ASErrorCode RegisterErrorString(ASErrSeverity severity, const char* text)
{
    Require(text != nullptr, "an error needs a text");
    return RegisterErrorText(severity, text);
}

void OfferExceptionSlots(CTables& tables)
{
    tables.PutTyped<ASRaiseSlotProc>(Table::Core, kSlotASRaise, &RaiseCode);
    tables.PutTyped<ASPushExceptionFrameSlotProc>(Table::Core, kSlotASPushExceptionFrame, &PushFrame);
    tables.PutTyped<ASPopExceptionFrameSlotProc>(Table::Core, kSlotASPopExceptionFrame, &PopFrame);
    tables.PutTyped<ASGetExceptionErrorCodeSlotProc>(Table::Core, kSlotASGetExceptionErrorCode, &LastErrorCode);
}

}  // namespace

void OfferCoreSlots(CTables& tables)
{
    OfferExceptionSlots(tables);
    OFFER(tables, Core, ASAtomFromString, AtomFromString);
    OFFER(tables, Core, ASAtomExistsForString, AtomExists);
    OFFER(tables, Core, ASAtomGetString, AtomString);
    OFFER(tables, Core, ASCallbackCreate, CallbackCreate);
    OFFER(tables, Core, ASCallbackDestroy, CallbackDestroy);
    OFFER(tables, Core, ASExtensionMgrGetHFT, FindTable);
    OFFER(tables, Core, ASGetConfiguration, Configuration);
    OFFER(tables, Core, ASEnumExtensions, EnumExtensions);
    OFFER(tables, Core, ASExtensionGetFileName, ExtensionFileName);
    OFFER(tables, Core, ASExtensionGetRegisteredName, ExtensionName);
    OFFER(tables, AcroSupport, ASmalloc, AllocateShared);
    OFFER(tables, AcroSupport, ASrealloc, ReallocateShared);
    OFFER(tables, AcroSupport, ASfree, FreeShared);
    OFFER(tables, AcroSupport, ASGetErrorString, ErrorString);
    OFFER(tables, AcroSupport, ASRegisterErrorString, RegisterErrorString);
    OfferTableServerSlots(tables);
    for (const Table table : {Table::Core, Table::AcroSupport, Table::Cos, Table::PDModel, Table::PDFEditWrite,
                              Table::PDFEditRead, Table::PDSysFont, Table::PagePDEContent, Table::AcroView,
                              Table::PDSWrite, Table::PDSRead, Table::Win, Table::ASExtra, Table::PDMetadata})
        tables.SetAvailable(table, true);
}

}  // namespace openhost
