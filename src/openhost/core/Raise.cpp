#include "openhost/core/Raise.h"

#include <unordered_map>

#include "openhost/core/Frames.h"
#include "openhost/core/Host.h"

namespace openhost {

namespace {

constexpr int kPlugInErrorSystem = 12;

struct RegisteredErrors {
    std::unordered_map<ASErrorCode, std::string> texts;
    int nextNumber = 1;
};

struct PublishedError {
    unsigned identity;
    const char* name;
    const char* meaning;
};

constexpr PublishedError kPublished[] = {
#define ENTRY(name, meaning) {HOST_ERROR_IDENTITY(name), #name, meaning},
    HOST_ERRORS(ENTRY)
#undef ENTRY
};

}  // namespace

void Raise(ASErrorCode code, std::string message) { throw CHostRaise(code, std::move(message)); }

std::string ErrorText(ASErrorCode code)
{
    if (code == 0) return {};
    const CFrames& frames = Part<CFrames>();
    if (frames.LastCode() == code && !frames.LastMessage().empty()) return frames.LastMessage();
    const auto& registered = Part<RegisteredErrors>().texts;
    if (const auto found = registered.find(code); found != registered.end()) return found->second;
    for (const PublishedError& error : kPublished)
        if (error.identity == HOST_ERROR_IDENTITY(code)) return *error.meaning ? error.meaning : error.name;
    return {};
}

ASErrorCode RegisterErrorText(ASErrSeverity severity, std::string text)
{
    auto& registered = Part<RegisteredErrors>();
    const ASErrorCode code = HOST_ERROR_CODE(severity, kPlugInErrorSystem, registered.nextNumber++);
    registered.texts[code] = std::move(text);
    return code;
}

}  // namespace openhost
