#include <filesystem>

#include "openhost/conversion/Converters.h"
#include "openhost/conversion/Slots.h"
#include "openhost/core/Memory.h"
#include "openhost/files/FilePaths.h"
#include "platform/NarrowText.h"

namespace openhost {

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
