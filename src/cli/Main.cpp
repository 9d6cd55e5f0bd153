#include "cli/CommandLine.h"
#include "platform/ThisProcess.h"

int main(int argumentCount, char** arguments)
{
    platform::PrepareProcess();
    return cli::RunCommandLine({arguments + (argumentCount > 0 ? 1 : 0), arguments + argumentCount},
                               cli::MakeScreen());
}
