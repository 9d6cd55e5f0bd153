#include "hostcalls/HostPath.h"

#include "base/Unicode.h"
#include "hostcalls/Cab.h"
#include "hostcalls/HostTables.h"
#include "platform/NarrowText.h"

static_assert(sizeof(ASUTF16Val) == sizeof(char16_t));

CHostText::CHostText() : m_text(HostCall(HOST_SLOT(ASExtra, ASTextNew))) {}

CHostText::~CHostText()
{
    if (m_text) hostcalls::Quietly([this] { HostCall(HOST_SLOT(ASExtra, ASTextDestroy), m_text); });
}

CHostText CHostText::FromUtf8(const std::string& utf8)
{
    const std::u16string units = Utf8ToUtf16(utf8);
    return CHostText(HostCall(HOST_SLOT(ASExtra, ASTextFromUnicode),
                              reinterpret_cast<const ASUTF16Val*>(units.c_str()), kUTF16HostEndian));
}

CHostText CHostText::FromNarrow(const std::string& narrow) { return FromUtf8(platform::Utf8FromNarrow(narrow)); }

CHostText CHostText::FromPdText(std::string bytes)
{
    const bool isWide = bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE");
    for (std::size_t at = isWide ? 2 : 0; at + (isWide ? 1 : 0) < bytes.size(); at += isWide ? 2 : 1) {
        if (bytes[at] != 0 || (isWide && bytes[at + 1] != 0)) continue;
        if (isWide)
            bytes.replace(at, 2, bytes.front() == '\xFE' ? "\xFF\xFD" : "\xFD\xFF");
        else
            bytes[at] = '\x9F';  // no character of PDFDocEncoding
    }
    return CHostText(
        HostCall(HOST_SLOT(ASExtra, ASTextFromSizedPDText), bytes.data(), static_cast<ASTArraySize>(bytes.size())));
}

std::string CHostText::ToUtf8() const { return Utf8FromText(m_text); }

std::string CHostText::ToNarrow() const { return NarrowFromText(m_text); }

std::string CHostText::ToPdText() const
{
    ASTArraySize length = 0;
    const CHostMemory bytes(HostCall(HOST_SLOT(ASExtra, ASTextGetPDTextCopy), m_text, &length));
    if (!bytes.Get() || length <= 0) return {};
    return std::string(bytes.Text(), static_cast<std::size_t>(length));
}

std::u16string Utf16FromText(ASConstText text)
{
    if (!text) return {};
    const ASUTF16Val* units = HostCall(HOST_SLOT(ASExtra, ASTextGetUnicode), text);
    if (!units) return {};
    return reinterpret_cast<const char16_t*>(units);
}

std::string Utf8FromText(ASConstText text) { return Utf16ToUtf8(Utf16FromText(text)); }

std::string NarrowFromText(ASConstText text) { return platform::NarrowFromUtf8(Utf8FromText(text)); }

namespace {

constexpr const char* kFileSystemKey = "FS";
constexpr const char* kFileSystemName = "DOS";
constexpr const char* kDIKey = "DI";
constexpr const char* kDIPathKey = "DIPath";
constexpr const char* kDITextKey = "DIText";

ASPathName CreatePath(const char* type, const std::string& text)
{
    if (text.find('\0') != std::string::npos) hostcalls::ThrowHostError(genErrBadParm);
    return HostCall(HOST_SLOT(AcroSupport, ASFileSysCreatePathName), nullptr, Atom(type), text.c_str(), nullptr);
}

/// Of a text that may be either: a path of a system with drive letters does not begin with a slash.
std::optional<CHostPath> PathFromText(const std::string& text)
{
    if (text.front() == '/') return CHostPath::FromDIPath(text);
    return CHostPath::FromNative(text);
}

/// The first of the three forms that is there. "DIText" may also hold a path of the platform.
std::optional<CHostPath> PathFromCab(CCabView pathCab)
{
    for (const char* key : {kDIKey, kDIPathKey})
        if (const auto text = pathCab.StringOrText(key); text && !text->empty()) return CHostPath::FromDIPath(*text);
    const auto text = pathCab.StringOrText(kDITextKey);
    if (!text || text->empty()) return std::nullopt;
    return PathFromText(*text);
}

}  // namespace

CHostPath::~CHostPath()
{
    if (m_path)
        hostcalls::Quietly([this] { HostCall(HOST_SLOT(AcroSupport, ASFileSysReleasePath), nullptr, m_path); });
}

CHostPath CHostPath::FromNative(const std::string& path)
{
    CHostPath made(CreatePath("Cstring", path));
    if (!made.m_path) hostcalls::ThrowHostError(fileErrFNF);
    return made;
}

std::optional<CHostPath> CHostPath::FromDIPath(const std::string& diPath)
{
    std::optional<CHostPath> made;
    const auto refused = CatchHostError([&] { made.emplace(CreatePath("DIPath", diPath)); });
    if (refused || !made->m_path) return std::nullopt;
    return made;
}

std::string CHostPath::ToNative() const { return NativeFromPath(nullptr, m_path); }

std::string CHostPath::ToDIPath() const
{
    const CHostMemory text(HostCall(HOST_SLOT(AcroSupport, ASFileSysDIPathFromPath), nullptr, m_path, nullptr));
    if (!text.Get()) hostcalls::ThrowHostError(genErrBadParm);
    return text.Text();
}

std::string NativeFromPath(ASFileSys fileSystem, ASPathName path)
{
    ASPlatformPath native = nullptr;
    const ASAtom form = Atom("Cstring");
    const ASInt32 code =
        HostCall(HOST_SLOT(AcroSupport, ASFileSysAcquirePlatformPath), fileSystem, path, form, &native);
    if (code != 0 || !native) hostcalls::ThrowHostError(code != 0 ? code : genErrBadParm);
    const hostcalls::CAtEnd release(
        [&] { HostCall(HOST_SLOT(AcroSupport, ASFileSysReleasePlatformPath), fileSystem, native); });
    const char* text = HostCall(HOST_SLOT(AcroSupport, ASPlatformPathGetCstringPtr), native);
    if (!text) hostcalls::ThrowHostError(genErrBadParm);
    return text;
}

CCab PathCab(const std::string& path)
{
    const auto made = path.empty() ? std::nullopt : PathFromText(path);
    if (!made) hostcalls::ThrowHostError(fileErrFNF);
    const std::string diPath = made->ToDIPath();
    CCab cab;
    cab.PutAtom(kFileSystemKey, Atom(kFileSystemName));
    cab.PutText(kDITextKey, diPath);
    cab.PutString(kDIKey, diPath);
    return cab;
}

std::optional<std::string> NativeFromPathCab(CCabView pathCab)
{
    std::optional<std::string> native;
    const auto refused = CatchHostError([&] {
        if (const auto path = PathFromCab(pathCab)) native = path->ToNative();
    });
    return refused ? std::nullopt : native;
}

std::string TextOfPathCab(CCabView pathCab)
{
    for (const char* key : {kDITextKey, kDIKey, kDIPathKey}) {
        const auto text = pathCab.TextUtf8(key);
        if (std::string path = text ? *text : pathCab.String(key).value_or(""); !path.empty()) return path;
    }
    return {};
}
