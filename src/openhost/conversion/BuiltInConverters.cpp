#include <cstring>
#include <filesystem>

#include "openhost/conversion/Converters.h"
#include "openhost/core/Memory.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "openhost/pdf/Conversions.h"
#include "openhost/values/Text.h"

namespace openhost {

namespace {

/// The records of the host's own converters. The descriptions belong to the host's texts.
struct BuiltInRecords {
    AVFileDescRec jpegFiles[3] = {};
    AVFileDescRec textFiles[1] = {};
    AVConversionToPDFHandlerRec fromJpeg = {};
    AVConversionFromPDFHandlerRec toText = {};
};

template <std::size_t size>
void Write(char (&array)[size], std::string_view text)
{
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(array, text.data(), length);
    array[length] = 0;
}

bool MayReplace(AVConversionFlags flags) { return (flags & kAVConversionDontOverwrite) == 0; }

AVConversionStatus ConvertJpeg(ASCab, AVConversionFlags, ASPathName source, ASFileSys fileSys, PDDoc* made,
                               AVStatusMonitorProcs, AVConversionClientData)
{
    RequireFileSys(fileSys);
    Require(made != nullptr, "no place for the converted document");
    const std::string path = PathAt(source).Native();
    *made = Part<CDocuments>().Adopt(Translated([&] { return JpegToPdf(path); }));
    return kAVConversionSuccess;
}

AVConversionStatus ConvertToText(ASCab, AVConversionFlags flags, PDDoc document, ASPathName target, ASFileSys fileSys,
                                 AVStatusMonitorProcs monitor, AVConversionClientData)
{
    RequireFileSys(fileSys);
    TextOutput output;
    output.path = PathAt(target).Native();
    output.source = RealFileOf(DocumentAt(document));
    output.mustNotExist = !MayReplace(flags);
    if (const auto cancel = monitor ? MemberOf(monitor, &AVStatusMonitorProcsRec::cancelProc) : nullptr)
        output.cancelled = [cancel, data = MemberOf(monitor, &AVStatusMonitorProcsRec::cancelProcClientData)] {
            return CallPlugIn(cancel, data) != 0;
        };
    try {
        PdfToText(DocumentAt(document).pdf, output);
    } catch (const CPdfError& error) {
        if (error.Problem() == PdfProblem::Cancelled) return kAVConversionCancelled;
        RaisePdfError(error);
    }
    return kAVConversionSuccess;
}

void DescribeJpeg(BuiltInRecords& records)
{
    constexpr const char* kExtensions[] = {"jpg", "jpeg", "jpe"};
    for (std::size_t index = 0; index < std::size(kExtensions); ++index)
        Write(records.jpegFiles[index].extension, kExtensions[index]);
    auto& record = records.fromJpeg;
    record.size = sizeof(record);
    record.convFilter = {NewText("JPEG"), records.jpegFiles, std::size(kExtensions)};
    Write(record.uniqueID, "com.adobe.acrobat.jpeg");
    record.canDoSync = 1;
    record.convert = &CSlot<&ConvertJpeg>::Entry;
}

void DescribeText(BuiltInRecords& records)
{
    Write(records.textFiles[0].extension, "txt");
    auto& record = records.toText;
    record.size = sizeof(record);
    record.convFilter = {NewText("Text (Plain)"), records.textFiles, 1};
    Write(record.uniqueID, "com.adobe.acrobat.plain-text");
    record.canDoSync = 1;
    record.convert = &CSlot<&ConvertToText>::Entry;
}

}  // namespace

void RegisterBuiltInConverters()
{
    auto& records = Part<BuiltInRecords>();
    DescribeJpeg(records);
    DescribeText(records);
    Part<CConverters>().Register(&records.fromJpeg);
    Part<CConverters>().Register(&records.toText);
}

}  // namespace openhost
