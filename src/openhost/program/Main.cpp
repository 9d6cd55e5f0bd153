#include "openhost/program/CommandLine.h"
#include "platform/Surroundings.h"

int main(int argumentCount, char** arguments)
{
    platform::SettleSurroundings();
    return openhost::RunCommandLine(argumentCount, arguments);
}
