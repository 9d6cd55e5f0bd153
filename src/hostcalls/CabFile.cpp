#include "hostcalls/CabFile.h"

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

}  // namespace

Expected<CCab> ReadCabFile(const std::string& path)
{
    CCab cab(nullptr);
    if (const auto error = CatchHostError([&] { cab = ReadCab(path); })) return Failure(error->text);
    if (!cab) return Failure("The file is not in the host's own form");
    return cab;
}

bool WriteCabFile(const std::string& path, CCabView cab)
{
    return !CatchHostError([&] { WriteCab(path, cab); });
}
