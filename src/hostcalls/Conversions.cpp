#include "hostcalls/Conversions.h"

#include <cstring>
#include <exception>

#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "hostcalls/HostTables.h"

namespace {

template <std::size_t size>
std::string FixedText(const char (&text)[size])
{
    return std::string(text, strnlen(text, size));
}

std::string ExtensionOf(const AVFileDescRec& file)
{
    const std::string text = FixedText(file.extension);
    return text.starts_with('.') ? text.substr(1) : text;
}

template <class Handler>
ConverterInfo<Handler> Describe(Handler handler)
{
    ConverterInfo<Handler> info{handler, FixedText(handler->uniqueID), {}, {}};
    const AVFileFilterRec& filter = handler->convFilter;
    info.description = NarrowFromText(filter.filterDescription);
    for (int i = 0; filter.fileDescs && i < filter.numFileDescs; ++i)
        info.extensions.push_back(ExtensionOf(filter.fileDescs[i]));
    return info;
}

template <class Handler>
struct ConverterCollector {
    std::vector<ConverterInfo<Handler>> converters;
    std::exception_ptr failure;
};

/// The host calls this for each converter; false ends the walk. A failure waits until the host has returned.
template <class Handler>
ASBool HOSTCALL Collect(Handler handler, AVConversionEnumProcData data)
{
    auto& collector = *reinterpret_cast<ConverterCollector<Handler>*>(data);
    try {
        if (handler) collector.converters.push_back(Describe(handler));
        return 1;
    } catch (...) {
        collector.failure = std::current_exception();
        return 0;
    }
}

template <class Handler, class Enumerate, class Procedure>
std::vector<ConverterInfo<Handler>> Enumerated(Enumerate enumerate, Procedure procedure)
{
    ConverterCollector<Handler> collector;
    HostCall(enumerate, procedure, reinterpret_cast<AVConversionEnumProcData>(&collector));
    if (collector.failure) std::rethrow_exception(collector.failure);
    return std::move(collector.converters);
}

}  // namespace

std::vector<ToPdfConverter> EnumerateToPdf()
{
    static const AVConversionToPDFEnumProc kCollect = Callback(&Collect<AVConversionToPDFHandler>);
    return Enumerated<AVConversionToPDFHandler>(HOST_SLOT(AcroView, AVConversionEnumToPDFConverters), kCollect);
}

std::vector<FromPdfConverter> EnumerateFromPdf()
{
    static const AVConversionFromPDFEnumProc kCollect = Callback(&Collect<AVConversionFromPDFHandler>);
    return Enumerated<AVConversionFromPDFHandler>(HOST_SLOT(AcroView, AVConversionEnumFromPDFConverters), kCollect);
}

ConversionResult ConvertToPdf(AVConversionToPDFHandler handler, const std::string& path)
{
    const CHostPath hostPath = CHostPath::FromNative(path);
    PDDoc converted = nullptr;
    ConversionResult result;
    result.status = HostCall(HOST_SLOT(AcroView, AVConversionConvertToPDFWithHandler), handler, nullptr,
                             AVConversionFlags{kAVConversionNoFlags}, hostPath.Get(), nullptr, &converted, nullptr);
    if (result.status == kAVConversionSuccess) result.document = CHostDocument(converted);
    return result;
}

AVConversionStatus ConvertFromPdf(AVConversionFromPDFHandler handler, PDDoc document, const std::string& path,
                                  AVConversionFlags flags)
{
    const CHostPath hostPath = CHostPath::FromNative(path);
    return HostCall(HOST_SLOT(AcroView, AVConversionConvertFromPDFWithHandler), handler, nullptr, flags, document,
                    hostPath.Get(), nullptr, nullptr);
}
