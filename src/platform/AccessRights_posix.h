#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/Files.h"

namespace platform {

/// Who may do what with a file: its mode bits or, where it has one, its access list. Set-id bits are no part of it.
class CAccessRights {
public:
    /// Of a path, links followed. A list that cannot be understood counts as: the owner alone.
    FileResult ReadFrom(const std::string& path);
    FileResult ReadFrom(int descriptor);

    uid_t Owner() const { return m_owner; }
    gid_t Group() const { return m_group; }
    /// What the mode bits say, which for the group includes everybody whom the list names.
    mode_t Mode() const;
    bool LetsRead(uid_t user) const;

    /// The same bits and list on a file of these owners.
    CAccessRights For(uid_t owner, gid_t group) const;
    /// What is left when nobody but the owner may read or write unless `other` lets him. Less is left where that
    /// cannot be told, as for a user who may be in several groups.
    CAccessRights LimitedBy(const CAccessRights& other) const;
    CAccessRights OwnersOnly() const;
    /// The owner may also read and write.
    CAccessRights WithOwner() const;

    /// Gives the file these rights, and nobody more than these on the way there from rights of the owner alone. Where
    /// the file system does not take the list, it stays with the owner.
    FileResult SetOn(int descriptor) const;
    bool operator==(const CAccessRights&) const = default;

private:
    struct Entry {
        std::uint16_t tag = 0, rights = 0;
        std::uint32_t id = 0;
        bool operator==(const Entry&) const = default;
    };

    template <class Subject>
    FileResult Read(const Subject& subject);
    void TakeMode(mode_t mode);
    bool TakeList(const std::string& bytes);
    std::string ListBytes() const;
    unsigned Effective(const Entry& entry) const;
    std::uint32_t GroupOf(const Entry& entry) const;
    bool IsSame(const Entry& mine, const CAccessRights& other, const Entry& theirs) const;
    bool Names(const CAccessRights& other, const Entry& theirs) const;
    unsigned LetBy(const CAccessRights& other, const Entry& mine) const;

    uid_t m_owner = 0;
    gid_t m_group = 0;
    bool m_isList = false;         // more than mode bits can say
    std::vector<Entry> m_entries;  // as access lists have them, also for mode bits
};

/// The extended attributes that belong to a document and not to its present content: what users and programs noted
/// down with it, and labels of the system. Not the access list (see CAccessRights), and nothing that gives a program
/// rights or vouches for the content.
class CExtendedAttributes {
public:
    /// Links are followed.
    void ReadFrom(const std::string& path);
    const std::vector<std::pair<std::string, std::string>>& Values() const { return m_values; }
    /// Whether the file has all of them now. The system's label does not count: it gives one to each new file.
    bool SetOn(int descriptor) const;

private:
    std::vector<std::pair<std::string, std::string>> m_values;
    bool m_complete = true;  // everything could be read
};

}  // namespace platform
