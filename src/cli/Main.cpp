#include "cli/CommandLine.h"
#include "platform/Surroundings.h"

int main(int argumentCount, char** arguments)
{
    platform::SettleSurroundings();
    return cli::RunCommandLine({arguments + (argumentCount > 0 ? 1 : 0), arguments + argumentCount},
                               cli::MakeScreen());
}
