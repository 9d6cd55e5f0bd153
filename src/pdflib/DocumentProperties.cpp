#include "pdflib/DocumentProperties.h"

#include <iterator>

#include "base/Text.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/DocumentFacts.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/Information.h"
#include "platform/Clock.h"
#include "platform/Files.h"
#include "platform/NarrowText.h"
#include "protocol/Metadata.h"

namespace {

std::string VersionText(PDDoc document)
{
    const PdfVersion version = PdfVersionOf(document);
    return FormatText("%d.%d", version.major, version.minor);
}

std::string SizeText(const std::string& path)
{
    const auto stamp = platform::StampOf(path);
    return stamp ? std::to_string(stamp->size) : std::string();
}

std::string ModifiedText(const std::string& path)
{
    const auto stamp = platform::StampOf(path);
    const std::string text = stamp ? platform::LocalTimeText(stamp->modifiedNanoseconds) : std::string();
    return text.empty() ? "Unknown" : platform::Utf8FromNarrow(text);
}

struct Restriction {
    unsigned object, operation;
    const char* text;
};

constexpr Restriction kRestrictions[] = {
    {PDPermReqObjDoc, PDPermReqOprModify, "No Document Editing"},
    {PDPermReqObjDoc, PDPermReqOprSecure, "No Changing Security"},
    {PDPermReqObjDoc, PDPermReqOprPrintHigh, "No HiRes Printing"},
    {PDPermReqObjDoc, PDPermReqOprPrintLow, "No Printing"},
    {PDPermReqObjBookmark, PDPermReqOprModify, "No Bookmark Editing"},
    {PDPermReqObjPage, PDPermReqOprInsert, "No Page Inserting"},
    {PDPermReqObjPage, PDPermReqOprDelete, "No Page Deleting"},
    {PDPermReqObjForm, PDPermReqOprModify, "No Form Editing"},
};

std::string RestrictionsOf(PDDoc document)
{
    std::string texts;
    const auto add = [&](const char* text) { texts += (texts.empty() ? "" : ",") + std::string(text); };
    for (const Restriction& restriction : kRestrictions)
        if (!PermissionGranted(document, restriction.object, restriction.operation)) add(restriction.text);
    if (HasReaderRights(document)) add("Enables Extended Features in Acrobat Reader");
    return texts;
}

using PropertyText = std::string (*)(const CAcrobatDoc& document);

/// In the order of the columns behind those of the document information.
constexpr PropertyText kFactTexts[] = {
    [](const CAcrobatDoc& document) { return VersionText(document.Document()); },
    [](const CAcrobatDoc& document) { return SizeText(document.FullPath()); },
    [](const CAcrobatDoc& document) { return ModifiedText(document.FullPath()); },
    [](const CAcrobatDoc& document) { return std::to_string(document.PageCount()); },
    [](const CAcrobatDoc& document) { return std::to_string(AttachmentCount(document.Document())); },
    [](const CAcrobatDoc& document) { return std::to_string(FormFieldCount(document.Document())); },
    [](const CAcrobatDoc& document) { return RestrictionsOf(document.Document()); }};
static_assert(kFirstInfoColumn + kInfoColumns + std::size(kFactTexts) == kPropertyColumns.size());

template <class Read>
std::string TextOrNothing(Read read)
{
    std::string text;
    (void)CatchHostError([&] { text = read(); });
    return text;
}

}  // namespace

std::vector<std::string> ReadDocumentProperties(const CAcrobatDoc& document, const std::vector<std::string>& keys)
{
    const auto entry = [&](const std::string& key) {
        return TextOrNothing([&] { return InfoEntry(document.Document(), key); });
    };
    std::vector<std::string> texts{platform::Utf8FromNarrow(document.FullPath())};
    for (std::size_t column = 0; column < kInfoColumns; ++column)
        texts.push_back(entry(kPropertyColumns[kFirstInfoColumn + column]));
    for (const PropertyText text : kFactTexts) texts.push_back(TextOrNothing([&] { return text(document); }));
    for (const std::string& key : keys) texts.push_back(entry(key));
    return texts;
}
