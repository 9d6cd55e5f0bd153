#include <algorithm>
#include <cmath>
#include <cstring>

#include <qpdf/QPDF.hh>

#include "openhost/core/Atoms.h"
#include "openhost/documents/Documents.h"
#include "openhost/documents/Objects.h"
#include "openhost/documents/Slots.h"
#include "openhost/pdf/PageNames.h"
#include "openhost/values/Text.h"

namespace openhost {

std::pair<std::int32_t, std::int32_t> CObjects::Add(PDDoc document, QPDFObjectHandle object)
{
    if (object.isNull()) return {0, 0};
    auto [generation, isNew] = m_generations.try_emplace(document, m_lastGeneration + 1);
    if (isNew) ++m_lastGeneration;
    Numbered& held = m_byGeneration[generation->second];
    held.document = document;
    const auto next = static_cast<std::int32_t>(held.objects.size() + 1);
    if (object.isIndirect()) {
        const auto [known, first] = held.numbers.try_emplace(object.getObjGen(), next);
        if (!first) return {known->second, generation->second};
    }
    held.objects.push_back(object);
    return {next, generation->second};
}

HeldObject CObjects::FindNumbered(std::int32_t number, std::int32_t generation) const
{
    const auto held = m_byGeneration.find(generation);
    if (held == m_byGeneration.end() || number < 1 || static_cast<std::size_t>(number) > held->second.objects.size())
        return {};
    return {held->second.document, held->second.objects[static_cast<std::size_t>(number - 1)]};
}

void CObjects::Forget(PDDoc document)
{
    const auto generation = m_generations.find(document);
    if (generation == m_generations.end()) return;
    m_byGeneration.erase(generation->second);
    m_generations.erase(generation);
}

namespace {

CPdfDocument& PdfOf(PDDoc document) { return DocumentAt(document).pdf; }

template <class Handle>
HeldObject Held(Handle handle)
{
    return Part<CObjects>().Find(handle);
}

/// A dictionary that a plug-in means; raises genErrBadParm for anything else.
template <class Handle>
HeldObject DictionaryAt(Handle handle, const char* what)
{
    HeldObject held = Held(handle);
    if (!held.object.isDictionary()) Raise(genErrBadParm, std::string("not a living ") + what);
    return held;
}

template <class Handle>
Handle Hold(PDDoc document, QPDFObjectHandle object)
{
    return Part<CObjects>().Hold<Handle>(document, object);
}

// The low level: objects as such.

CosDoc LowLevelDocument(PDDoc document)
{
    DocumentAt(document);
    return reinterpret_cast<CosDoc>(document);
}

CosObj RootObject(CosDoc lowLevel)
{
    const PDDoc document = reinterpret_cast<PDDoc>(lowLevel);
    CPdfDocument& pdf = PdfOf(document);
    return Hold<CosObj>(document, Translated([&] { return pdf.Library().getRoot(); }));
}

CosType TypeOf(CosObj handle)
{
    switch (Held(handle).object.getTypeCode()) {
        case ::ot_integer:
            return CosInteger;
        case ::ot_real:
            return CosFixed;
        case ::ot_boolean:
            return CosBoolean;
        case ::ot_name:
            return CosName;
        case ::ot_string:
            return CosString;
        case ::ot_dictionary:
            return CosDict;
        case ::ot_array:
            return CosArray;
        case ::ot_stream:
            return CosStream;
        default:
            return CosNull;
    }
}

CosObj DictionaryEntry(CosObj dictionary, ASAtom key)
{
    HeldObject held = Held(dictionary);
    if (held.object.isStream()) held.object = held.object.getDict();
    if (!held.object.isDictionary()) Raise(cosErrExpectedDict, "not a living dictionary");
    return Hold<CosObj>(held.document, held.object.getKey('/' + AtomText(key)));
}

CosObj LookUpName(CosObj tree, char* name, ASInt32 length)
{
    const HeldObject held = DictionaryAt(tree, "name tree");
    const std::string key(Given(name, length));
    return Hold<CosObj>(held.document,
                        Translated([&] { return InNameTree(PdfOf(held.document), held.object, key); }));
}

PDNameTree NameTreeOf(PDDoc document, ASAtom which)
{
    CPdfDocument& pdf = PdfOf(document);
    return Hold<PDNameTree>(document, Translated([&] {
                                QPDFObjectHandle names = pdf.Library().getRoot().getKey("/Names");
                                QPDFObjectHandle tree =
                                    names.isDictionary() ? names.getKey('/' + AtomText(which)) : names;
                                return tree.isDictionary() ? tree : QPDFObjectHandle::newNull();
                            }));
}

ASBool IsNameTree(PDNameTree tree) { return Held(tree).object.isDictionary(); }

/// The plug-in may do anything in between, so it is called behind the library's back.
void EnumerateNames(PDNameTree tree, CosObjEnumProc visit, void* data)
{
    const HeldObject held = DictionaryAt(tree, "name tree");
    Require(visit != nullptr, "an enumeration needs a procedure");
    std::vector<std::pair<QPDFObjectHandle, QPDFObjectHandle>> names;
    Translated([&] {
        ForEachName(PdfOf(held.document), held.object, [&](QPDFObjectHandle key, QPDFObjectHandle value) {
            names.emplace_back(key, value);
            return true;
        });
    });
    for (const auto& [key, value] : names)
        if (!CallPlugIn(visit, Hold<CosObj>(held.document, key), Hold<CosObj>(held.document, value), data)) return;
}

void OfferObjectLevel(CTables& tables)
{
    OFFER(tables, PDModel, PDDocGetCosDoc, LowLevelDocument);
    OFFER(tables, PDModel, PDNameTreeLookup, LookUpName);
    OFFER(tables, PDModel, PDDocGetNameTree, NameTreeOf);
    OFFER(tables, PDModel, PDNameTreeIsValid, IsNameTree);
    OFFER(tables, PDModel, PDNameTreeEnum, EnumerateNames);
    OFFER(tables, Cos, CosDocGetRoot, RootObject);
    OFFER(tables, Cos, CosObjGetType, TypeOf);
    OFFER(tables, Cos, CosDictGet, DictionaryEntry);
}

// Bookmarks.

PDBookmark BookmarkRoot(PDDoc document)
{
    CPdfDocument& pdf = PdfOf(document);
    QPDFObjectHandle root = Translated([&] { return pdf.Library().getRoot().getKey("/Outlines"); });
    return Hold<PDBookmark>(document, root.isDictionary() ? root : QPDFObjectHandle::newNull());
}

ASBool IsBookmark(PDBookmark bookmark) { return Held(bookmark).object.isDictionary(); }

PDBookmark BookmarkByTitle(PDBookmark bookmark, const char* title, ASInt32 length, ASInt32 depth)
{
    const HeldObject from = DictionaryAt(bookmark, "bookmark");
    const std::u16string wanted = Utf16FromPdText(Given(title, length));
    QPDFObjectHandle found = QPDFObjectHandle::newNull();
    const auto visit = [&](QPDFObjectHandle candidate) {
        QPDFObjectHandle text = candidate.getKey("/Title");
        if (text.isString() && Utf16FromPdText(text.getStringValue()) == wanted) found = candidate;
        return found.isNull();
    };
    if (visit(from.object)) Translated([&] { ForEachBookmark(PdfOf(from.document), from.object, depth, visit); });
    return Hold<PDBookmark>(from.document, found);
}

/// A bookmark that has nothing but a destination goes to it.
PDAction BookmarkAction(PDBookmark bookmark)
{
    const HeldObject held = DictionaryAt(bookmark, "bookmark");
    QPDFObjectHandle dictionary = held.object, action = dictionary.getKey("/A");
    if (!action.isDictionary() && dictionary.hasKey("/Dest")) {
        action = QPDFObjectHandle::newDictionary();
        action.replaceKey("/S", QPDFObjectHandle::newName("/GoTo"));
        action.replaceKey("/D", dictionary.getKey("/Dest"));
    }
    return Hold<PDAction>(held.document, action.isDictionary() ? action : QPDFObjectHandle::newNull());
}

ASBool IsAction(PDAction action) { return Held(action).object.isDictionary(); }

ASAtom ActionSubtype(PDAction action)
{
    QPDFObjectHandle type = DictionaryAt(action, "action").object.getKey("/S");
    return type.isName() ? AtomFromText(type.getName().substr(1)) : kNullAtom;
}

PDViewDestination ActionDestination(PDAction action)
{
    const HeldObject held = DictionaryAt(action, "action");
    return Hold<PDViewDestination>(held.document, QPDFObjectHandle(held.object).getKey("/D"));
}

void OfferBookmarks(CTables& tables)
{
    OFFER(tables, PDModel, PDDocGetBookmarkRoot, BookmarkRoot);
    OFFER(tables, PDModel, PDBookmarkIsValid, IsBookmark);
    OFFER(tables, PDModel, PDBookmarkGetByTitle, BookmarkByTitle);
    OFFER(tables, PDModel, PDBookmarkGetAction, BookmarkAction);
    OFFER(tables, PDModel, PDActionIsValid, IsAction);
    OFFER(tables, PDModel, PDActionGetSubtype, ActionSubtype);
    OFFER(tables, PDModel, PDActionGetDest, ActionDestination);
}

// Destinations.

bool IsDestinationObject(QPDFObjectHandle object) { return object.isArray() || object.isName() || object.isString(); }

ASBool IsDestination(PDViewDestination destination) { return IsDestinationObject(Held(destination).object); }

PDViewDestination DestinationFromObject(CosObj object)
{
    HeldObject held = Held(object);
    if (held.object.isDictionary()) held.object = held.object.getKey("/D");  // as names have it
    return Hold<PDViewDestination>(held.document,
                                   IsDestinationObject(held.object) ? held.object : QPDFObjectHandle::newNull());
}

PDViewDestination ResolveDestination(PDViewDestination destination, PDDoc document)
{
    CPdfDocument& pdf = PdfOf(document);
    const QPDFObjectHandle given = Held(destination).object;
    return Hold<PDViewDestination>(document, Translated([&] { return ResolvedDestination(pdf, given); }));
}

constexpr double kFixedOne = 65536;

ASFixed FixedItem(QPDFObjectHandle array, int index)
{
    QPDFObjectHandle item = index < array.getArrayNItems() ? array.getArrayItem(index) : QPDFObjectHandle::newNull();
    if (!item.isNumber()) return fixedNegativeInfinity;
    const double value = std::round(item.getNumericValue() * kFixedOne);
    return static_cast<ASFixed>(std::clamp(value, -double{INT32_MAX}, double{INT32_MAX}));
}

/// Where each kind of fit has its numbers behind the page and the name; -1 where it has none.
struct FitNumbers {
    const char* fit;
    int left, top, right, bottom, zoom;
};
constexpr FitNumbers kFits[] = {{"/XYZ", 2, 3, -1, -1, 4},     {"/FitH", -1, 2, -1, -1, -1},
                                {"/FitV", 2, -1, -1, -1, -1},  {"/FitR", 2, 5, 4, 3, -1},
                                {"/FitBH", -1, 2, -1, -1, -1}, {"/FitBV", 2, -1, -1, -1, -1}};

void DestinationAttributes(PDViewDestination destination, ASInt32* page, ASAtom* fitType, ASFixedRect* rectangle,
                           ASFixed* zoom)
{
    const HeldObject held = Held(destination);
    QPDFObjectHandle array = held.object;
    if (!array.isArray()) Raise(genErrBadParm, "not a living destination that was resolved");
    const auto page0 = Translated([&] { return PageOfDestination(PdfOf(held.document), array); });
    if (page) *page = page0.value_or(-1);
    QPDFObjectHandle fit = array.getArrayNItems() > 1 ? array.getArrayItem(1) : QPDFObjectHandle::newNull();
    const std::string name = fit.isName() ? fit.getName() : "/Fit";
    if (fitType) *fitType = AtomFromText(name.substr(1));
    FitNumbers numbers{"", -1, -1, -1, -1, -1};
    for (const FitNumbers& known : kFits)
        if (name == known.fit) numbers = known;
    const auto at = [&](int index) { return index < 0 ? ASFixed{fixedNegativeInfinity} : FixedItem(array, index); };
    if (rectangle) *rectangle = {at(numbers.left), at(numbers.top), at(numbers.right), at(numbers.bottom)};
    if (zoom) *zoom = at(numbers.zoom);
}

void OfferDestinations(CTables& tables)
{
    OFFER(tables, PDModel, PDViewDestIsValid, IsDestination);
    OFFER(tables, PDModel, PDViewDestFromCosObj, DestinationFromObject);
    OFFER(tables, PDModel, PDViewDestResolve, ResolveDestination);
    OFFER(tables, PDModel, PDViewDestGetAttr, DestinationAttributes);
}

// Page labels.

/// The length of the label; with a buffer as much of it as fits, ended by a zero.
ASInt32 LabelOfPage(PDDoc document, ASInt32 page0, char* buffer, ASInt32 size)
{
    CPdfDocument& pdf = PdfOf(document);
    const auto labels = Translated([&] { return PageLabelsOf(pdf); });
    if (page0 < 0 || page0 >= static_cast<ASInt32>(labels.size()))
        Raise(pdErrInvalidPageNumber, pdf.Description() + ": there is no page " + std::to_string(page0 + 1LL));
    CHostText text;
    text.SetUtf8(labels[static_cast<std::size_t>(page0)]);
    const std::string bytes = PdTextFromUtf16(text.Utf16());
    if (buffer && size > 0) {
        const std::size_t copied = std::min(bytes.size(), static_cast<std::size_t>(size) - 1);
        std::memcpy(buffer, bytes.data(), copied);
        buffer[copied] = 0;
    }
    return static_cast<ASInt32>(bytes.size());
}

ASInt32 PageOfLabel(PDDoc document, const char* label, ASInt32 length)
{
    CPdfDocument& pdf = PdfOf(document);
    CHostText wanted;
    wanted.Set(Utf16FromPdText(Given(label, length)));
    const auto labels = Translated([&] { return PageLabelsOf(pdf); });
    const auto page = std::ranges::find(labels, wanted.Utf8());
    return page == labels.end() ? -1 : static_cast<ASInt32>(page - labels.begin());
}

}  // namespace

void OfferObjectSlots(CTables& tables)
{
    OfferObjectLevel(tables);
    OfferBookmarks(tables);
    OfferDestinations(tables);
    OFFER(tables, PDModel, PDDocGetLabelForPageNum, LabelOfPage);
    OFFER(tables, PDModel, PDDocFindPageNumForLabel, PageOfLabel);
}

}  // namespace openhost
