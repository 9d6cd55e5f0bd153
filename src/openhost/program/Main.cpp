#include "openhost/program/CommandLine.h"

int main(int argumentCount, char** arguments) { return openhost::RunCommandLine(argumentCount, arguments); }
