#include "hostcalls/Cab.h"

#include <exception>

#include "hostapi/HostConstants.h"
#include "hostcalls/HostFrame.h"
#include "hostcalls/HostPath.h"
#include "hostcalls/HostTables.h"
#include "platform/NarrowText.h"

ASAtom Atom(const std::string& text) { return HostCall(HOST_SLOT(Core, ASAtomFromString), text.c_str()); }

std::string AtomText(ASAtom atom)
{
    if (atom == kNullAtom) return {};
    const char* text = HostCall(HOST_SLOT(Core, ASAtomGetString), atom);
    return text ? text : "";
}

namespace {

struct KeyCollector {
    std::vector<std::string> keys;
    std::exception_ptr failure;
};

ASBool HOSTCALL CollectKey(ASCab, const char* key, ASCabValueType, void* data)
{
    auto& collector = *static_cast<KeyCollector*>(data);
    try {
        collector.keys.emplace_back(key);
        return 1;
    } catch (...) {
        collector.failure = std::current_exception();
        return 0;
    }
}

ASText TextIn(ASCab cab, const char* key)
{
    return cab ? HostCall(HOST_SLOT(ASExtra, ASCabGetText), cab, key) : nullptr;
}

}  // namespace

bool CCabView::Bool(const char* key, bool fallback) const
{
    if (!m_cab) return fallback;
    return HostCall(HOST_SLOT(ASExtra, ASCabGetBool), m_cab, key, ASBool{fallback}) != 0;
}

int CCabView::Int(const char* key, int fallback) const
{
    return m_cab ? HostCall(HOST_SLOT(ASExtra, ASCabGetInt), m_cab, key, fallback) : fallback;
}

double CCabView::Double(const char* key, double fallback) const
{
    return m_cab ? HostCall(HOST_SLOT(ASExtra, ASCabGetDouble), m_cab, key, fallback) : fallback;
}

std::optional<ASAtom> CCabView::Atom(const char* key) const
{
    if (Type(key) != kASValueAtom) return std::nullopt;
    return HostCall(HOST_SLOT(ASExtra, ASCabGetAtom), m_cab, key, ASAtom{0xFFFF});
}

std::optional<std::string> CCabView::String(const char* key) const
{
    if (!m_cab) return std::nullopt;
    const char* text = HostCall(HOST_SLOT(ASExtra, ASCabGetString), m_cab, key);
    if (!text) return std::nullopt;
    return std::string(text);
}

std::optional<std::string> CCabView::Text(const char* key) const
{
    const ASText text = TextIn(m_cab, key);
    return text ? std::optional(NarrowFromText(text)) : std::nullopt;
}

std::optional<std::string> CCabView::TextUtf8(const char* key) const
{
    const ASText text = TextIn(m_cab, key);
    return text ? std::optional(Utf8FromText(text)) : std::nullopt;
}

std::optional<std::string> CCabView::StringOrText(const char* key) const
{
    auto text = String(key);
    return text ? text : Text(key);
}

