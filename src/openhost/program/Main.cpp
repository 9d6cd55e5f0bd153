#include "openhost/program/CommandLine.h"
#include "platform/ThisProcess.h"

int main(int argumentCount, char** arguments)
{
    platform::PrepareProcess();
    return platform::OnDeepStack([&] { return openhost::RunCommandLine(argumentCount, arguments); });
}
