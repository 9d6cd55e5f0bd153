#include <csignal>

#include "cli/CommandLine.h"

int main(int argumentCount, char** arguments)
{
#ifdef SIGPIPE
    // A reader of the record that goes away must not end a run in the middle.
    std::signal(SIGPIPE, SIG_IGN);
#endif
    return cli::RunCommandLine({arguments + (argumentCount > 0 ? 1 : 0), arguments + argumentCount},
                               cli::MakeScreen());
}
