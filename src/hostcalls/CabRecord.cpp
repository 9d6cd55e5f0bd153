#include "hostcalls/CabRecord.h"

#include "hostapi/HostConstants.h"
#include "hostcalls/Atoms.h"
#include "hostcalls/HostFrame.h"

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
