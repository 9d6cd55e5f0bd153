#ifndef FERRULE_OPENHOST_CORE_RECORDS_H
#define FERRULE_OPENHOST_CORE_RECORDS_H

#include <cstddef>

namespace openhost {

/// A member of a plug-in's record that begins with or contains its size; null (or 0) when the record ends before the
/// member does. A record may end exactly behind it.
template <class Record, class Member>
Member MemberOf(const Record* record, Member Record::*member)
{
    const auto* const start = reinterpret_cast<const char*>(record);
    const auto offset = static_cast<std::size_t>(reinterpret_cast<const char*>(&(record->*member)) - start);
    return offset + sizeof(Member) <= static_cast<std::size_t>(record->size) ? record->*member : Member{};
}

}  // namespace openhost

#endif
