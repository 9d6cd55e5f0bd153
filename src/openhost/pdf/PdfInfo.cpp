#include "openhost/pdf/DocumentState.h"
#include "openhost/pdf/PdfGuard.h"
#include "openhost/pdf/XmlTags.h"
#include "openhost/pdf/Xmp.h"

namespace openhost {
namespace {

QPDFObjectHandle InfoDictionary(QPDF& library) { return library.getTrailer().getKey("/Info"); }

QPDFObjectHandle MakeInfoDictionary(QPDF& library)
{
    QPDFObjectHandle info = InfoDictionary(library);
    if (info.isDictionary()) return info;
    info = library.makeIndirectObject(QPDFObjectHandle::newDictionary());
    library.getTrailer().replaceKey("/Info", info);
    return info;
}

}  // namespace

std::optional<std::string> CPdfDocument::Info(const std::string& key)
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&]() -> std::optional<std::string> {
        QPDFObjectHandle info = InfoDictionary(m_state->Current());
        if (!info.isDictionary()) return std::nullopt;
        QPDFObjectHandle value = info.getKey('/' + key);
        if (!value.isString()) return std::nullopt;
        return value.getStringValue();
    });
}

std::vector<std::string> CPdfDocument::InfoKeys()
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] {
        std::vector<std::string> keys;
        QPDFObjectHandle info = InfoDictionary(m_state->Current());
        if (!info.isDictionary()) return keys;
        for (const std::string& key : info.getKeys()) keys.push_back(key.substr(1));
        return keys;
    });
}

void CPdfDocument::SetInfo(const std::string& key, const std::string& value)
{
    State& state = *m_state;
    if (!Allows(PdfRight::Change)) {
        throw CPdfError(PdfProblem::NotPermitted, state.description, "changing the document is not permitted");
    }
    // The library writes a number sign as it is, and readers take it for the start of a code: another key.
    if (key.empty() || key.find('#') != std::string::npos || key.find('\0') != std::string::npos) {
        throw CPdfError(PdfProblem::UnsupportedInput, state.description, "cannot write this information key");
    }
    Guarded(state.description, PdfProblem::Damaged,
            [&] { MakeInfoDictionary(state.Current()).replaceKey('/' + key, QPDFObjectHandle::newString(value)); });
    state.changedInfo.insert(key);
    state.modified = state.contentChanged = true;
}

bool CPdfDocument::MetadataHold(const std::string& utf8)
{
    return Guarded(m_state->description, PdfProblem::Damaged, [&] {
        const auto packet = MetadataPacket(m_state->Current());
        return !packet || packet->find(XmlEscaped(utf8)) != std::string::npos;
    });
}

}  // namespace openhost
