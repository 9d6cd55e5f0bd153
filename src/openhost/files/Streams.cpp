#include "openhost/files/Streams.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"

namespace openhost {

std::size_t CHostStream::Read(char* bytes, std::size_t count)
{
    const std::size_t first = std::min(count, m_pushedBack.size());
    if (first > 0) std::memcpy(bytes, m_pushedBack.data(), first);
    m_pushedBack.erase(0, first);
    return first == count && count > 0 ? count : first + ReadMore(bytes + first, count - first);
}

std::size_t CHostStream::ReadMore(char*, std::size_t) { Raise(genErrBadParm, "the stream is for writing"); }

void CHostStream::Write(const char*, std::size_t) { Raise(genErrBadParm, "the stream is for reading"); }

CHostStream& StreamAt(ASStm stream) { return Part<CStreams>().handles.At(stream); }

std::size_t LiveStreams() { return Part<CStreams>().handles.Live(); }

namespace {

void RaiseIf(ASErrorCode failed, const std::string& path)
{
    if (failed != 0) Raise(failed, path + ": " + ErrorText(failed));
}

/// The file may be gone afterwards.
void LeaveFile(CHostFile& file)
{
    const std::string path = file.path.Native();
    RaiseIf(RemoveStream(file), path);
}

class CFileReadStream final : public CHostStream {
public:
    CFileReadStream(CHostFile& file, std::size_t bufferSize)
        : m_file(file), m_next(file.position), m_buffer(bufferSize)
    {
        AddStream(file);
    }
    void Close() override
    {
        m_file.position = m_next - (m_end - m_begin) - PushedBack();
        LeaveFile(m_file);
    }

protected:
    std::size_t ReadMore(char* bytes, std::size_t count) override
    {
        std::size_t done = 0;
        while (done < count && Fill()) {
            const std::size_t part = std::min(count - done, m_end - m_begin);
            std::memcpy(bytes + done, m_buffer.data() + m_begin, part);
            m_begin += part;
            done += part;
        }
        return done;
    }

private:
    /// False at the end of the file.
    bool Fill()
    {
        if (m_begin < m_end) return true;
        m_begin = m_end = 0;
        RaiseIf(m_file.disk.ReadAt(m_next, m_buffer.data(), m_buffer.size(), &m_end), m_file.path.Native());
        m_next += m_end;
        return m_end > 0;
    }

    CHostFile& m_file;
    std::uint64_t m_next;  // the position in the file behind the buffer
    std::vector<char> m_buffer;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
};

class CFileWriteStream final : public CHostStream {
public:
    CFileWriteStream(CHostFile& file, std::size_t bufferSize)
        : m_file(file), m_next(file.position), m_bufferSize(bufferSize)
    {
        AddStream(file);
    }
    void Write(const char* bytes, std::size_t count) override
    {
        m_buffer.append(bytes, count);
        if (m_buffer.size() >= m_bufferSize) Flush();
    }
    void Flush() override
    {
        std::size_t done = 0;
        const ASErrorCode failed = m_file.disk.WriteAt(m_next, m_buffer.data(), m_buffer.size(), &done);
        m_buffer.erase(0, done);
        m_next += done;
        m_file.position = m_next;
        RaiseIf(failed, m_file.path.Native());
    }
    void Close() override
    {
        try {
            Flush();
        } catch (...) {
            RemoveStream(m_file);
            throw;
        }
        LeaveFile(m_file);
    }

private:
    CHostFile& m_file;
    std::uint64_t m_next;
    std::size_t m_bufferSize;
    std::string m_buffer;
};

class CMemoryReadStream final : public CHostStream {
public:
    CMemoryReadStream(const char* bytes, std::size_t count) : m_rest(bytes, count) {}

protected:
    std::size_t ReadMore(char* bytes, std::size_t count) override
    {
        const std::size_t part = std::min(count, m_rest.size());
        if (part > 0) std::memcpy(bytes, m_rest.data(), part);
        m_rest.remove_prefix(part);
        return part;
    }

private:
    std::string_view m_rest;
};

/// Plug-ins are asked for, or given, at most this much in one call.
constexpr std::size_t kMaxTransfer = 32 * 1024;

class CProcedureStream : public CHostStream {
public:
    explicit CProcedureStream(const StreamProcedures& procedures) : m_procedures(procedures) {}
    void Close() override
    {
        if (m_procedures.destroy) CallPlugIn(m_procedures.destroy, m_procedures.clientData);
    }

protected:
    /// How many bytes the procedure dealt with.
    std::size_t Transfer(char* bytes, std::size_t count, ASErrorCode whenWrong)
    {
        const auto asked = static_cast<ASTArraySize>(std::min(count, kMaxTransfer));
        const ASTCount done = CallPlugIn(m_procedures.transfer, bytes, asked, m_procedures.clientData);
        if (done < 0 || done > asked) Raise(whenWrong, "the procedure behind a stream failed");
        return static_cast<std::size_t>(done);
    }

private:
    StreamProcedures m_procedures;
};

class CProcedureReadStream final : public CProcedureStream {
public:
    using CProcedureStream::CProcedureStream;

protected:
    std::size_t ReadMore(char* bytes, std::size_t count) override
    {
        std::size_t done = 0;
        while (done < count) {
            const std::size_t part = Transfer(bytes + done, count - done, fileErrRead);
            if (part == 0) break;
            done += part;
        }
        return done;
    }
};

class CProcedureWriteStream final : public CProcedureStream {
public:
    using CProcedureStream::CProcedureStream;
    void Write(const char* bytes, std::size_t count) override
    {
        std::string copy(bytes, count);  // the procedure's argument is not const
        for (std::size_t done = 0; done < count;) {
            const std::size_t part = Transfer(copy.data() + done, count - done, fileErrWrite);
            if (part == 0) Raise(fileErrWrite, "the procedure behind a stream takes no more bytes");
            done += part;
        }
    }
};

}  // namespace

std::unique_ptr<CHostStream> FileReadStream(CHostFile& file, std::size_t bufferSize)
{
    return std::make_unique<CFileReadStream>(file, bufferSize);
}

std::unique_ptr<CHostStream> FileWriteStream(CHostFile& file, std::size_t bufferSize)
{
    return std::make_unique<CFileWriteStream>(file, bufferSize);
}

std::unique_ptr<CHostStream> MemoryReadStream(const char* bytes, std::size_t count)
{
    return std::make_unique<CMemoryReadStream>(bytes, count);
}

std::unique_ptr<CHostStream> ProcedureReadStream(const StreamProcedures& procedures)
{
    return std::make_unique<CProcedureReadStream>(procedures);
}

std::unique_ptr<CHostStream> ProcedureWriteStream(const StreamProcedures& procedures)
{
    return std::make_unique<CProcedureWriteStream>(procedures);
}

}  // namespace openhost
