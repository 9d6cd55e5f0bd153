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

const std::unordered_map<unsigned, std::string>& PublishedTexts()
{
    static const std::unordered_map<unsigned, std::string> texts = {
#define ENTRY(name, meaning) {HOST_ERROR_IDENTITY(name), *meaning ? std::string(meaning) : std::string(#name)},
        HOST_ERRORS(ENTRY)
#undef ENTRY
    };
    return texts;
}

}  // namespace

void Raise(ASErrorCode code, std::string message) { throw CHostRaise(code, std::move(message)); }

std::string ErrorText(ASErrorCode code)
{
    if (code == 0) return {};
    const CFrames& frames = Part<CFrames>();
    if (frames.LastCode() == code && !frames.LastMessage().empty()) return frames.LastMessage();
    const auto& registered = Part<RegisteredErrors>().texts;
    if (const auto found = registered.find(code); found != registered.end()) return found->second;
    const auto published = PublishedTexts().find(HOST_ERROR_IDENTITY(code));
    return published == PublishedTexts().end() ? std::string() : published->second;
}

ASErrorCode RegisterErrorText(ASErrSeverity severity, std::string text)
{
    auto& registered = Part<RegisteredErrors>();
    const ASErrorCode code = HOST_ERROR_CODE(severity, kPlugInErrorSystem, registered.nextNumber++);
    registered.texts[code] = std::move(text);
    return code;
}

}  // namespace openhost
