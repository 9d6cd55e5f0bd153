#include <algorithm>

#include "openhost/pdf/Conversions.h"
#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/OutputFile.h"
#include "openhost/pdf/PdfGuard.h"

namespace openhost {
namespace {

std::string TrimmedEnd(std::string text)
{
    text.erase(text.find_last_not_of("\f\n") + 1);
    if (!text.empty()) text += '\n';
    return text;
}

}  // namespace

void LoadPresentState(CTextEngine& engine, CPdfDocument& document)
{
    if (document.FileShowsPresentState()) {
        engine.LoadFile(document.Path(), document.PasswordBytes());
    } else {
        engine.LoadMemory(document.WriteToMemory(), document.Description());
    }
}

void PdfToText(CPdfDocument& document, const TextOutput& output)
{
    if (!document.Allows(PdfRight::Copy)) {
        throw CPdfError(PdfProblem::NotPermitted, document.Description(), "copying text is not permitted");
    }
    Guarded(output.path, PdfProblem::Internal, [&] {
        const auto existing = output.mustNotExist ? platform::Existing::Fail : platform::Existing::Replace;
        COutputFile file(output.path, existing, output.source.empty() ? document.Path() : output.source);
        const auto engine = NewTextEngine();
        LoadPresentState(*engine, document);
        // A damaged document may claim pages that nobody can read.
        const int pages = std::min(engine->PageCount(), document.PageCount());
        for (int page = 0; page < pages; ++page) {
            if (output.cancelled && output.cancelled()) {
                throw CPdfError(PdfProblem::Cancelled, output.path, "the conversion was cancelled");
            }
            const std::string text = (page > 0 ? "\f" : "") + TrimmedEnd(engine->PageText(page));
            file.Write(text.data(), text.size());
            file.Check();
        }
        file.Commit();
    });
}

}  // namespace openhost
