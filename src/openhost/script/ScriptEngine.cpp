#include "openhost/script/ScriptEngine.h"

#include <duktape.h>

#include <cstdlib>
#include <cstring>
#include <ctime>

#include "base/Text.h"
#include "openhost/core/Raise.h"
#include "openhost/script/ScriptValues.h"

namespace openhost {

struct CScriptEngine::State {
    ScriptLimits limits;
    void* owner = nullptr;
    duk_context* context = nullptr;
    std::size_t used = 0;   // bytes
    bool refused = false;   // memory, at least once
    bool watching = false;  // the time counts
    bool started = false;
    std::clock_t deadline = 0;
    bool late = false;
    std::size_t work = 0;  // since the clock was looked at
};

namespace {

using State = CScriptEngine::State;

constexpr std::size_t kWorkBetweenLooks = 500;                 // a single piece of work may take milliseconds
constexpr std::size_t kBlockHead = alignof(std::max_align_t);  // holds the size of the block
static_assert(kBlockHead >= sizeof(std::size_t));

State& StateIn(void* data) { return *static_cast<State*>(data); }

std::size_t SizeOf(void* block)
{
    std::size_t size = 0;
    std::memcpy(&size, static_cast<char*>(block) - kBlockHead, sizeof(size));
    return size;
}

void Free(void* data, void* block)
{
    if (!block) return;
    StateIn(data).used -= SizeOf(block);
    std::free(static_cast<char*>(block) - kBlockHead);
}

void* Reallocate(void* data, void* block, duk_size_t size)
{
    State& state = StateIn(data);
    if (size == 0) {
        Free(data, block);
        return nullptr;
    }
    const std::size_t former = block ? SizeOf(block) : 0;
    if (size > state.limits.memory || state.used - former > state.limits.memory - size) {
        state.refused = true;
        return nullptr;
    }
    void* const start = std::realloc(block ? static_cast<char*>(block) - kBlockHead : nullptr, size + kBlockHead);
    if (!start) {
        state.refused = true;
        return nullptr;
    }
    std::memcpy(start, &size, sizeof(size));
    state.used += size - former;
    return static_cast<char*>(start) + kBlockHead;
}

void* Allocate(void* data, duk_size_t size) { return Reallocate(data, nullptr, size); }

/// What the engine itself cannot go on from.
void GiveUp(void*, const char* message)
{
    throw CScriptError(std::string("failed: the engine cannot go on: ") + message);
}

duk_ret_t DoWork(duk_context* context, void* work)
{
    std::string reason;
    try {
        (*static_cast<const std::function<void(duk_hthread*)>*>(work))(context);
        return 0;
    } catch (const std::exception& exception) {  // the engine's own are none of these and go on
        reason = exception.what();
    }
    ThrowInScript(context, reason);
}

/// The script's line in which the error arose, from the calls that led to it; empty when it tells none.
std::string LineOf(duk_context* context)
{
    if (!duk_is_error(context, -1)) return {};
    duk_get_prop_string(context, -1, "stack");
    const std::string calls = duk_is_string(context, -1) ? ScriptTextAt(context, -1) : std::string();
    duk_pop(context);
    const std::string mark = std::string("(") + kScriptFile + ':';
    const auto at = calls.find(mark);
    if (at == calls.npos) return {};
    const auto digits = at + mark.size();
    return calls.substr(digits, calls.find_first_not_of("0123456789", digits) - digits);
}

/// Of the error on top of the stack, which may be any value.
duk_ret_t ReadError(duk_context* context, void* answer)
{
    const std::string line = LineOf(context);
    duk_safe_to_string(context, -1);
    std::string text = ScriptTextAt(context, -1);
    // An error of the syntax says its line itself, behind the text; it is one and the same place.
    if (const auto behind = text.rfind(" (line "); behind != text.npos && text.ends_with(')')) text.resize(behind);
    *static_cast<std::string*>(answer) = (line.empty() ? "failed: " : "failed in line " + line + ": ") + text;
    return 0;
}

}  // namespace

extern "C" {

int script_engine_stops(void* data)
{
    State& state = StateIn(data);
    if (!state.watching) return 0;
    if (!state.late) state.late = std::clock() > state.deadline;
    return state.late ? 1 : 0;
}

int script_engine_worked(void* data, size_t amount)
{
    State& state = StateIn(data);
    state.work += amount;
    if (state.work < kWorkBetweenLooks && !state.late) return 0;
    state.work = 0;
    return script_engine_stops(data);
}
}

CScriptEngine::CScriptEngine(const ScriptLimits& limits, void* owner) : m_state(std::make_unique<State>())
{
    m_state->limits = limits;
    m_state->owner = owner;
    m_state->context = duk_create_heap(&Allocate, &Reallocate, &Free, m_state.get(), &GiveUp);
    if (!m_state->context) throw CScriptError("failed: there is no memory to run it in");
}

CScriptEngine::~CScriptEngine() { duk_destroy_heap(m_state->context); }

void* CScriptEngine::OwnerOf(duk_hthread* context)
{
    duk_memory_functions functions;
    duk_get_memory_functions(context, &functions);
    return StateIn(functions.udata).owner;
}

std::string CScriptEngine::Describe(duk_hthread* context) const
{
    // What reads the error runs code of the script, which gets a little time and memory for it.
    constexpr std::size_t kMemoryForReading = 1024 * 1024;
    std::string text;
    const bool late = m_state->late;
    m_state->late = false;
    m_state->deadline = std::clock() + CLOCKS_PER_SEC;
    m_state->watching = true;
    const bool refused = m_state->refused;
    m_state->limits.memory += kMemoryForReading;
    if (duk_safe_call(context, &ReadError, &text, 1, 1) != DUK_EXEC_SUCCESS)
        text = "failed: with an error that cannot be read";
    m_state->watching = false;
    m_state->limits.memory -= kMemoryForReading;
    const std::string place = text.substr(0, text.find(':')) + ": ";
    if (late)
        return place + FormatText("it ran longer than %g seconds and was stopped",
                                  std::chrono::duration<double>(m_state->limits.time).count());
    if (refused && (text.find("alloc") != text.npos || text.find("DoubleError") != text.npos))
        return place + FormatText("it needs more than the %g MB of memory that a script may have",
                                  static_cast<double>(m_state->limits.memory) / (1024 * 1024));
    constexpr std::size_t kLongest = 400;
    return text.size() > kLongest ? ShortenedInMiddle(text, kLongest) : text;
}

void CScriptEngine::Run(const std::function<void(duk_hthread*)>& work)
{
    duk_context* const context = m_state->context;
    if (!m_state->started) {
        const double seconds = std::chrono::duration<double>(m_state->limits.time).count();
        m_state->deadline = std::clock() + static_cast<std::clock_t>(seconds * CLOCKS_PER_SEC);
        m_state->started = true;
    }
    m_state->watching = true;
    auto* const argument = const_cast<std::function<void(duk_hthread*)>*>(&work);
    const duk_int_t ending = duk_safe_call(context, &DoWork, argument, 0, 1);
    m_state->watching = false;
    if (ending != DUK_EXEC_SUCCESS || m_state->late) throw CScriptError(Describe(context));
    duk_pop(context);
}

}  // namespace openhost
