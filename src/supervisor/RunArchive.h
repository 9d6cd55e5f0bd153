// What was done in earlier runs, packed, for whoever has to know it later. See docs/runs.md.
#pragma once

#include <string>

/// The packed runs lie in `folder`, each in a file "<end of the run>-<run>.jsonl.gz": manifest, then journal.
class CRunArchive {
public:
    explicit CRunArchive(std::string folder) : m_folder(std::move(folder)) {}

    /// Packs a run; an earlier pack of the same run goes. `run`: its id. Fails: a sentence, and nothing has changed.
    [[nodiscard]] std::string Keep(const std::string& run, const std::string& manifestPath,
                                   const std::string& journalPath) const;
    /// Whether the path is named like a packed run.
    [[nodiscard]] static bool IsPack(const std::string& path);
    /// Writes the journal of a packed run to a file. Fails with a sentence.
    [[nodiscard]] static std::string Unpack(const std::string& pack, const std::string& journalPath);
    [[nodiscard]] bool Has(const std::string& run) const;
    /// Removes packs that are neither among the newest 20 nor younger than 30 days, and the plain plans of runs, in
    /// the folders beside them, that came to their end as long ago and left nothing that could be done again.
    void RemoveOld() const;

private:
    void RemoveOldPacks() const;
    void RemoveOldUndos() const;
    void RemoveOldPlan(const std::string& folder) const;

    std::string m_folder;  // with its trailing separator
};
