#include "hostcalls/Information.h"

#include "hostcalls/HostPath.h"
#include "hostcalls/HostTables.h"

std::string InfoEntry(PDDoc document, const std::string& key)
{
    const ASInt32 length = HostCall(HOST_SLOT(PDModel, PDDocGetInfo), document, key.c_str(), nullptr, ASInt32{0});
    if (length <= 0) return {};
    std::string bytes(static_cast<std::size_t>(length) + 1, '\0');  // some hosts end it by a zero
    HostCall(HOST_SLOT(PDModel, PDDocGetInfo), document, key.c_str(), bytes.data(), ASInt32{length + 1});
    bytes.resize(static_cast<std::size_t>(length));
    return CHostText::FromPdText(bytes).ToUtf8();
}

void SetInfoEntry(PDDoc document, const std::string& key, const std::string& utf8)
{
    const std::string bytes = CHostText::FromUtf8(utf8).ToPdText();
    HostCall(HOST_SLOT(PDModel, PDDocSetInfo), document, key.c_str(), bytes.data(),
             static_cast<ASInt32>(bytes.size()));
}
