#include <algorithm>
#include <cstring>

#include "openhost/documents/DocumentSlots.h"
#include "openhost/documents/Documents.h"

namespace openhost {

namespace {

/// The length of the value; with a buffer as much of it as fits, ended by a zero where there is room.
ASInt32 GetInfo(PDDoc document, const char* key, char* buffer, ASInt32 size)
{
    Require(key && *key, "an information entry needs a key");
    const std::string value = Translated([&] { return DocumentAt(document).pdf.Info(key).value_or(std::string()); });
    if (buffer && size > 0) {
        const std::size_t copied = std::min(value.size(), static_cast<std::size_t>(size));
        std::memcpy(buffer, value.data(), copied);
        if (copied < static_cast<std::size_t>(size)) buffer[copied] = 0;
    }
    return static_cast<ASInt32>(value.size());
}

void SetInfo(PDDoc document, const char* key, const char* value, ASInt32 length)
{
    Require(key && *key, "an information entry needs a key");
    Require(length >= 0 && (value || length == 0), "an information entry needs a value");
    CHostDocument& held = DocumentAt(document);
    const std::string bytes = length > 0 ? std::string(value, static_cast<std::size_t>(length)) : std::string();
    Translated([&] { held.pdf.SetInfo(key, bytes); });
    held.clearedFlags &= ~PDDocNeedsSave;
}

}  // namespace

void OfferInfoSlots(CTables& tables)
{
    OFFER(tables, PDModel, PDDocGetInfo, GetInfo);
    OFFER(tables, PDModel, PDDocSetInfo, SetInfo);
}

}  // namespace openhost
