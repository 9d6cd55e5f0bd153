#include "openhost/core/Atoms.h"

#include "openhost/core/Host.h"
#include "openhost/core/Raise.h"

namespace openhost {

ASAtom CAtoms::FromText(std::string_view text)
{
    if (text.empty()) return kNullAtom;
    const auto known = m_numbers.find(std::string(text));
    if (known != m_numbers.end()) return known->second;
    if (m_texts.size() >= kNullAtom) Raise(genErrNoMemory, "no atom is left");
    const auto atom = static_cast<ASAtom>(m_texts.size());
    m_texts.emplace_back(text);
    m_numbers.emplace(m_texts.back(), atom);
    return atom;
}

const char* CAtoms::Text(ASAtom atom) const
{
    if (atom == kNullAtom) return "";
    return atom < m_texts.size() ? m_texts[atom].c_str() : nullptr;
}

ASAtom AtomFromText(std::string_view text) { return Part<CAtoms>().FromText(text); }

std::string AtomText(ASAtom atom)
{
    const char* const text = Part<CAtoms>().Text(atom);
    return text ? text : "";
}

}  // namespace openhost
