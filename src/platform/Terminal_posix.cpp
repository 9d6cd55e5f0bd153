#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/Paths.h"
#include "platform/Terminal.h"

namespace platform {
namespace {

constexpr int kUsualWidth = 80;

int DescriptorOf(StandardStream stream) { return stream == StandardStream::Output ? STDOUT_FILENO : STDERR_FILENO; }

}  // namespace

bool TakesControlCodes(StandardStream stream)
{
    const std::string kind = EnvironmentText("TERM");
    return isatty(DescriptorOf(stream)) == 1 && !kind.empty() && kind != "dumb";
}

bool IsTerminal(StandardStream stream) { return isatty(DescriptorOf(stream)) == 1; }

int TerminalWidth(StandardStream stream)
{
    winsize size{};
    if (ioctl(DescriptorOf(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
    return size.ws_col;
}

}  // namespace platform
