#pragma once

#include <string>
#include <vector>

#include "hostapi/HostRecords.h"
#include "openhost/core/Handles.h"

namespace openhost {

/// A document view without a window.
struct CView {
    PDDoc document = nullptr;
    std::string title;       // as given, or the file's name (UTF-8)
    std::string clientName;  // host encoding
    bool readOnly = false;
    bool dead = false;
};

/// All views, one for each document at most. A view owns one opening of its document and closes it.
class CViews {
public:
    /// Makes a view of an open document and takes its opening over. The view that the document already has is
    /// answered as it is. Notifies of the opening before and after.
    AVDoc OpenFromDocument(PDDoc document, const std::string& title);
    /// Opens the file, asking for its password with the host's own prompt, and makes a view. Raises when the file
    /// cannot be opened. A file that has a view already gives that view.
    AVDoc OpenFromFile(ASPathName path, const std::string& title);
    /// Closes view and document. Without a person to ask, a changed document whose changes were not given up stays
    /// open: the answer is false. A raise (something of the document is in use) leaves both as they were.
    bool Close(AVDoc handle, bool giveUpChanges);

    CView& At(AVDoc view) const { return m_views.At(view); }
    /// Null when the document has no view.
    AVDoc Of(PDDoc document) const;
    /// In the order in which they were opened.
    const std::vector<AVDoc>& All() const { return m_order; }
    /// The view opened last, or null.
    AVDoc Front() const { return m_order.empty() ? nullptr : m_order.back(); }

private:
    AVDoc Add(PDDoc document, const std::string& title);

    CHandles<CView, AVDoc> m_views{"document view"};
    std::vector<AVDoc> m_order;
};

}  // namespace openhost
