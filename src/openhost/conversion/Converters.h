// Converters to and from PDF: those that are registered, and the slots through which plug-ins list and use them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "hostapi/HostRecords.h"
#include "openhost/core/Tables.h"

namespace openhost {

/// What a conversion is asked for besides its source and target.
struct ConversionOrder {
    ASCab settings = nullptr;  ///< null: the converter's defaults
    AVConversionFlags flags = 0;
    AVStatusMonitorProcs monitor = nullptr;  ///< may be null
};

/// All converters, in order of registration. A converter is known by the pointer to its record, which belongs to
/// whoever registered it and lives until the host ends.
///
/// A converter answers a status. One that raises instead, or that cannot work while the caller waits although it has
/// to, counts as failed; the reason is said as an alert and kept as LastFailure.
class CConverters {
public:
    void Register(AVConversionToPDFHandler converter);
    void Register(AVConversionFromPDFHandler converter);
    void DropOwner(ASExtension owner);

    std::vector<AVConversionToPDFHandler> ToPdf() const;
    std::vector<AVConversionFromPDFHandler> FromPdf() const;
    /// By extension without dot, upper and lower case alike; null when there is none.
    AVConversionToPDFHandler ToPdfFor(std::string_view extension) const;
    /// By unique name; null when there is none.
    AVConversionFromPDFHandler FromPdfNamed(std::string_view uniqueId) const;

    /// On success *made is a document that the caller closes; else it is null.
    AVConversionStatus Convert(AVConversionToPDFHandler converter, const ConversionOrder& order, ASPathName source,
                               PDDoc* made);
    AVConversionStatus Convert(AVConversionFromPDFHandler converter, const ConversionOrder& order, PDDoc document,
                               ASPathName target);

    const std::string& LastFailure() const { return m_lastFailure; }
    /// What the converter raised; 0 when it raised nothing.
    ASErrorCode LastFailureCode() const { return m_lastFailureCode; }

private:
    template <class Record>
    struct Registered {
        Record converter;
        ASExtension owner;
    };
    AVConversionStatus Failed(std::string reason);

    std::vector<Registered<AVConversionToPDFHandler>> m_toPdf;
    std::vector<Registered<AVConversionFromPDFHandler>> m_fromPdf;
    std::string m_lastFailure;
    ASErrorCode m_lastFailureCode = 0;
};

/// Registering, listing and using converters to and from PDF.
void OfferConversionSlots(CTables& tables);

/// Registers the host's own converters: JPEG to PDF, and PDF to plain text. Once for each host.
void RegisterBuiltInConverters();

}  // namespace openhost
