// For programs that draw or read text: leaks of libraries. Include it in one file.
#pragma once

#ifdef __SANITIZE_ADDRESS__
/// What the font library keeps until the end of the process is no leak of ours.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig\n"; }
#endif
