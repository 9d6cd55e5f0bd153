#include "openhost/values/CabValue.h"

#include <cstring>

#include "openhost/core/Frames.h"
#include "openhost/core/Host.h"
#include "openhost/values/Cabinet.h"

namespace openhost {

namespace {

CSharedBlock CopyBlock(const CSharedBlock& block) { return {SharedCopy(block.View()), block.Size()}; }

void DestroyPointer(CabPointer pointer)
{
    if (!pointer.target || pointer.target.use_count() > 1) return;
    const CabPointer::Target target = *pointer.target;
    pointer.target.reset();
    if (target.destroy && target.pointer) CallPlugIn(target.destroy, target.pointer);
}

void DestroyOwnedCab(CCabinet& cab)
{
    cab.SetParent(nullptr);
    const ASCab handle = CabHandle(cab);
    try {
        cab.MakeEmpty();
    } catch (...) {
        Part<CCabinets>().handles.Take(handle);
        throw;
    }
    Part<CCabinets>().handles.Take(handle);
}

}  // namespace

ASCabValueType TypeOf(const CabValue& value)
{
    // In the order of the alternatives.
    constexpr ASCabValueType kTypes[] = {
        kASValueNull, kASValueBool,   kASValueInteger, kASValueUns,     kASValueInt64, kASValueUns64,  kASValueDouble,
        kASValueAtom, kASValueString, kASValueBinary,  kASValuePointer, kASValueText,  kASValueCabinet};
    static_assert(std::size(kTypes) == std::variant_size_v<CabValue>);
    return kTypes[value.index()];
}

CabValue CopyValue(const CabValue& value)
{
    return std::visit(Overloaded{[](const CabString& string) { return CabValue(CabString{CopyBlock(string.block)}); },
                                 [](const CabBinary& binary) { return CabValue(CabBinary{CopyBlock(binary.block)}); },
                                 [](CHostText* text) { return CabValue(&TextAt(DupText(*text))); },
                                 [](CCabinet* cab) { return CabValue(&CabAt(DupCab(*cab))); },
                                 [](const auto& plain) { return CabValue(plain); }},
                      value);
}

void DestroyValue(CabValue value)
{
    if (const auto* pointer = std::get_if<CabPointer>(&value)) {
        CabPointer last = *pointer;
        value = CabNull{};
        DestroyPointer(std::move(last));
    } else if (auto* const* text = std::get_if<CHostText*>(&value)) {
        (*text)->SetOwner(nullptr);
        DestroyText(TextHandle(**text));
    } else if (auto* const* cab = std::get_if<CCabinet*>(&value)) {
        DestroyOwnedCab(**cab);
    }
}

bool EqualValues(const CabValue& one, const CabValue& other)
{
    if (one.index() != other.index()) return false;
    return std::visit(
        Overloaded{
            [](const CabNull&) { return true; },
            [&](const CabAtom& atom) { return atom.atom == std::get<CabAtom>(other).atom; },
            [&](const CabString& string) { return string.block.View() == std::get<CabString>(other).block.View(); },
            [&](const CabBinary& binary) { return binary.block.View() == std::get<CabBinary>(other).block.View(); },
            [&](const CabPointer& pointer) {
                const auto& second = std::get<CabPointer>(other);
                return pointer.type == second.type && pointer.target->pointer == second.target->pointer;
            },
            [&](CHostText* text) { return text->Utf16() == std::get<CHostText*>(other)->Utf16(); },
            [&](CCabinet* cab) { return cab->Equals(*std::get<CCabinet*>(other)); },
            [&](const auto& plain) { return plain == std::get<std::decay_t<decltype(plain)>>(other); }},
        one);
}

}  // namespace openhost
