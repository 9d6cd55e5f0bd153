#include "openhost/program/CommandLine.h"
#include "openhost/program/Surroundings.h"

int main(int argumentCount, char** arguments)
{
    openhost::SettleSurroundings();
    return openhost::RunCommandLine(argumentCount, arguments);
}
