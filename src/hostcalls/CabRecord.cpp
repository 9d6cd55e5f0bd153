#include "hostcalls/CabRecord.h"

#include "common/SettingsRecord.h"
#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"

namespace {

void PutFromCab(CSettingsRecord& record, const std::string& key, CCabView cab)
{
    const char* const name = key.c_str();
    switch (cab.Type(name)) {
        case kASValueBool:
            record.PutBool(key, cab.Bool(name, false));
            break;
        case kASValueInteger:
            record.PutInt(key, cab.Int(name, 0));
            break;
        case kASValueDouble:
            record.PutDouble(key, cab.Double(name, 0));
            break;
        case kASValueAtom:
            record.PutAtom(key, AtomText(cab.Atom(name).value_or(kNullAtom)));
            break;
        case kASValueString:
            record.PutString(key, cab.String(name).value_or(""));
            break;
        case kASValueText:
            record.PutWide(key, cab.TextUtf8(name).value_or(""));
            break;
        case kASValueBinary:
            record.PutBinary(key, cab.Binary(name).value_or(""));
            break;
        case kASValueNull:
            record.PutNull(key);
            break;
        case kASValueCabinet:
            record.PutRecord(key, RecordFromCab(cab.Cab(name)));
            break;
        default:
            break;
    }
}

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

CSettingsRecord RecordFromCab(CCabView cab)
{
    CSettingsRecord record;
    for (const std::string& key : cab.Keys()) PutFromCab(record, key, cab);
    return record;
}

CCab CabFromRecord(const CSettingsRecord& record)
{
    CCab cab;
    for (const auto& entry : record.Entries()) std::visit(CabPut{cab.Edit(), entry.key.c_str()}, entry.value);
    return cab;
}
