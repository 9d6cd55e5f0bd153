#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class QPDF;

namespace openhost {

/// One property of a metadata packet as it is to be.
struct XmpProperty {
    std::string_view space;   ///< namespace
    std::string_view prefix;  ///< for a new one
    std::string_view name;
    std::string content;  ///< XML inside the property; empty takes it away
};

/// The packet with these properties in place of what it said of them; all else stays byte for byte. Nothing when the
/// packet is not well formed or holds no description.
std::optional<std::string> ChangedPacket(std::string_view packet, const std::vector<XmpProperty>& properties);

/// The counterpart of an information entry (text in UTF-8); nothing for keys without one and for impossible dates.
std::optional<XmpProperty> XmpCounterpart(std::string_view infoKey, const std::string& valueUtf8);

/// The document's packet; nothing when it has none that can be unpacked.
std::optional<std::string> MetadataPacket(QPDF& document);

/// Brings a document's metadata packet, where it has a sound one, in step with these information entries.
void SyncMetadata(QPDF& document, const std::set<std::string>& infoKeys);

}  // namespace openhost
