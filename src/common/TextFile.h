#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/Files.h"

enum class TextEncoding { Ansi = 0, Utf16BigEndian = 1, Utf16LittleEndian = 2, Utf8 = 3 };

/// A system call on an open text file failed.
class CTextFileException : public std::runtime_error {
public:
    CTextFileException(const std::string& sentence, int errorNumber)
        : std::runtime_error(sentence), m_errorNumber(errorNumber)
    {
    }
    int ErrorNumber() const { return m_errorNumber; }

private:
    int m_errorNumber;
};

/// What readers and writers of text files share: the file, its encoding and a buffer of 1024 bytes.
/// Owns the open file. ANSI is the narrow code page.
class CTextFileBase {
public:
    bool IsOpen() const { return m_file != nullptr; }
    TextEncoding Encoding() const { return m_encoding; }
    /// The error number of a failed open; 0 when it succeeded.
    int ErrorNumber() const { return m_errorNumber; }

protected:
    static constexpr std::size_t kBufferSize = 1024;

    CTextFileBase() = default;
    ~CTextFileBase() = default;

    TextEncoding m_encoding = TextEncoding::Ansi;
    platform::Stream m_file;
    std::array<char, kBufferSize> m_buffer{};
    int m_errorNumber = 0;
};

/// Reads a text file in the encoding that its first bytes tell. Malformed input reads as U+FFFD.
/// Raises: CTextFileException when reading fails later on.
class CTextFileRead : public CTextFileBase {
public:
    /// Fails: not open, with the reason in ErrorNumber.
    explicit CTextFileRead(const std::string& path);

    /// The next character; nothing at the end.
    std::optional<char32_t> ReadCharacter();
    /// The next line without its end (LF, CR or both); nothing at the end. A line end at the end of the file opens
    /// no further line. In UTF-8; lines of an ANSI file are the bytes as they stand.
    std::optional<std::string> ReadLine();
    std::size_t MarkLength() const { return m_markLength; }

private:
    void DetectEncoding();
    std::string_view Ahead(std::size_t wanted);
    std::string_view NextRaw();
    void SkipLineFeed();

    std::size_t m_position = 0, m_filled = 0;  // what the buffer still holds
    bool m_endReached = false;
    std::size_t m_markLength = 0;
};

/// Writes a text file through a buffer.
/// Raises: CTextFileException when writing fails; the destructor never raises, so call Close to learn of failure.
class CTextFileWrite : public CTextFileBase {
public:
    CTextFileWrite() = default;
    CTextFileWrite(const std::string& path, TextEncoding encoding, bool append)
    {
        (void)Open(path, encoding, append);
    }
    CTextFileWrite(const CTextFileWrite&) = delete;
    CTextFileWrite& operator=(const CTextFileWrite&) = delete;
    ~CTextFileWrite();

    /// Replaces the file, or with `append` continues at the end of an existing one. A file that starts empty gets
    /// the mark of its encoding. Fails: false, and the object is not open.
    [[nodiscard]] bool Open(const std::string& path, TextEncoding encoding, bool append);
    /// Line ends are written as they stand. An ANSI file takes the bytes as they are; the others take UTF-8.
    void Write(std::string_view text);
    void WriteCharacter(char32_t character);
    void Close();

private:
    void Put(std::string_view encodedCharacter);
    void FlushBuffer();

    std::size_t m_used = 0;
};
