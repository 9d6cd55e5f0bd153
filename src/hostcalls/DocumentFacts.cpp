#include "hostcalls/DocumentFacts.h"

#include "hostcalls/Cab.h"
#include "hostcalls/HostTables.h"
#include "hostcalls/Objects.h"

namespace {

ASBool HOSTCALL CountName(CosObj, CosObj, void* count)
{
    ++*static_cast<int*>(count);
    return 1;
}

ASBool HOSTCALL CountField(PDField, void* count)
{
    ++*static_cast<int*>(count);
    return 1;
}

}  // namespace

PdfVersion PdfVersionOf(PDDoc document)
{
    ASInt16 major = 0, minor = 0;
    HostCall(HOST_SLOT(PDModel, PDDocGetVersion), document, &major, &minor);
    return {major, minor};
}

int AttachmentCount(PDDoc document)
{
    static const CosObjEnumProc kCount = Callback(&CountName);
    const PDNameTree files = HostCall(HOST_SLOT(PDModel, PDDocGetNameTree), document, Atom("EmbeddedFiles"));
    int count = 0;
    if (HostCall(HOST_SLOT(PDModel, PDNameTreeIsValid), files))
        HostCall(HOST_SLOT(PDModel, PDNameTreeEnum), files, kCount, static_cast<void*>(&count));
    return count;
}

int FormFieldCount(PDDoc document)
{
    static const AFPDFieldEnumProc kCount = Callback(&CountField);
    const HFT forms = HostTables().Table(HostTable::Forms);
    if (!forms || !HostCall(HOST_SLOT(Forms, IsPDDocAcroForm), document)) return 0;
    constexpr ASBool kTerminalsOnly = 1, kMeansNothing = 0;
    int count = 0;
    HostCall(HOST_SLOT(Forms, AFPDDocLoadPDFields), document);
    HostCall(HOST_SLOT(Forms, AFPDDocEnumPDFields), document, kTerminalsOnly, kMeansNothing, kCount,
             static_cast<void*>(&count));
    return count;
}

bool HasReaderRights(PDDoc document)
{
    const CosObj rights = EntryOf(RootOf(document), "Perms");
    return HasEntry(rights, "UR3") || HasEntry(rights, "UR");
}
