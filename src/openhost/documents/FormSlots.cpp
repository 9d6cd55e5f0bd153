#include <cstdint>
#include <vector>

#include "openhost/documents/Documents.h"
#include "openhost/documents/Objects.h"
#include "openhost/documents/Slots.h"
#include "openhost/pdf/FormFields.h"

namespace openhost {

namespace {

/// A field is a pointer for plug-ins. This one is the two numbers of the object, which no memory stands behind.
PDField FieldHandle(PDDoc document, QPDFObjectHandle field)
{
    const auto held = Part<CObjects>().Hold<CosObj>(document, field);
    const auto high = static_cast<std::uint64_t>(static_cast<std::uint32_t>(held.b)) << 32;
    return reinterpret_cast<PDField>(static_cast<std::uintptr_t>(high | static_cast<std::uint32_t>(held.a)));
}

ASBool HasForm(PDDoc document)
{
    CPdfDocument& pdf = DocumentAt(document).pdf;
    return Translated([&] { return HasFormFields(pdf); });
}

/// Nothing has to be loaded: fields are read when they are asked for.
void LoadFields(PDDoc document) { DocumentAt(document); }

void EnumerateFields(PDDoc document, ASBool terminals, ASBool /*means nothing*/, AFPDFieldEnumProc visit, void* data)
{
    CPdfDocument& pdf = DocumentAt(document).pdf;
    Require(visit != nullptr, "an enumeration needs a procedure");
    std::vector<QPDFObjectHandle> fields;
    Translated([&] {
        ForEachFormField(pdf, terminals != 0, [&](const QPDFObjectHandle& field) {
            fields.push_back(field);
            return true;
        });
    });
    for (const QPDFObjectHandle& field : fields)
        if (!CallPlugIn(visit, FieldHandle(document, field), data)) return;
}

}  // namespace

void OfferFormSlots(CTables& tables)
{
    OFFER(tables, Forms, IsPDDocAcroForm, HasForm);
    OFFER(tables, Forms, AFPDDocLoadPDFields, LoadFields);
    OFFER(tables, Forms, AFPDDocEnumPDFields, EnumerateFields);
}

}  // namespace openhost
