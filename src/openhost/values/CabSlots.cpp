#include "openhost/core/Atoms.h"
#include "openhost/core/Tables.h"
#include "openhost/values/CabMunge.h"
#include "openhost/values/Cabinet.h"

namespace openhost {

void OfferCabSlots(CTables& tables);

namespace {

std::string_view KeyOf(const char* key)
{
    Require(key != nullptr, "no key was given");
    return key;
}

/// The value of exactly this type, or null.
template <class T>
const T* ValueAt(ASConstCab cab, const char* key)
{
    const CabValue* const value = CabAt(cab).Find(KeyOf(key));
    return value ? std::get_if<T>(value) : nullptr;
}

template <class T, class Plain>
Plain Scalar(ASConstCab cab, const char* key, Plain fallback)
{
    const T* const value = ValueAt<T>(cab, key);
    return value ? static_cast<Plain>(*value) : fallback;
}

/// A null key stands for a free number.
void PutValue(ASCab cab, const char* key, CabValue value)
{
    if (key)
        CabAt(cab).Put(key, std::move(value));
    else
        CabAt(cab).PutUnderFreeNumber(std::move(value));
}

/// What a plug-in gives away must not be taken when the put fails.
void CheckPut(ASCab cab, const char* key)
{
    const CCabinet& target = CabAt(cab);
    if (key)
        target.RequirePuttable(key);
    else
        target.RequireChangeable();
}

void RemoveEntry(ASCab cab, const char* key)
{
    CCabinet& target = CabAt(cab);
    if (key) target.Remove(key);
}

// ---- whole cabs

void FillFromEntry(CCabinet& cab, const ASCabEntryRec& entry)
{
    const char* const text = static_cast<const char*>(entry.ptrVal);
    switch (entry.type) {
        case kASValueBool:
            return cab.PutBool(entry.keyName, entry.intVal != 0);
        case kASValueInteger:
            return cab.PutInt(entry.keyName, entry.intVal);
        case kASValueUns:
            return cab.Put(entry.keyName, static_cast<std::uint32_t>(entry.intVal));
        case kASValueDouble:
            return cab.PutDouble(entry.keyName, entry.doubleVal);
        case kASValueNull:
            return cab.PutNull(entry.keyName);
        case kASValueAtom:
            return cab.PutAtom(entry.keyName, text ? AtomFromText(text) : static_cast<ASAtom>(entry.intVal));
        case kASValueString:
            Require(text != nullptr, "an entry's string is missing");
            return cab.PutString(entry.keyName, text);
        default:
            Raise(genErrBadParm, "a list of entries cannot hold this type of value");
    }
}

ASCab FromEntryList(const ASCabEntryRec* entries)
{
    Require(entries != nullptr, "no list of entries was given");
    COwnedCab cab = COwnedCab::New();
    for (; entries->keyName; ++entries) FillFromEntry(*cab, *entries);
    return cab.Release();
}

ASTArraySize NumEntries(ASConstCab cab) { return static_cast<ASTArraySize>(CabAt(cab).NumEntries()); }

ASBool Known(ASConstCab cab, const char* key) { return CabAt(cab).Known(KeyOf(key)); }

ASCabValueType ValueType(ASConstCab cab, const char* key) { return CabAt(cab).Type(KeyOf(key)); }

void Enum(ASCab cab, ASCabEnumProc procedure, void* clientData)
{
    Require(procedure != nullptr, "no procedure to call");
    CabAt(cab).Walk([&](const std::string& key, const CabValue& value) {
        return CallPlugIn(procedure, cab, key.c_str(), TypeOf(value), clientData) != 0;
    });
}

void EnumConst(ASConstCab cab, ASConstCabEnumProc procedure, void* clientData)
{
    Require(procedure != nullptr, "no procedure to call");
    CabAt(cab).WalkConst([&](const std::string& key, const CabValue& value) {
        return CallPlugIn(procedure, cab, key.c_str(), TypeOf(value), clientData) != 0;
    });
}

void Remove(ASCab cab, const char* key) { CabAt(cab).Remove(KeyOf(key)); }

void Rename(ASCab cab, const char* oldKey, const char* newKey) { CabAt(cab).Rename(KeyOf(oldKey), KeyOf(newKey)); }

void MakeEmpty(ASCab cab) { CabAt(cab).MakeEmpty(); }

void DestroyEmpties(ASCab cab, ASBool recurse) { CabAt(cab).DestroyEmpties(recurse != 0); }

void Copy(ASConstCab source, ASCab target)
{
    const CCabinet& from = CabAt(source);
    CabAt(target).CopyFrom(from);
}

ASCab Dup(ASConstCab source) { return DupCab(CabAt(source)); }

ASBool ValueEqual(ASConstCab one, const char* oneKey, ASConstCab other, const char* otherKey)
{
    const CabValue* const first = CabAt(one).Find(KeyOf(oneKey));
    const CabValue* const second = CabAt(other).Find(KeyOf(otherKey));
    return first && second && EqualValues(*first, *second);
}

ASBool Equal(ASConstCab one, ASConstCab other) { return CabAt(one).Equals(CabAt(other)); }

void Munge(ASCab cab, ASConstCab keys, ASCabMungeAction action)
{
    CCabinet& target = CabAt(cab);
    const bool keysUnused = action == kASMungeRemoveNulls && !keys;
    MungeCab(target, keysUnused ? target : CabAt(keys), action);
}

// ---- scalars

ASBool GetBool(ASConstCab cab, const char* key, ASBool fallback) { return Scalar<bool>(cab, key, fallback); }
ASInt32 GetInt(ASConstCab cab, const char* key, ASInt32 fallback) { return Scalar<std::int32_t>(cab, key, fallback); }
ASUns32 GetUns(ASConstCab cab, const char* key, ASUns32 fallback)
{
    return Scalar<std::uint32_t>(cab, key, fallback);
}
ASInt64 GetInt64(ASConstCab cab, const char* key, ASInt64 fallback)
{
    return Scalar<std::int64_t>(cab, key, fallback);
}
ASUns64 GetUns64(ASConstCab cab, const char* key, ASUns64 fallback)
{
    return Scalar<std::uint64_t>(cab, key, fallback);
}
double GetDouble(ASConstCab cab, const char* key, double fallback)
{
    return CabAt(cab).GetDouble(KeyOf(key), fallback);
}
ASAtom GetAtom(ASConstCab cab, const char* key, ASAtom fallback) { return CabAt(cab).GetAtom(KeyOf(key), fallback); }

void PutBool(ASCab cab, const char* key, ASBool value) { PutValue(cab, key, value != 0); }
void PutInt(ASCab cab, const char* key, ASInt32 value) { PutValue(cab, key, static_cast<std::int32_t>(value)); }
void PutUns(ASCab cab, const char* key, ASUns32 value) { PutValue(cab, key, static_cast<std::uint32_t>(value)); }
void PutInt64(ASCab cab, const char* key, ASInt64 value) { PutValue(cab, key, static_cast<std::int64_t>(value)); }
void PutUns64(ASCab cab, const char* key, ASUns64 value) { PutValue(cab, key, static_cast<std::uint64_t>(value)); }
void PutDouble(ASCab cab, const char* key, double value) { PutValue(cab, key, value); }
void PutAtom(ASCab cab, const char* key, ASAtom value) { PutValue(cab, key, CabAtom{value}); }
void PutNull(ASCab cab, const char* key) { PutValue(cab, key, CabNull{}); }

// ---- strings and bytes

const char* GetString(ASConstCab cab, const char* key) { return CabAt(cab).GetString(KeyOf(key)); }

char* GetStringCopy(ASConstCab cab, const char* key)
{
    const char* const string = GetString(cab, key);
    return string ? SharedCopy(string) : nullptr;
}

/// Takes the value out when it has this type; a value of another type stays.
template <class T>
std::optional<T> DetachAs(ASCab cab, const char* key)
{
    if (!ValueAt<T>(cab, key)) return std::nullopt;
    auto value = CabAt(cab).Detach(key);
    return value ? std::optional<T>(std::move(std::get<T>(*value))) : std::nullopt;
}

char* DetachString(ASCab cab, const char* key)
{
    auto string = DetachAs<CabString>(cab, key);
    return string ? string->block.Release() : nullptr;
}

void PutString(ASCab cab, const char* key, const char* string)
{
    if (!string) return RemoveEntry(cab, key);
    CheckPut(cab, key);
    if (key && GetString(cab, key) == string) return;  // it is the entry's own already
    PutValue(cab, key, CabString{CSharedBlock(const_cast<char*>(string), std::char_traits<char>::length(string))});
}

const void* Bytes(const CabBinary* binary, ASTArraySize* size)
{
    if (size) *size = binary ? static_cast<ASTArraySize>(binary->block.Size()) : 0;
    return binary ? binary->block.Bytes() : nullptr;
}

const void* GetBinary(ASConstCab cab, const char* key, ASTArraySize* size)
{
    return Bytes(ValueAt<CabBinary>(cab, key), size);
}

void* GetBinaryCopy(ASConstCab cab, const char* key, ASTArraySize* size)
{
    const CabBinary* const binary = ValueAt<CabBinary>(cab, key);
    return Bytes(binary, size) ? SharedCopy(binary->block.View()) : nullptr;
}

void* DetachBinary(ASCab cab, const char* key, ASTArraySize* size)
{
    auto binary = DetachAs<CabBinary>(cab, key);
    Bytes(binary ? &*binary : nullptr, size);
    return binary ? binary->block.Release() : nullptr;
}

void PutBinary(ASCab cab, const char* key, void* bytes, ASTArraySize size)
{
    if (!bytes) return RemoveEntry(cab, key);
    Require(size >= 0, "the size of the bytes is negative");
    CheckPut(cab, key);
    if (key && GetBinary(cab, key, nullptr) == bytes) return;
    PutValue(cab, key, CabBinary{CSharedBlock(bytes, static_cast<std::size_t>(size))});
}

// ---- texts, cabs, pointers

ASText GetText(ASConstCab cab, const char* key)
{
    CHostText* const text = CabAt(cab).GetText(KeyOf(key));
    return text ? TextHandle(*text) : nullptr;
}

ASText DetachText(ASCab cab, const char* key)
{
    const auto text = DetachAs<CHostText*>(cab, key);
    return text ? TextHandle(**text) : nullptr;
}

void PutText(ASCab cab, const char* key, ASText text)
{
    if (!text) return RemoveEntry(cab, key);
    PutValue(cab, key, &TextAt(text));
}

ASCab GetCab(ASConstCab cab, const char* key)
{
    CCabinet* const nested = CabAt(cab).GetCab(KeyOf(key));
    return nested ? CabHandle(*nested) : nullptr;
}

ASCab DetachCab(ASCab cab, const char* key)
{
    const auto nested = DetachAs<CCabinet*>(cab, key);
    return nested ? CabHandle(**nested) : nullptr;
}

void PutCab(ASCab cab, const char* key, ASCab nested)
{
    if (!nested) return RemoveEntry(cab, key);
    PutValue(cab, key, &CabAt(nested));
}

const CabPointer* PointerAt(ASConstCab cab, const char* key) { return ValueAt<CabPointer>(cab, key); }

void* GetPointer(ASConstCab cab, const char* key, const char* type)
{
    Require(type != nullptr, "a pointer is read by the name of its type");
    return CabAt(cab).GetPointer(KeyOf(key), type);
}

/// The caller gets the target: with the last reference it is his to free, no destroy procedure runs.
void* DetachPointer(ASCab cab, const char* key, const char* type, ASBool* noReferences)
{
    if (noReferences) *noReferences = 0;
    if (!GetPointer(cab, key, type)) return nullptr;
    const auto pointer = DetachAs<CabPointer>(cab, key);
    if (!pointer) return nullptr;
    if (noReferences) *noReferences = pointer->target.use_count() == 1;
    return pointer->target->pointer;
}

void PutPointer(ASCab cab, const char* key, const char* type, void* pointer, ASCabPointerDestroyProc destroy)
{
    if (!pointer) return RemoveEntry(cab, key);
    Require(type != nullptr, "a pointer is stored with the name of its type");
    if (key) return CabAt(cab).PutPointer(key, type, pointer, destroy);
    PutValue(cab, key, CabPointer{type, std::make_shared<CabPointer::Target>(CabPointer::Target{pointer, destroy})});
}

ASCabPointerDestroyProc PointerDestroyProc(ASConstCab cab, const char* key)
{
    const CabPointer* const pointer = PointerAt(cab, key);
    return pointer ? pointer->target->destroy : nullptr;
}

const char* PointerType(ASConstCab cab, const char* key)
{
    const CabPointer* const pointer = PointerAt(cab, key);
    return pointer ? pointer->type.c_str() : nullptr;
}

void OfferWholeCabs(CTables& tables)
{
    OFFER(tables, ASExtra, ASCabNew, NewCab);
    OFFER(tables, ASExtra, ASCabFromEntryList, FromEntryList);
    OFFER(tables, ASExtra, ASCabDestroy, DestroyCab);
    OFFER(tables, ASExtra, ASCabNumEntries, NumEntries);
    OFFER(tables, ASExtra, ASCabKnown, Known);
    OFFER(tables, ASExtra, ASCabGetType, ValueType);
    OFFER(tables, ASExtra, ASCabEnum, Enum);
    OFFER(tables, ASExtra, ASConstCabEnum, EnumConst);
    OFFER(tables, ASExtra, ASCabRemove, Remove);
    OFFER(tables, ASExtra, ASCabRename, Rename);
    OFFER(tables, ASExtra, ASCabMakeEmpty, MakeEmpty);
    OFFER(tables, ASExtra, ASCabDestroyEmpties, DestroyEmpties);
    OFFER(tables, ASExtra, ASCabCopy, Copy);
    OFFER(tables, ASExtra, ASCabDup, Dup);
    OFFER(tables, ASExtra, ASCabValueEqual, ValueEqual);
    OFFER(tables, ASExtra, ASCabEqual, Equal);
    OFFER(tables, ASExtra, ASCabMunge, Munge);
}

void OfferScalars(CTables& tables)
{
    OFFER(tables, ASExtra, ASCabGetBool, GetBool);
    OFFER(tables, ASExtra, ASCabGetInt, GetInt);
    OFFER(tables, ASExtra, ASCabGetUns, GetUns);
    OFFER(tables, ASExtra, ASCabGetInt64, GetInt64);
    OFFER(tables, ASExtra, ASCabGetUns64, GetUns64);
    OFFER(tables, ASExtra, ASCabGetDouble, GetDouble);
    OFFER(tables, ASExtra, ASCabGetAtom, GetAtom);
    OFFER(tables, ASExtra, ASCabPutBool, PutBool);
    OFFER(tables, ASExtra, ASCabPutInt, PutInt);
    OFFER(tables, ASExtra, ASCabPutUns, PutUns);
    OFFER(tables, ASExtra, ASCabPutInt64, PutInt64);
    OFFER(tables, ASExtra, ASCabPutUns64, PutUns64);
    OFFER(tables, ASExtra, ASCabPutDouble, PutDouble);
    OFFER(tables, ASExtra, ASCabPutAtom, PutAtom);
    OFFER(tables, ASExtra, ASCabPutNull, PutNull);
}

void OfferOwnedValues(CTables& tables)
{
    OFFER(tables, ASExtra, ASCabGetString, GetString);
    OFFER(tables, ASExtra, ASCabGetStringCopy, GetStringCopy);
    OFFER(tables, ASExtra, ASCabDetachString, DetachString);
    OFFER(tables, ASExtra, ASCabPutString, PutString);
    OFFER(tables, ASExtra, ASCabGetBinary, GetBinary);
    OFFER(tables, ASExtra, ASCabGetBinaryCopy, GetBinaryCopy);
    OFFER(tables, ASExtra, ASCabDetachBinary, DetachBinary);
    OFFER(tables, ASExtra, ASCabPutBinary, PutBinary);
    OFFER(tables, ASExtra, ASCabGetText, GetText);
    OFFER(tables, ASExtra, ASCabDetachText, DetachText);
    OFFER(tables, ASExtra, ASCabPutText, PutText);
    OFFER(tables, ASExtra, ASCabGetCab, GetCab);
    OFFER(tables, ASExtra, ASCabDetachCab, DetachCab);
    OFFER(tables, ASExtra, ASCabPutCab, PutCab);
    OFFER(tables, ASExtra, ASCabGetPointerRaw, GetPointer);
    OFFER(tables, ASExtra, ASCabDetachPointerRaw, DetachPointer);
    OFFER(tables, ASExtra, ASCabPutPointerRaw, PutPointer);
    OFFER(tables, ASExtra, ASCabGetPointerDestroyProc, PointerDestroyProc);
    OFFER(tables, ASExtra, ASCabGetPointerType, PointerType);
}

}  // namespace

void OfferCabSlots(CTables& tables)
{
    OfferWholeCabs(tables);
    OfferScalars(tables);
    OfferOwnedValues(tables);
}

}  // namespace openhost
