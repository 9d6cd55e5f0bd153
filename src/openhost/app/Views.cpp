#include "openhost/app/Views.h"

#include <algorithm>
#include <cstring>

#include "openhost/app/Events.h"
#include "openhost/app/Slots.h"
#include "openhost/core/Host.h"
#include "openhost/documents/Documents.h"
#include "openhost/files/FilePaths.h"
#include "openhost/files/Files.h"
#include "openhost/values/Text.h"

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

namespace {

CViews& Views() { return Part<CViews>(); }
std::string TitleOf(ASConstText title) { return title ? TextAt(title).Utf8() : std::string(); }

void ApplyParams(AVDoc view, AVDocOpenParams params)
{
    if (!params) return;
    Require(params->size >= offsetof(AVDocOpenParamsRec, useReadOnly), "unusable parameters for opening a view");
    const bool hasReadOnly = params->size >= offsetof(AVDocOpenParamsRec, useViewType);
    if (hasReadOnly && params->useReadOnly) Views().At(view).readOnly = params->readOnly != 0;
}

AVDoc OpenFromFileWithParams(ASPathName path, ASFileSys fileSys, ASText title, AVDocOpenParams params)
{
    RequireFileSys(fileSys);
    const AVDoc view = Views().OpenFromFile(path, TitleOf(title));
    ApplyParams(view, params);
    return view;
}

AVDoc OpenFromFile(ASPathName path, ASFileSys fileSys, ASText title)
{
    return OpenFromFileWithParams(path, fileSys, title, nullptr);
}

AVDoc OpenFromOpenFile(ASFile file, ASText title, AVDocOpenParams params)
{
    const ASPathName path = NewPath(FileAt(file).path.Native());
    const std::unique_ptr<std::remove_pointer_t<ASPathName>, void (*)(ASPathName)> released(path, &ReleasePath);
    return OpenFromFileWithParams(path, nullptr, title, params);
}

AVDoc OpenFromDocumentWithParams(PDDoc document, ASText title, AVDocOpenParams params)
{
    const AVDoc view = Views().OpenFromDocument(document, TitleOf(title));
    ApplyParams(view, params);
    return view;
}

AVDoc OpenFromDocument(PDDoc document, ASText title) { return OpenFromDocumentWithParams(document, title, nullptr); }

ASBool Close(AVDoc view, ASBool noSave) { return Views().Close(view, noSave != 0); }
PDDoc DocumentOf(AVDoc view) { return Views().At(view).document; }
ASBool IsReadOnly(AVDoc view) { return Views().At(view).readOnly; }
void SetReadOnly(AVDoc view, ASBool readOnly) { Views().At(view).readOnly = readOnly != 0; }
ASBool IsDead(AVDoc view) { return Views().At(view).dead; }
void SetDead(AVDoc view, ASBool dead) { Views().At(view).dead = dead != 0; }
AVDoc Active() { return Views().Front(); }
AVTArraySize Count() { return static_cast<AVTArraySize>(Views().All().size()); }

AVDoc ViewOf(PDDoc document)
{
    static_cast<void>(DocumentAt(document));
    return Views().Of(document);
}

ASBool DisplayTitle(AVDoc view, ASText title)
{
    TextAt(title).SetUtf8(Views().At(view).title);
    return 1;
}

void Enumerate(AVDocEnumProc procedure, void* clientData)
{
    Require(procedure != nullptr, "no procedure to call");
    const auto views = Views().All();
    for (AVDoc view : views)
        if (!CallPlugIn(procedure, view, clientData)) return;
}

AVTArraySize ClientName(AVDoc view, char* buffer, AVTBufferSize size)
{
    const std::string& name = Views().At(view).clientName;
    if (!buffer || size <= 0) return static_cast<AVTArraySize>(name.size());
    const std::size_t length = std::min(name.size(), static_cast<std::size_t>(size) - 1);
    std::memcpy(buffer, name.data(), length);
    buffer[length] = 0;
    return static_cast<AVTArraySize>(length);
}

void SetClientName(AVDoc view, char* name) { Views().At(view).clientName = name ? name : ""; }

/// Saves the document in its own file, as a person would with "Save".
ASBool Save(AVDoc view)
{
    Part<CDocuments>().Save(Views().At(view).document, {});
    return 1;
}

}  // namespace

void OfferViewSlots(CTables& tables)
{
    OFFER(tables, AcroView, AVDocOpenFromFileWithParams, OpenFromFileWithParams);
    OFFER(tables, AcroView, AVDocOpenFromFile, OpenFromFile);
    OFFER(tables, AcroView, AVDocOpenFromASFileWithParams, OpenFromOpenFile);
    OFFER(tables, AcroView, AVDocOpenFromPDDocWithParams, OpenFromDocumentWithParams);
    OFFER(tables, AcroView, AVDocOpenFromPDDoc, OpenFromDocument);
    OFFER(tables, AcroView, AVDocClose, Close);
    OFFER(tables, AcroView, AVDocGetPDDoc, DocumentOf);
    OFFER(tables, AcroView, AVDocFromPDDoc, ViewOf);
    OFFER(tables, AcroView, AVDocIsReadOnly, IsReadOnly);
    OFFER(tables, AcroView, AVDocSetReadOnly, SetReadOnly);
    OFFER(tables, AcroView, AVDocIsDead, IsDead);
    OFFER(tables, AcroView, AVDocSetDead, SetDead);
    OFFER(tables, AcroView, AVDocGetDisplayTitle, DisplayTitle);
    OFFER(tables, AcroView, AVDocGetClientName, ClientName);
    OFFER(tables, AcroView, AVDocSetClientName, SetClientName);
    OFFER(tables, AcroView, AVDocDoSave, Save);
    OFFER(tables, AcroView, AVAppGetActiveDoc, Active);
    OFFER(tables, AcroView, AVAppGetNumDocs, Count);
    OFFER(tables, AcroView, AVAppEnumDocs, Enumerate);
}

}  // namespace openhost
