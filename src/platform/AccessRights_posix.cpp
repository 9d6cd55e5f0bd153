#include "platform/AccessRights_posix.h"

#include <linux/posix_acl.h>
#include <linux/posix_acl_xattr.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "platform/FileCalls_posix.h"

namespace platform {
namespace {

constexpr char kAccessList[] = "system.posix_acl_access";
constexpr unsigned kAll = 7, kReadAndWrite = 6, kRead = 4;
constexpr mode_t kOwnerBits = 0700;
constexpr std::size_t kHeaderBytes = 4, kEntryBytes = 8;

// Numbers in an access list have their low byte first, whatever the machine's order is.
void Append(std::string& bytes, std::uint32_t number, int size)
{
    for (int byte = 0; byte < size; ++byte) bytes += static_cast<char>(number >> (8 * byte));
}

std::uint32_t NumberAt(const std::string& bytes, std::size_t at, int size)
{
    std::uint32_t number = 0;
    for (int byte = size - 1; byte >= 0; --byte)
        number = number << 8 | static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(byte)]);
    return number;
}

int AskStatus(const std::string& path, struct stat& status) { return calls::Status(path, status); }
int AskStatus(int descriptor, struct stat& status) { return calls::StatusOf(descriptor, status); }

bool HasNoLists(int error) { return error == ENODATA || error == ENOTSUP || error == ENOSYS; }

}  // namespace

template <class Subject>
FileResult CAccessRights::Read(const Subject& subject)
{
    struct stat status;
    if (AskStatus(subject, status) != 0) return {errno};
    m_owner = status.st_uid;
    m_group = status.st_gid;
    TakeMode(status.st_mode);
    std::string list;
    if (calls::GetAttribute(subject, kAccessList, list) != 0) return {HasNoLists(errno) ? 0 : errno};
    if (!TakeList(list)) *this = OwnersOnly();
    return {};
}

FileResult CAccessRights::ReadFrom(const std::string& path) { return Read(path); }

FileResult CAccessRights::ReadFrom(int descriptor) { return Read(descriptor); }

void CAccessRights::TakeMode(mode_t mode)
{
    const auto part = [&](int shift) { return static_cast<std::uint16_t>(mode >> shift & kAll); };
    constexpr auto kNobody = static_cast<std::uint32_t>(ACL_UNDEFINED_ID);
    m_entries = {{ACL_USER_OBJ, part(6), kNobody}, {ACL_GROUP_OBJ, part(3), kNobody}, {ACL_OTHER, part(0), kNobody}};
    m_isList = false;
}

bool CAccessRights::TakeList(const std::string& bytes)
{
    const bool whole = bytes.size() >= kHeaderBytes && (bytes.size() - kHeaderBytes) % kEntryBytes == 0;
    if (!whole || NumberAt(bytes, 0, 4) != POSIX_ACL_XATTR_VERSION) return false;
    std::vector<Entry> entries;
    for (std::size_t at = kHeaderBytes; at < bytes.size(); at += kEntryBytes)
        entries.push_back({static_cast<std::uint16_t>(NumberAt(bytes, at, 2)),
                           static_cast<std::uint16_t>(NumberAt(bytes, at + 2, 2)), NumberAt(bytes, at + 4, 4)});
    m_isList = entries.size() > m_entries.size();
    m_entries = std::move(entries);
    return true;
}

std::string CAccessRights::ListBytes() const
{
    std::string bytes;
    Append(bytes, POSIX_ACL_XATTR_VERSION, 4);
    for (const Entry& entry : m_entries) {
        Append(bytes, entry.tag, 2);
        Append(bytes, entry.rights, 2);
        Append(bytes, entry.id, 4);
    }
    return bytes;
}

mode_t CAccessRights::Mode() const
{
    mode_t mode = 0;
    for (const Entry& entry : m_entries) {
        if (entry.tag == ACL_USER_OBJ) mode |= mode_t{entry.rights} << 6;
        if (entry.tag == (m_isList ? ACL_MASK : ACL_GROUP_OBJ)) mode |= mode_t{entry.rights} << 3;
        if (entry.tag == ACL_OTHER) mode |= entry.rights;
    }
    return mode;
}

/// The mask bounds all entries of the list but those of the owner and the others.
unsigned CAccessRights::Effective(const Entry& entry) const
{
    if (entry.tag == ACL_USER_OBJ || entry.tag == ACL_OTHER) return entry.rights;
    unsigned rights = entry.rights;
    for (const Entry& mask : m_entries)
        if (mask.tag == ACL_MASK) rights &= mask.rights;
    return rights;
}

namespace {

bool IsUser(unsigned tag) { return tag == ACL_USER; }
bool IsGroup(unsigned tag) { return tag == ACL_GROUP || tag == ACL_GROUP_OBJ; }

}  // namespace

