#pragma once

#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

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
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    CTextFileBase() = default;
    ~CTextFileBase() = default;

    TextEncoding m_encoding = TextEncoding::Ansi;
    std::unique_ptr<std::FILE, Closer> m_file;
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
    /// The next line in UTF-8 without its end (LF, CR or both); nothing at the end. A line end at the end of the
    /// file opens no further line.
    std::optional<std::string> ReadLine();
    std::size_t MarkLength() const { return m_markLength; }

private:
    void DetectEncoding();
    bool Fill();
    int NextByte();
    int PeekByte();
    std::optional<char32_t> ReadUtf8();
    std::optional<char32_t> ReadUtf16();
    std::optional<char16_t> ReadUnit();

    int m_position = -1;  // of the next byte in the buffer; -1 while it is empty
    std::size_t m_filled = 0;
    bool m_endReached = false;
    std::size_t m_markLength = 0;
    std::optional<char16_t> m_pendingUnit;
    std::optional<char32_t> m_pendingCharacter;
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
