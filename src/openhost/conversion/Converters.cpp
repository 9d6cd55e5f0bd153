#include "openhost/conversion/Converters.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "openhost/app/Alerts.h"
#include "openhost/app/AppState.h"
#include "openhost/core/Memory.h"
#include "openhost/core/Raise.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "openhost/values/Cabinet.h"
#include "platform/NarrowText.h"

namespace openhost {

namespace {

template <class Record>
bool Contains(const std::vector<Record>& list, const void* converter)
{
    return std::any_of(list.begin(), list.end(), [&](const Record& one) { return one.converter == converter; });
}

bool EqualIgnoringCase(std::string_view one, std::string_view other)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [&](char a, char b) { return lower(a) == lower(b); });
}

/// A text in an array of fixed size that need not be ended.
template <std::size_t size>
std::string_view Text(const char (&array)[size])
{
    return {array, strnlen(array, size)};
}

bool TakesExtension(const AVFileFilterRec& filter, std::string_view extension)
{
    for (int index = 0; filter.fileDescs && index < filter.numFileDescs; ++index)
        if (EqualIgnoringCase(Text(filter.fileDescs[index].extension), extension)) return true;
    return false;
}

/// The order's settings, or the converter's defaults, which live as long as this.
class CSettings {
public:
    template <class Record>
    CSettings(const Record& converter, ASCab ordered) : m_settings(ordered)
    {
        if (ordered || !converter.defaultSettings) return;
        m_own = COwnedCab(CallPlugIn(converter.defaultSettings, static_cast<const char*>(converter.uniqueID),
                                     MemberOf(&converter, &Record::clientData)));
        m_settings = m_own.Get();
    }
    ASCab Get() const { return m_settings; }

private:
    COwnedCab m_own;
    ASCab m_settings;
};

template <class Record>
bool CanWork(const Record& converter, AVConversionFlags flags)
{
    return converter.convert && (converter.canDoSync || (flags & kAVConversionAsyncOkay));
}

std::string Unable(const char* uniqueId)
{
    return std::string("the converter \"") + uniqueId + "\" cannot work while the caller waits";
}

}  // namespace

void CConverters::Register(AVConversionToPDFHandler converter)
{
    Require(converter && converter->size >= offsetof(AVConversionToPDFHandlerRec, append), "unusable converter");
    if (!Contains(m_toPdf, converter)) m_toPdf.push_back({converter, Part<ActiveExtension>().current});
}

void CConverters::Register(AVConversionFromPDFHandler converter)
{
    Require(converter && converter->size >= offsetof(AVConversionFromPDFHandlerRec, clientData),
            "unusable converter");
    if (!Contains(m_fromPdf, converter)) m_fromPdf.push_back({converter, Part<ActiveExtension>().current});
}

void CConverters::DropOwner(ASExtension owner)
{
    std::erase_if(m_toPdf, [&](const auto& one) { return one.owner == owner; });
    std::erase_if(m_fromPdf, [&](const auto& one) { return one.owner == owner; });
}

std::vector<AVConversionToPDFHandler> CConverters::ToPdf() const
{
    std::vector<AVConversionToPDFHandler> all;
    for (const auto& one : m_toPdf) all.push_back(one.converter);
    return all;
}

std::vector<AVConversionFromPDFHandler> CConverters::FromPdf() const
{
    std::vector<AVConversionFromPDFHandler> all;
    for (const auto& one : m_fromPdf) all.push_back(one.converter);
    return all;
}

AVConversionToPDFHandler CConverters::ToPdfFor(std::string_view extension) const
{
    for (const auto& one : m_toPdf)
        if (TakesExtension(one.converter->convFilter, extension)) return one.converter;
    return nullptr;
}

AVConversionFromPDFHandler CConverters::FromPdfNamed(std::string_view uniqueId) const
{
    for (const auto& one : m_fromPdf)
        if (Text(one.converter->uniqueID) == uniqueId) return one.converter;
    return nullptr;
}

AVConversionStatus CConverters::Failed(std::string reason)
{
    SayAlert(reason);
    m_lastFailure = std::move(reason);
    return kAVConversionFailed;
}

AVConversionStatus CConverters::Convert(AVConversionToPDFHandler converter, const ConversionOrder& order,
                                        ASPathName source, PDDoc* made)
{
    Require(Contains(m_toPdf, converter), "not a registered converter to PDF");
    Require(made != nullptr, "no place for the converted document");
    const std::string path = PathAt(source).Native();
    *made = nullptr;
    m_lastFailure.clear();
    m_lastFailureCode = 0;
    if (!CanWork(*converter, order.flags)) return Failed(path + ": " + Unable(converter->uniqueID));
    PDDoc document = nullptr;
    AVConversionStatus status = kAVConversionFailed;
    try {
        const CSettings settings(*converter, order.settings);
        status = CallPlugIn(converter->convert, settings.Get(), order.flags, source, DefaultFileSys(), &document,
                            order.monitor, MemberOf(converter, &AVConversionToPDFHandlerRec::clientData));
    } catch (const CHostRaise& raise) {
        m_lastFailureCode = raise.Code();
        return Failed(raise.Message().find(path) == std::string::npos ? path + ": " + raise.Message()
                                                                      : raise.Message());
    }
    if (status != kAVConversionSuccess) return status;
    if (!Part<CDocuments>().Known(document)) return Failed(path + ": the converter made no document");
    if (Part<CDocuments>().At(document).pdf.Path().empty()) Part<CDocuments>().At(document).madeFrom = path;
    *made = document;
    return status;
}

