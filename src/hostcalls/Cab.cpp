#include "hostcalls/Cab.h"

#include "hostcalls/HostEntry.h"
#include "hostcalls/HostMemory.h"
#include "hostcalls/HostText.h"
#include "platform/NarrowText.h"

#include <exception>

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
