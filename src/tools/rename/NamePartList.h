#pragma once

#include <vector>

#include "naming/FileNamePart.h"
#include "ui/Windows.h"

/// The part of a dialog in which a user puts filename components together: a list of them, and the buttons that
/// change it.
class CNamePartList {
public:
    /// `parts` are changed at once and outlive the list. `depth`: how many lookups they stand in, and 1.
    CNamePartList(DialogServices services, std::vector<CFileNamePart>& parts, int depth);
    CNamePartList(const CNamePartList&) = delete;
    CNamePartList& operator=(const CNamePartList&) = delete;

    /// "parts" and its buttons; their ids are once in a dialog only.
    [[nodiscard]] Group Describe(const char* title, int lines);
    /// After `parts` became others.
    void Reset() { m_selected.clear(); }

private:
    void Add();
    void Edit();
    void Duplicate();
    void Delete();
    void Clear();
    void MoveUp() { Move(-1); }
    void MoveDown() { Move(1); }
    void Move(int by);

    [[nodiscard]] FormControl PlainButton(const char* label, void (CNamePartList::*act)());
    [[nodiscard]] bool IsSelected(const char* request);
    [[nodiscard]] std::size_t Selected() const { return m_selected.front(); }
    void Insert(std::size_t place, CFileNamePart part);

    DialogServices m_services;
    std::vector<CFileNamePart>& m_parts;
    int m_depth;
    std::vector<std::size_t> m_selected;
};
