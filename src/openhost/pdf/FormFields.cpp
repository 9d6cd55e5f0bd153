#include "openhost/pdf/FormFields.h"

#include <algorithm>
#include <set>
#include <vector>

#include <qpdf/QPDF.hh>

namespace openhost {

namespace {

QPDFObjectHandle FormOf(CPdfDocument& document) { return document.Library().getRoot().getKey("/AcroForm"); }

/// What stands below a field and has a part of a name is a field, and else a widget of the field above.
bool IsField(QPDFObjectHandle kid) { return kid.isDictionary() && kid.hasKey("/T"); }

std::vector<QPDFObjectHandle> FieldsBelow(QPDFObjectHandle field)
{
    std::vector<QPDFObjectHandle> below;
    QPDFObjectHandle kids = field.getKey("/Kids");
    if (kids.isArray())
        for (const QPDFObjectHandle& kid : kids.getArrayAsVector())
            if (IsField(kid)) below.push_back(kid);
    return below;
}

}  // namespace

bool HasFormFields(CPdfDocument& document)
{
    bool any = false;
    ForEachFormField(document, false, [&](const QPDFObjectHandle&) {
        any = true;
        return false;
    });
    return any;
}

void ForEachFormField(CPdfDocument& document, bool terminals, const std::function<bool(QPDFObjectHandle)>& visit)
{
    Guarded(document.Description(), PdfProblem::Damaged, [&] {
        QPDFObjectHandle form = FormOf(document);
        QPDFObjectHandle roots = form.isDictionary() ? form.getKey("/Fields") : QPDFObjectHandle::newNull();
        if (!roots.isArray()) return;
        std::set<QPDFObjGen> entered;
        std::vector<QPDFObjectHandle> waiting = roots.getArrayAsVector();
        std::reverse(waiting.begin(), waiting.end());
        while (!waiting.empty()) {
            QPDFObjectHandle field = waiting.back();
            waiting.pop_back();
            if (!field.isDictionary() || (field.isIndirect() && !entered.insert(field.getObjGen()).second)) continue;
            const std::vector<QPDFObjectHandle> below = FieldsBelow(field);
            if ((!terminals || below.empty()) && !visit(field)) return;
            waiting.insert(waiting.end(), below.rbegin(), below.rend());
        }
    });
}

}  // namespace openhost
