#include "openhost/values/CabMunge.h"

namespace openhost {

namespace {

/// What happens to an entry of the cab, given the entry of the same key in the other one (null: none).
bool MustGo(const CabValue& mine, const CabValue* other, ASCabMungeAction action)
{
    switch (action) {
        case kASMungeRemove:
            return other != nullptr;
        case kASMungeRemoveUnknown:
            return other == nullptr;
        case kASMungeRemoveDefaults:
            return other && EqualValues(mine, *other);
        case kASMungeRemoveBadValues:
            return other && TypeOf(mine) != TypeOf(*other);
        case kASMungeRemoveNulls:
            return TypeOf(mine) == kASValueNull;
        default:
            return false;
    }
}

bool MustCome(const CabValue* mine, ASCabMungeAction action)
{
    switch (action) {
        case kASMungeCopy:
            return true;
        case kASMungeReplace:
            return mine != nullptr;
        case kASMungeCopyMissing:
            return mine == nullptr;
        default:
            return false;
    }
}

CCabinet* CabIn(const CabValue* value)
{
    auto* const* const cab = value ? std::get_if<CCabinet*>(value) : nullptr;
    return cab ? *cab : nullptr;
}

}  // namespace

void MungeCab(CCabinet& cab, const CCabinet& keys, ASCabMungeAction action)
{
    Require(action >= kASMungeRemove && action <= kASMungeRemoveNulls, "unknown way of combining cabs");
    cab.Walk([&](const std::string& key, const CabValue& mine) {
        const CabValue* const other = keys.Find(key);
        CCabinet* const nested = CabIn(&mine);
        if (nested && action == kASMungeRemoveNulls)
            MungeCab(*nested, *nested, action);
        else if (nested && CabIn(other))
            MungeCab(*nested, *CabIn(other), action);
        else if (MustGo(mine, other, action))
            cab.Remove(key);
        return true;
    });
    keys.WalkConst([&](const std::string& key, const CabValue& other) {
        const CabValue* const mine = cab.Find(key);
        const bool bothCabs = CabIn(mine) && CabIn(&other);  // combined above
        if (!bothCabs && MustCome(mine, action)) cab.Put(key, CopyValue(other));
        return true;
    });
}

}  // namespace openhost
