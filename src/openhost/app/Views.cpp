#include "openhost/app/Views.h"

#include <algorithm>

#include "openhost/app/Notifications.h"
#include "openhost/core/Diagnostics.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"

namespace openhost {

AVDoc CViews::Of(PDDoc document) const
{
    for (AVDoc view : m_order)
        if (At(view).document == document) return view;
    return nullptr;
}

AVDoc CViews::Add(PDDoc document, const std::string& title)
{
    auto view = std::make_unique<CView>();
    view->document = document;
    const std::string& path = DocumentAt(document).pdf.Path();
    view->title = title.empty() && !path.empty() ? CFilePath(path).Name() : title;
    const AVDoc handle = m_views.Add(std::move(view));
    m_order.push_back(handle);
    Notify(AVDocDidOpenNSEL, handle, ASInt32{0});
    return handle;
}

AVDoc CViews::OpenFromDocument(PDDoc document, const std::string& title)
{
    static_cast<void>(DocumentAt(document));
    if (const AVDoc present = Of(document)) return present;
    Notify(AVDocWillOpenFromPDDocNSEL, document);
    return Add(document, title);
}

AVDoc CViews::OpenFromFile(ASPathName path, const std::string& title)
{
    auto& documents = Part<CDocuments>();
    const std::string native = PathAt(path).Native();
    Notify(AVDocWillOpenFromFileNSEL, path, DefaultFileSys());
    const auto ask = [&](PDDoc document) { return documents.AskPassword(document); };
    const PDDoc document = documents.Open(native, true, ask);
    if (const AVDoc present = Of(document)) {
        documents.Close(document);  // the view has an opening of its own
        return present;
    }
    return Add(document, title);
}

bool CViews::Close(AVDoc handle, bool giveUpChanges)
{
    const CView& view = At(handle);
    const PDDoc document = view.document;
    auto& documents = Part<CDocuments>();
    if (!giveUpChanges && documents.At(document).pdf.IsModified()) {
        Diagnose("alert: \"" + view.title + "\" has changes that are not saved; it stays open");
        return false;
    }
    Notify(AVDocWillCloseNSEL, handle);
    if (!m_views.Find(handle)) return true;  // whoever heard of it has closed it already
    documents.Close(document);
    Notify(AVDocDidCloseNSEL, handle);
    std::erase(m_order, handle);
    m_views.Take(handle);
    return true;
}

}  // namespace openhost
