/* Holds a file open so that no other process can open, replace or delete it, until its standard input ends. */
#include <stdio.h>
#include <windows.h>

int wmain(int count, wchar_t** words)
{
    HANDLE file =
        count == 2 ? CreateFileW(words[1], GENERIC_READ, 0, NULL, OPEN_EXISTING, 0, NULL) : INVALID_HANDLE_VALUE;
    puts(file == INVALID_HANDLE_VALUE ? "failed" : "held");
    fflush(stdout);
    while (getchar() != EOF) {
    }
    return file == INVALID_HANDLE_VALUE;
}
