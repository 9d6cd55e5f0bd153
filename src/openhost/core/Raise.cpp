#include "openhost/core/Raise.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unordered_map>

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

namespace {

constexpr std::string_view kDots = "...";

bool ContinuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

/// Bytes that are no UTF-8 may go on like this for ever; a character has three of them at most.
constexpr std::size_t kMostContinued = 3;

}  // namespace

std::string ShortenedInMiddle(std::string_view text, std::size_t bytes)
{
    if (text.size() <= bytes) return std::string(text);
    const std::size_t room = bytes - std::min(bytes, kDots.size());
    std::size_t head = room / 3, tail = text.size() - (room - head);
    for (std::size_t i = 0; i < kMostContinued && head > 0 && ContinuesCharacter(text[head]); ++i) --head;
    for (std::size_t i = 0; i < kMostContinued && tail < text.size() && ContinuesCharacter(text[tail]); ++i) ++tail;
    std::string shortened(text.substr(0, head));
    shortened += kDots.substr(0, std::min(bytes, kDots.size()));
    return shortened.append(text.substr(tail));
}

namespace {

struct GuardedWork {
    void (*work)(void*);
    void* context;
    ASErrorCode thrown = 0;
};

/// A plug-in that lets an exception out: it counts as a raise.
void WorkGuarded(void* context)
{
    auto& guarded = *static_cast<GuardedWork*>(context);
    try {
        guarded.work(guarded.context);
    } catch (...) {
        guarded.thrown = RememberCurrentException();
    }
}

}  // namespace

void CFrames::Pop()
{
    if (m_frames.empty()) {
        Diagnose("an exception frame was popped that nobody had pushed");
        return;
    }
    m_frames.pop_back();
}

void CFrames::CutTo(std::size_t depth)
{
    if (m_frames.size() > depth) m_frames.resize(depth);
}

void CFrames::Remember(ASErrorCode code, std::string message)
{
    m_lastCode = code;
    m_lastMessage = std::move(message);
}

void CFrames::LeaveThroughTop()
{
    if (m_frames.empty()) {
        std::fprintf(stderr, "ferrule-host: an error reached the host outside every frame: %s\n",
                     m_lastMessage.c_str());
        std::abort();
    }
    const Frame top = m_frames.back();
    top.restore(top.environment);
    std::abort();  // a restore procedure that returns has broken its one promise
}

ASErrorCode RunInFrame(void (*work)(void*), void* context)
{
    CFrames* const frames = &Part<CFrames>();
    const std::size_t depth = frames->Depth();
    GuardedWork guarded{work, context};
    std::jmp_buf target;
    frames->Push(&target, &JumpBack);
    const bool raised = EndsByJump(target, &WorkGuarded, &guarded);
    const bool orderly = frames->Depth() == depth + 1;
    frames->CutTo(depth);
    if (raised) return frames->LastCode() != 0 ? frames->LastCode() : static_cast<ASErrorCode>(genErrGeneral);
    if (guarded.thrown != 0) return guarded.thrown;
    if (!orderly) Diagnose("a plug-in left its exception frames in disorder");
    return 0;
}

}  // namespace openhost