/// Whether my entry `mine` and the entry `theirs` of another file are about the same people.
bool CAccessRights::IsSame(const Entry& mine, const CAccessRights& other, const Entry& theirs) const
{
    if (IsUser(mine.tag)) return IsUser(theirs.tag) && mine.id == theirs.id;
    if (!IsGroup(mine.tag)) return mine.tag == theirs.tag;
    return IsGroup(theirs.tag) && GroupOf(mine) == other.GroupOf(theirs);
}

std::uint32_t CAccessRights::GroupOf(const Entry& entry) const
{
    return entry.tag == ACL_GROUP_OBJ ? m_group : entry.id;
}

bool CAccessRights::Names(const CAccessRights& other, const Entry& theirs) const
{
    return std::any_of(m_entries.begin(), m_entries.end(),
                       [&](const Entry& mine) { return IsSame(mine, other, theirs); });
}

/// What `other` certainly lets those do whom my entry `mine` is about. Whom it does not name may be in any group that
/// it names, and a member of a group may be named himself.
unsigned CAccessRights::LetBy(const CAccessRights& other, const Entry& mine) const
{
    if (IsUser(mine.tag) && mine.id == other.m_owner) return kAll;
    const bool isNamed = other.Names(*this, mine);
    unsigned rights = kAll;
    for (const Entry& theirs : other.m_entries) {
        if (theirs.tag == ACL_USER_OBJ || theirs.tag == ACL_MASK) continue;
        const bool bySelf = IsSame(mine, other, theirs);
        const bool byGroup = !isNamed && !IsUser(theirs.tag);
        const bool hidden = !IsUser(mine.tag) && !Names(other, theirs) && (IsUser(theirs.tag) || !IsGroup(mine.tag));
        if (bySelf || byGroup || hidden) rights &= other.Effective(theirs);
    }
    return rights;
}

CAccessRights CAccessRights::LimitedBy(const CAccessRights& other) const
{
    CAccessRights limited = *this;
    for (std::size_t at = 0; at < m_entries.size(); ++at) {
        const Entry& mine = m_entries[at];
        if (mine.tag == ACL_USER_OBJ || mine.tag == ACL_MASK) continue;
        const unsigned tooMuch = Effective(mine) & ~LetBy(other, mine) & kReadAndWrite;
        limited.m_entries[at].rights = static_cast<std::uint16_t>(mine.rights & ~tooMuch);
    }
    return limited;
}

CAccessRights CAccessRights::For(uid_t owner, gid_t group) const
{
    CAccessRights rights = *this;
    rights.m_owner = owner;
    rights.m_group = group;
    return rights;
}

CAccessRights CAccessRights::OwnersOnly() const
{
    CAccessRights rights = *this;
    rights.TakeMode(Mode() & kOwnerBits);
    return rights;
}

CAccessRights CAccessRights::WithOwner() const
{
    CAccessRights rights = *this;
    for (Entry& entry : rights.m_entries)
        if (entry.tag == ACL_USER_OBJ) entry.rights |= kReadAndWrite;
    return rights;
}

bool CAccessRights::LetsRead(uid_t user) const
{
    CAccessRights asker;
    asker.m_entries = {{ACL_USER, kRead, user}};
    return (asker.LetBy(*this, asker.m_entries.front()) & kRead) != 0;
}

FileResult CAccessRights::SetOn(int descriptor) const
{
    if (m_isList && calls::SetAttribute(descriptor, kAccessList, ListBytes()) == 0) return {};
    // A new file may have got a list from its folder.
    if (calls::RemoveAttribute(descriptor, kAccessList) != 0 && !HasNoLists(errno)) return {errno};
    return {calls::SetMode(descriptor, m_isList ? Mode() & kOwnerBits : Mode()) == 0 ? 0 : errno};
}

namespace {

constexpr std::string_view kLabel = "security.selinux";
constexpr std::string_view kModeList = "system.posix_acl_";  // CAccessRights has it

bool BelongsToDocument(std::string_view name)
{
    if (name.starts_with("user.") || name == kLabel) return true;
    // Access lists of other kinds, as network file systems have them.
    return name.starts_with("system.") && name.find("acl") != std::string_view::npos && !name.starts_with(kModeList);
}

}  // namespace

void CExtendedAttributes::ReadFrom(const std::string& path)
{
    m_values.clear();
    std::string names;
    m_complete = calls::ListAttributes(path, names) == 0 || errno == ENOTSUP || errno == ENOSYS;
    if (!m_complete) return;
    for (std::size_t at = 0; at < names.size(); at += std::string_view(names.c_str() + at).size() + 1) {
        const std::string name(names.c_str() + at);
        std::string value;
        if (!BelongsToDocument(name)) continue;
        if (calls::GetAttribute(path, name.c_str(), value) == 0)
            m_values.emplace_back(name, value);
        else if (errno != ENODATA && name != kLabel)
            m_complete = false;
    }
}

bool CExtendedAttributes::SetOn(int descriptor) const
{
    bool complete = m_complete;
    for (const auto& [name, value] : m_values) {
        const bool set = calls::SetAttribute(descriptor, name.c_str(), value) == 0;
        complete = complete && (set || name == kLabel);
    }
    return complete;
}

}  // namespace platform
