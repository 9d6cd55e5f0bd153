// Copies one file, for the test of the library that lets file calls fail. Ends with 0, or 1 when the copy failed.
#include <cstdio>

#include "platform/Files.h"

int main(int count, char** arguments)
{
    if (count != 3) return 2;
    const auto copied = platform::CopyFile(arguments[1], arguments[2], platform::Existing::Replace);
    std::printf("%s\n", platform::ErrorText(copied.errorNumber).c_str());
    return copied ? 0 : 1;
}