AVConversionStatus CConverters::Convert(AVConversionFromPDFHandler converter, const ConversionOrder& order,
                                        PDDoc document, ASPathName target)
{
    Require(Contains(m_fromPdf, converter), "not a registered converter from PDF");
    static_cast<void>(DocumentAt(document));
    const std::string path = PathAt(target).Native();
    m_lastFailure.clear();
    m_lastFailureCode = 0;
    if (!CanWork(*converter, order.flags)) return Failed(path + ": " + Unable(converter->uniqueID));
    try {
        const CSettings settings(*converter, order.settings);
        return CallPlugIn(converter->convert, settings.Get(), order.flags, document, target, DefaultFileSys(),
                          order.monitor, MemberOf(converter, &AVConversionFromPDFHandlerRec::clientData));
    } catch (const CHostRaise& raise) {
        m_lastFailureCode = raise.Code();
        return Failed(raise.Message());
    }
}

namespace {

CConverters& Converters() { return Part<CConverters>(); }

void RegisterToPdf(AVConversionToPDFHandler converter) { Converters().Register(converter); }
void RegisterFromPdf(AVConversionFromPDFHandler converter) { Converters().Register(converter); }

void EnumToPdf(AVConversionToPDFEnumProc procedure, AVConversionEnumProcData data)
{
    Require(procedure != nullptr, "no procedure to call");
    for (const auto converter : Converters().ToPdf())
        if (!CallPlugIn(procedure, converter, data)) return;
}

void EnumFromPdf(AVConversionFromPDFEnumProc procedure, AVConversionEnumProcData data)
{
    Require(procedure != nullptr, "no procedure to call");
    for (const auto converter : Converters().FromPdf())
        if (!CallPlugIn(procedure, converter, data)) return;
}

/// A status cannot tell why: what is known of a failure is raised.
AVConversionStatus OrRaised(AVConversionStatus status)
{
    const std::string& reason = Converters().LastFailure();
    if (status == kAVConversionFailed && !reason.empty()) Raise(genErrGeneral, reason);
    return status;
}

AVConversionStatus ToPdfWith(AVConversionToPDFHandler converter, ASCab settings, AVConversionFlags flags,
                             ASPathName source, ASFileSys fileSys, PDDoc* made, AVStatusMonitorProcs monitor)
{
    RequireFileSys(fileSys);
    return OrRaised(Converters().Convert(converter, {settings, flags, monitor}, source, made));
}

AVConversionStatus FromPdfWith(AVConversionFromPDFHandler converter, ASCab settings, AVConversionFlags flags,
                               PDDoc document, ASPathName target, ASFileSys fileSys, AVStatusMonitorProcs monitor)
{
    RequireFileSys(fileSys);
    return OrRaised(Converters().Convert(converter, {settings, flags, monitor}, document, target));
}

AVConversionStatus ToPdf(AVConversionFlags flags, ASPathName source, ASFileSys fileSys, PDDoc* made,
                         AVStatusMonitorProcs monitor)
{
    RequireFileSys(fileSys);
    const std::string extension = platform::TextOf(platform::StandardPath(PathAt(source).Native()).extension());
    const auto converter = extension.empty() ? nullptr : Converters().ToPdfFor(extension.substr(1));
    return converter ? OrRaised(Converters().Convert(converter, {nullptr, flags, monitor}, source, made))
                     : static_cast<AVConversionStatus>(kAVConversionFailed);
}

ASBool SetSettings(AVConversionToPDFHandler converter, ASCab settings)
{
    Require(converter != nullptr, "no converter");
    const auto set = MemberOf(converter, &AVConversionToPDFHandlerRec::setSettings);
    return set && CallPlugIn(set, settings, MemberOf(converter, &AVConversionToPDFHandlerRec::clientData));
}

}  // namespace

void OfferConversionSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVAppRegisterToPDFHandler, RegisterToPdf);
    OFFER(tables, AcroView, AVAppRegisterFromPDFHandler, RegisterFromPdf);
    OFFER(tables, AcroView, AVConversionEnumToPDFConverters, EnumToPdf);
    OFFER(tables, AcroView, AVConversionEnumFromPDFConverters, EnumFromPdf);
    OFFER(tables, AcroView, AVConversionConvertToPDFWithHandler, ToPdfWith);
    OFFER(tables, AcroView, AVConversionConvertFromPDFWithHandler, FromPdfWith);
    OFFER(tables, AcroView, AVConversionConvertToPDF, ToPdf);
    OFFER(tables, AcroView, AVConversionToPDFSetSettings, SetSettings);
}

}  // namespace openhost