std::optional<std::string> CCabView::Binary(const char* key) const
{
    if (Type(key) != kASValueBinary) return std::nullopt;
    ASTArraySize size = 0;
    const void* bytes = HostCall(HOST_SLOT(ASExtra, ASCabGetBinary), m_cab, key, &size);
    if (!bytes || size <= 0) return std::string();
    return std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

CCabView CCabView::Cab(const char* key) const
{
    return m_cab ? CCabView(HostCall(HOST_SLOT(ASExtra, ASCabGetCab), m_cab, key)) : CCabView();
}

bool CCabView::Known(const char* key) const
{
    return m_cab && HostCall(HOST_SLOT(ASExtra, ASCabKnown), m_cab, key) != 0;
}

ASCabValueType CCabView::Type(const char* key) const
{
    if (!m_cab) return kASValueUnknown;
    return HostCall(HOST_SLOT(ASExtra, ASCabGetType), m_cab, key);
}

int CCabView::Size() const { return m_cab ? HostCall(HOST_SLOT(ASExtra, ASCabNumEntries), m_cab) : 0; }

std::vector<std::string> CCabView::Keys() const
{
    if (!m_cab) return {};
    static const ASCabEnumProc kCollect = Callback(&CollectKey);
    KeyCollector collector;
    HostCall(HOST_SLOT(ASExtra, ASCabEnum), m_cab, kCollect, &collector);
    if (collector.failure) std::rethrow_exception(collector.failure);
    return std::move(collector.keys);
}

CCab CCabView::Copy() const
{
    if (!m_cab) return CCab();
    return CCab(HostCall(HOST_SLOT(ASExtra, ASCabDup), m_cab));
}

void CCabEditor::PutBool(const char* key, bool value)
{
    HostCall(HOST_SLOT(ASExtra, ASCabPutBool), m_cab, key, ASBool{value});
}

void CCabEditor::PutInt(const char* key, int value) { HostCall(HOST_SLOT(ASExtra, ASCabPutInt), m_cab, key, value); }

void CCabEditor::PutDouble(const char* key, double value)
{
    HostCall(HOST_SLOT(ASExtra, ASCabPutDouble), m_cab, key, value);
}

void CCabEditor::PutAtom(const char* key, ASAtom value)
{
    HostCall(HOST_SLOT(ASExtra, ASCabPutAtom), m_cab, key, value);
}

// What the cab takes over it owns only once the call has come back: after a raise the value is still ours.
void CCabEditor::PutString(const char* key, const std::string& value)
{
    CHostMemory bytes = CHostMemory::CopyOf(value);
    HostCall(HOST_SLOT(ASExtra, ASCabPutString), m_cab, key, bytes.Text());
    bytes.Release();
}

void CCabEditor::PutText(const char* key, const std::string& narrow)
{
    PutTextUtf8(key, platform::Utf8FromNarrow(narrow));
}

void CCabEditor::PutTextUtf8(const char* key, const std::string& utf8)
{
    CHostText text = CHostText::FromUtf8(utf8);
    HostCall(HOST_SLOT(ASExtra, ASCabPutText), m_cab, key, text.Get());
    text.Release();
}

void CCabEditor::PutBinary(const char* key, const std::string& bytes)
{
    CHostMemory blob = CHostMemory::CopyOf(bytes);
    HostCall(HOST_SLOT(ASExtra, ASCabPutBinary), m_cab, key, blob.Get(), static_cast<ASTArraySize>(bytes.size()));
    blob.Release();
}

void CCabEditor::PutNull(const char* key) { HostCall(HOST_SLOT(ASExtra, ASCabPutNull), m_cab, key); }

void CCabEditor::PutCab(const char* key, CCab&& value)
{
    HostCall(HOST_SLOT(ASExtra, ASCabPutCab), m_cab, key, value.Edit().Get());
    value.Release();
}

void CCabEditor::PutPointer(const char* key, const char* typeName, void* pointer)
{
    HostCall(HOST_SLOT(ASExtra, ASCabPutPointerRaw), m_cab, key, typeName, pointer, nullptr);
}

void CCabEditor::Remove(const char* key) { HostCall(HOST_SLOT(ASExtra, ASCabRemove), m_cab, key); }

void CCabEditor::MakeEmpty() { HostCall(HOST_SLOT(ASExtra, ASCabMakeEmpty), m_cab); }

void CCabEditor::CopyFrom(CCabView source)
{
    if (source) HostCall(HOST_SLOT(ASExtra, ASCabCopy), source.Get(), m_cab);
}

CCabEditor CCabEditor::EditCab(const char* key) const
{
    return CCabEditor(m_cab ? HostCall(HOST_SLOT(ASExtra, ASCabGetCab), m_cab, key) : nullptr);
}

CCab::CCab() : CCabEditor(HostCall(HOST_SLOT(ASExtra, ASCabNew)))
{
    if (!m_cab) hostcalls::ThrowHostError(genErrNoMemory);
}

CCab::~CCab()
{
    if (m_cab) hostcalls::Quietly([this] { HostCall(HOST_SLOT(ASExtra, ASCabDestroy), m_cab); });
}

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

namespace {

/// One overload for each type that a record holds.
struct CabPut {
    CCabEditor cab;
    const char* key;

    void operator()(NullValue) { cab.PutNull(key); }
    void operator()(bool value) { cab.PutBool(key, value); }
    void operator()(std::int32_t value) { cab.PutInt(key, value); }
    void operator()(double value) { cab.PutDouble(key, value); }
    void operator()(const std::string& value) { cab.PutString(key, value); }
    void operator()(const WideText& value) { cab.PutTextUtf8(key, value.utf8); }
    void operator()(const AtomValue& value) { cab.PutAtom(key, Atom(value.name)); }
    void operator()(const BinaryValue& value) { cab.PutBinary(key, value.bytes); }
    void operator()(const CSettingsRecord::Nested& value) { cab.PutCab(key, CabFromRecord(*value)); }
};

}  // namespace

std::optional<CSettingsRecord::Value> ValueFromCab(CCabView cab, const char* key)
{
    switch (cab.Type(key)) {
        case kASValueBool:
            return cab.Bool(key, false);
        case kASValueInteger:
            return std::int32_t{cab.Int(key, 0)};
        case kASValueDouble:
            return cab.Double(key, 0);
        case kASValueAtom:
            return AtomValue{AtomText(cab.Atom(key).value_or(kNullAtom))};
        case kASValueString:
            return cab.String(key).value_or("");
        case kASValueText:
            return WideText{cab.TextUtf8(key).value_or("")};
        case kASValueBinary:
            return BinaryValue{cab.Binary(key).value_or("")};
        case kASValueNull:
            return NullValue{};
        case kASValueCabinet:
            return std::make_shared<const CSettingsRecord>(RecordFromCab(cab.Cab(key)));
        default:
            return std::nullopt;
    }
}

CSettingsRecord RecordFromCab(CCabView cab)
{
    CSettingsRecord record;
    for (const std::string& key : cab.Keys())
        if (auto value = ValueFromCab(cab, key.c_str())) record.PutValue(key, std::move(*value));
    return record;
}

CCab CabFromRecord(const CSettingsRecord& record)
{
    CCab cab;
    for (const auto& entry : record.Entries()) {
        const auto error = CatchHostError([&] { std::visit(CabPut{cab.Edit(), entry.key.c_str()}, entry.value); });
        // A step without one of its parameters would do something else than the sequence says.
        if (error) throw CHostException({error->code, "item \"" + entry.key + "\": " + error->text});
    }
    return cab;
}
