// What a script changes besides the document information, kept until the script has come to its end.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "openhost/pdf/OpenSettings.h"
#include "openhost/pdf/PageBoxes.h"

namespace openhost {

/// The document as the script sees it: with what the script has set. Pages (from 0) must exist. What sets something
/// fails with std::runtime_error when the document must not be changed.
class CScriptChanges {
public:
    /// Borrows the document.
    explicit CScriptChanges(CPdfDocument& document) : m_document(document) {}

    bool IsEmpty() const { return m_boxes.empty() && !m_layout && !m_view; }

    int Rotation(int page0) { return Boxes().Rotation(page0); }
    /// In user space.
    PageBox Box(int page0, BoxKind kind);
    /// Nothing takes the box away; the media box cannot be set.
    void SetBox(int page0, BoxKind kind, const std::optional<PageBox>& box);

    std::string Layout();
    void SetLayout(const std::string& name);
    /// Nothing when the document leaves it to the reader.
    std::optional<OpenView> View();
    void SetView(const OpenView& view);

    /// Does it to the document; answers whether that changed.
    bool Apply();

private:
    CPageBoxes& Boxes();
    void CheckMayChange() const;

    CPdfDocument& m_document;
    std::optional<CPageBoxes> m_present;
    std::map<std::pair<int, BoxKind>, std::optional<PageBox>>
        m_boxes;  // the crop box of a page before those inside it
    std::optional<std::string> m_layout;
    std::optional<OpenView> m_view;
};

}  // namespace openhost
