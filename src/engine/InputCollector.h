// The input files of a run: where they come from, which of them a run takes, and in which order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "base/Expected.h"
#include "engine/Work.h"

// Many paths, each once, in little memory.

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

// Collects the input files of a run from files and folders.

struct CollectorOptions {
    std::vector<std::string> extensions;  // accepted in folders, without dots, in order; "*" accepts every file
    bool subfolders = true;
    /// Folders that are not entered from one above them, wherever a link to them stands: results go there.
    std::vector<std::string> leftOut = {};
};

struct UnreadableFolder {
    std::string path;
    int errorNumber = 0;
};

/// The list of input files, each path text at most once.
///
/// Of a folder come first all files of the first extension: those of the folder itself, then those of each subfolder,
/// depth first and in the order in which the system module lists folders; then the files of the next extension from
/// the top again. Letter case of extensions does not count. Hidden files and folders are left out. A folder that is
/// reached a second time, over a link, is not entered again. A folder that is left out may still be named itself.
/// Left out are also the folders in which runs keep originals.
class CInputCollector {
public:
    explicit CInputCollector(CollectorOptions options);

    /// Adds the files of a folder, or the path itself when it is no folder, whatever its extension and even when
    /// nothing is there.
    void AddPath(const std::string& path);
    /// Adds the path itself, whatever stands there.
    void AddFile(const std::string& path);
    /// Of several names of one file that are in the list only one stays: its own rather than that of a link to it,
    /// else the first. What does not exist stays.
    void KeepOneNameOfEachFile();

    const CPathStore& Paths() const { return m_paths; }
    /// The names of their own (hard links) among those that did not stay.
    const std::vector<std::string>& OtherNames() const { return m_otherNames; }
    /// Whether the path was given to `AddPath` and taken as a file.
    bool IsNamedFile(std::size_t index) const { return index < m_named.size() && m_named[index]; }
    const std::vector<UnreadableFolder>& Unreadable() const { return m_unreadable; }
    /// The folders that were not entered because they are left out, each once.
    const std::vector<std::string>& LeftOut() const { return m_leftOut; }

private:
    /// What one walk over a folder has found, in order.
    struct Walk {
        std::unordered_set<std::string> entered;
        std::vector<CPathStore::Item> files;
    };

    void ReadFolder(const std::string& path, Walk& walk);
    bool IsWanted(const std::string& name) const;

    CollectorOptions m_options;
    std::unordered_set<std::string> m_leftOutPlaces;  // where they really are
    CPathStore m_paths;
    std::vector<bool> m_named;  // by index of m_paths; may be shorter
    std::vector<std::string> m_otherNames;
    std::vector<UnreadableFolder> m_unreadable;
    std::vector<std::string> m_leftOut;
};

// Where a run takes its input files from.

struct RunInput {
    std::string path;
    int number = 0;                // in the whole run, from 1
    bool finalActionOnly = false;  // its result is there already
};

/// Hands out the input files of one run, one by one. May throw CHostException.
class CInputSource {
public:
    virtual ~CInputSource() = default;

    /// The number of files of the whole run, also of those that somebody else processes. Asked once, before Next.
    virtual int Total() = 0;

    /// The next file to process; nothing when there is none left or the run is to end.
    virtual std::optional<RunInput> Next() = 0;
};

// Finds the input files of a run.

class CLogWriter;

/// Collects the input files, in the order in which they are to be processed; none when the place is there and holds
/// none. Fails, logged, when there is no place to look at. Folders that are written to are left out, logged, of the
/// folders around them. `extensions`: the accepted ones. Throws CHostException.
[[nodiscard]] Expected<CInputCollector> CollectInputFiles(const ExecutorSettings& settings, const CWork& work,
                                                          const std::vector<std::string>& extensions,
                                                          CLogWriter& log);

/// The accepted extensions, without dots: those that the settings allow, or else those of the work. Throws
/// CHostException.
[[nodiscard]] std::vector<std::string> InputExtensions(const ExecutorSettings& settings, const CWork& work,
                                                       CLogWriter& log);

/// The files that were collected.
class CCollectedInputs final : public CInputSource {
public:
    explicit CCollectedInputs(CInputCollector collector) : m_collector(std::move(collector)) {}
    int Total() override { return static_cast<int>(m_collector.Paths().Size()); }
    std::optional<RunInput> Next() override;

private:
    CInputCollector m_collector;
    std::size_t m_next = 0;
};
