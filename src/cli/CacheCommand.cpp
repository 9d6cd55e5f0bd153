#include "cli/CacheCommand.h"

#include "base/Text.h"
#include "cli/RunArguments.h"
#include "platform/CacheFolder.h"
#include "platform/Files.h"
#include "protocol/Json.h"
#include "protocol/TextCacheFolder.h"

namespace cli {

namespace {

/// Nothing is there before the first search, and then nothing is made either.
bool IsThere(const std::string& folder) { return !folder.empty() && platform::NameExists(folder); }

platform::CCacheFolder OpenCache(const std::string& folder)
{
    return platform::CCacheFolder(folder, kTextCacheSuffix, kTextCacheBytes);
}

/// In MiB with one decimal place.
std::string ShownBytes(std::uint64_t bytes)
{
    constexpr double kMebibyte = 1 << 20;
    return FormatText("%.1f MiB", static_cast<double>(bytes) / kMebibyte);
}

std::string Shown(const platform::CacheState& state)
{
    return std::to_string(state.files) + (state.files == 1 ? " document, " : " documents, ") +
           ShownBytes(state.bytes);
}

}  // namespace

int CacheStatusCommand(const CArguments& arguments, const Screen& screen)
{
    const std::string folder = UserTextCache();
    platform::CacheState state;
    if (IsThere(folder)) {
        const auto cache = OpenCache(folder);
        if (!cache.IsUsable()) FailStart(cache.Problem());
        state = cache.State();
    }
    if (arguments.Has("--json"))
        *screen.data << LineOf({{"folder", TextFromBytes(folder)},
                                {"documents", state.files},
                                {"bytes", state.bytes},
                                {"maxBytes", kTextCacheBytes}})
                     << '\n';
    else
        *screen.data << Printable(folder) << '\n'
                     << Shown(state) << " of at most " << ShownBytes(kTextCacheBytes) << '\n';
    return kExitFine;
}

int CacheClearCommand(const CArguments& arguments, const Screen& screen)
{
    const std::string folder = UserTextCache();
    platform::CacheState state;
    if (IsThere(folder)) {
        auto cache = OpenCache(folder);
        if (!cache.IsUsable()) FailStart(cache.Problem());
        state = arguments.Has("--dry-run") ? cache.State() : cache.Clear();
    }
    *screen.data << (arguments.Has("--dry-run") ? "Would be removed: " : "Removed: ") << Shown(state) << '\n';
    return kExitFine;
}

}  // namespace cli
