#include "hostcalls/CabFile.h"

#include "hostcalls/HostEntry.h"
#include "hostcalls/HostPath.h"
#include "hostcalls/HostSlot.h"

namespace {

/// An open file of the host, closed at the end.
class CHostFile {
public:
    CHostFile(const std::string& path, int mode)
    {
        const CHostPath hostPath = CHostPath::FromNative(path);
        const ASErrorCode code = HostCall(HOST_SLOT(AcroSupport, ASFileSysOpenFile), nullptr, hostPath.Get(),
                                          static_cast<ASFileMode>(mode), &m_file);
        if (code != 0 || !m_file) hostcalls::ThrowHostError(code != 0 ? code : fileErrFNF);
    }
    ~CHostFile()
    {
        if (m_file) hostcalls::Quietly([this] { HostCall(HOST_SLOT(AcroSupport, ASFileClose), m_file); });
    }
    CHostFile(const CHostFile&) = delete;
    CHostFile& operator=(const CHostFile&) = delete;

    ASFile Get() const { return m_file; }

    /// Closing is where the last of the bytes may fail to arrive.
    void Close()
    {
        const ASErrorCode code = HostCall(HOST_SLOT(AcroSupport, ASFileClose), std::exchange(m_file, nullptr));
        if (code != 0) hostcalls::ThrowHostError(code);
    }

private:
    ASFile m_file = nullptr;
};

/// A stream over an open file, closed at the end and before the file.
class CHostStream {
public:
    explicit CHostStream(ASStm adopted) : m_stream(adopted)
    {
        if (!m_stream) hostcalls::ThrowHostError(genErrNoMemory);
    }
    ~CHostStream()
    {
        if (m_stream) hostcalls::Quietly([this] { HostCall(HOST_SLOT(AcroSupport, ASStmClose), m_stream); });
    }
    CHostStream(const CHostStream&) = delete;
    CHostStream& operator=(const CHostStream&) = delete;

    ASStm Get() const { return m_stream; }
    void Close() { HostCall(HOST_SLOT(AcroSupport, ASStmClose), std::exchange(m_stream, nullptr)); }

private:
    ASStm m_stream;
};

CCab ReadCab(const std::string& path)
{
    const CHostFile file(path, ASFILE_READ);
    const CHostStream stream(HostCall(HOST_SLOT(AcroSupport, ASFileStmRdOpen), file.Get(), ASSmallBufferSize{0}));
    return CCab(HostCall(HOST_SLOT(ASExtra, ASCabReadFromStream), stream.Get()));
}

void WriteCab(const std::string& path, CCabView cab)
{
    CHostFile file(path, ASFILE_WRITE | ASFILE_CREATE);
    CHostStream stream(HostCall(HOST_SLOT(AcroSupport, ASFileStmWrOpen), file.Get(), ASSmallBufferSize{0}));
    HostCall(HOST_SLOT(ASExtra, ASCabWriteToStream), cab.Get(), stream.Get());
    stream.Close();
    file.Close();
}

CCab ReadCabBytes(const std::string& bytes)
{
    const CHostStream stream(
        HostCall(HOST_SLOT(AcroSupport, ASMemStmRdOpen), bytes.data(), static_cast<ASArraySize>(bytes.size())));
    return CCab(HostCall(HOST_SLOT(ASExtra, ASCabReadFromStream), stream.Get()));
}

/// Answers how many bytes it took; fewer than given tell the host that writing failed.
ASTCount HOSTCALL TakeBytes(char* data, ASTArraySize count, void* clientData) noexcept
{
    try {
        static_cast<std::string*>(clientData)->append(data, static_cast<std::size_t>(count));
        return static_cast<ASTCount>(count);
    } catch (...) {
        return 0;
    }
}

std::string WriteCabBytes(CCabView cab)
{
    std::string bytes;
    CHostStream stream(HostCall(HOST_SLOT(AcroSupport, ASProcStmWrOpen), Callback(&TakeBytes), nullptr, &bytes));
    HostCall(HOST_SLOT(ASExtra, ASCabWriteToStream), cab.Get(), stream.Get());
    stream.Close();
    return bytes;
}

Expected<CCab> CabOrReason(CCab cab, const std::optional<HostError>& error)
{
    if (error) return Failure(error->text);
    if (!cab) return Failure("The file is not in the host's own form");
    return cab;
}

}  // namespace

Expected<CCab> ReadCabFile(const std::string& path)
{
    CCab cab(nullptr);
    const auto error = CatchHostError([&] { cab = ReadCab(path); });
    return CabOrReason(std::move(cab), error);
}

bool WriteCabFile(const std::string& path, CCabView cab)
{
    return !CatchHostError([&] { WriteCab(path, cab); });
}

Expected<CCab> CabFromBytes(const std::string& bytes)
{
    CCab cab(nullptr);
    const auto error = CatchHostError([&] { cab = ReadCabBytes(bytes); });
    return CabOrReason(std::move(cab), error);
}

Expected<std::string> BytesFromCab(CCabView cab)
{
    std::string bytes;
    if (const auto error = CatchHostError([&] { bytes = WriteCabBytes(cab); })) return Failure(error->text);
    return bytes;
}
