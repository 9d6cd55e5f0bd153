// One script and the limits that it runs in.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

struct duk_hthread;

namespace openhost {

struct ScriptLimits {
    std::chrono::milliseconds time{10'000};  ///< of computing; on Windows of the clock on the wall
    std::size_t memory = 64 * 1024 * 1024;   ///< bytes, everything that belongs to the script
    std::size_t globals = 1024 * 1024;       ///< bytes of what "global" keeps between scripts
    std::size_t info = 8 * 1024 * 1024;      ///< bytes of the entries that a script sets, each setting counted
    std::size_t lines = 200;                 ///< that a script may say
    std::size_t lineBytes = 1000;            ///< of each of them
};

/// Why a script did not run to its end: "failed in line 3: TypeError: ...", the line left out where none is known.
class CScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An engine for one script: nothing of what a script does to its objects is there for the next one. It has no way to
/// files, programs or the network but what is added to it.
class CScriptEngine {
public:
    /// `owner` is what the functions of objects get at by OwnerOf; borrowed. Fails: CScriptError.
    CScriptEngine(const ScriptLimits& limits, void* owner);
    ~CScriptEngine();
    CScriptEngine(const CScriptEngine&) = delete;
    CScriptEngine& operator=(const CScriptEngine&) = delete;

    /// Runs `work` within the limits; the time counts from the first call on. Fails: CScriptError.
    void Run(const std::function<void(duk_hthread*)>& work);

    static void* OwnerOf(duk_hthread* context);

    struct State;

private:
    std::string Describe(duk_hthread* context) const;

    std::unique_ptr<State> m_state;
};

/// The name under which the script's own lines are counted; errors in others are told without a line.
inline constexpr char kScriptFile[] = "script";

}  // namespace openhost
