// Stands in for iconv in poppler-cpp, which converts whole texts between UTF-8 and UTF-16 and nothing else.
//
// What is invalid in a text becomes U+FFFD; iconv would end the text there.
#pragma once

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

using iconv_t = std::intptr_t;

inline constexpr iconv_t kIconvToUtf8 = 8;
inline constexpr iconv_t kIconvToUtf16 = 16;

inline iconv_t iconv_open(const char* to, const char* from)
{
    if (std::strcmp(to, "UTF-8") == 0 && std::strcmp(from, "UTF-16LE") == 0) return kIconvToUtf8;
    if (std::strcmp(to, "UTF-16LE") == 0 && std::strcmp(from, "UTF-8") == 0) return kIconvToUtf16;
    errno = EINVAL;
    return -1;
}

inline int iconv_close(iconv_t) { return 0; }

// Converts all or nothing: E2BIG when it does not fit, and the caller comes again with more room.
inline size_t iconv(iconv_t direction, char** in, size_t* inBytes, char** out, size_t* outBytes)
{
    constexpr auto kFailed = static_cast<size_t>(-1);
    if (*inBytes > INT_MAX || *outBytes > INT_MAX) {
        errno = EINVAL;
        return kFailed;
    }
    const int inSize = static_cast<int>(*inBytes);
    const int outSize = static_cast<int>(*outBytes);
    size_t written = 0;
    if (direction == kIconvToUtf8) {
        written = static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, reinterpret_cast<const wchar_t*>(*in),
                                                          inSize / 2, *out, outSize, nullptr, nullptr));
    } else {
        written = 2 * static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, *in, inSize,
                                                              reinterpret_cast<wchar_t*>(*out), outSize / 2));
    }
    if (written == 0 && inSize > 0) {
        errno = GetLastError() == ERROR_INSUFFICIENT_BUFFER ? E2BIG : EILSEQ;
        return kFailed;
    }
    *in += *inBytes;
    *inBytes = 0;
    *out += written;
    *outBytes -= written;
    return 0;
}
