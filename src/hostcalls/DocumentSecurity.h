// Changing the security of a document. Everything takes effect at the next full save.
#pragma once

#include "hostapi/HostTypes.h"

#include <string>

/// What the "Standard" security handler is asked for. An empty password is not set.
struct StandardSecurityRequest {
    std::string openPassword;
    std::string permissionsPassword;
    unsigned permissions = 0xFFFFFFFF;  // the word of the document's /P entry
    int keyLengthBytes = 16;
    int revision = 0;     // 0 = the host chooses
    int cryptMethod = 0;  // 0 = the host chooses
};

/// Chooses the security handler by name; an empty name takes the security away. Throws CHostException.
void SetCryptHandler(PDDoc document, const std::string& name);

/// Hands a new record to the "Standard" handler. Throws CHostException: not permitted, no such handler, or a password
/// that the record has no room for (255 bytes).
void ApplyStandardSecurity(PDDoc document, const StandardSecurityRequest& request);
