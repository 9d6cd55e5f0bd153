#include "openhost/program/CommandLine.h"
#include "platform/DeepStack.h"
#include "platform/Surroundings.h"

int main(int argumentCount, char** arguments)
{
    platform::SettleSurroundings();
    return platform::OnDeepStack([&] { return openhost::RunCommandLine(argumentCount, arguments); });
}
