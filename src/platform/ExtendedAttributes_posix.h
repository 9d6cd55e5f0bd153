#pragma once

#include <string>
#include <utility>
#include <vector>

namespace platform {

/// The extended attributes that belong to a document and not to its present content: what users and programs noted
/// down with it, and labels of the system. Not the access list (see CAccessRights), and nothing that gives a program
/// rights or vouches for the content.
class CExtendedAttributes {
public:
    /// Links are followed.
    void ReadFrom(const std::string& path);
    /// Whether the file has all of them now. The system's label does not count: it gives one to each new file.
    bool SetOn(int descriptor) const;

private:
    std::vector<std::pair<std::string, std::string>> m_values;
    bool m_complete = true;  // everything could be read
};

}  // namespace platform
