// Many paths, each once, in little memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// A list of paths without duplicates. A folder's text is kept once for all its files, a name once, and nothing else
/// but a few bytes for each path. Paths are bytes and are compared as such.
class CPathStore {
public:
    /// A name in a folder of the store; valid as long as the store.
    struct Item {
        const char* name;
        std::uint32_t length;
        std::uint32_t folder;
    };

    CPathStore() = default;
    CPathStore(CPathStore&&) = default;
    CPathStore& operator=(CPathStore&&) = default;

    /// The number of a folder; `text` ends with its separator, or is empty.
    std::uint32_t FolderNumber(const std::string& text);
    /// Keeps a name, which must not hold a separator, without adding it to the list.
    Item Hold(std::uint32_t folder, std::string_view name);
    /// Adds to the end of the list; false when the list has that path already.
    bool Add(const Item& item);
    bool AddPath(std::string_view path);

    std::size_t Size() const { return m_items.size(); }
    std::string Path(std::size_t index) const;
    std::string_view Name(std::size_t index) const { return {m_items[index].name, m_items[index].length}; }
    std::uint32_t FolderOfItem(std::size_t index) const { return m_items[index].folder; }
    std::size_t Folders() const { return m_folders.size(); }
    const std::string& FolderText(std::uint32_t folder) const { return *m_folders[folder]; }

private:
    char* Space(std::size_t length);
    std::size_t Place(const Item& item) const;
    void Grow();

    std::unordered_map<std::string, std::uint32_t> m_folderNumbers;
    std::vector<const std::string*> m_folders;  // the keys of the map, by number
    std::vector<std::unique_ptr<char[]>> m_blocks;
    std::size_t m_left = 0;  // of the last block
    std::vector<Item> m_items;
    std::vector<std::uint32_t> m_table;  // index + 1 of the item at each place, 0 for none; never full
};
