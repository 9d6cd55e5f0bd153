#include "hostcalls/PageNames.h"

#include "hostcalls/Cab.h"
#include "hostcalls/HostPath.h"
#include "hostcalls/HostTables.h"
#include "hostcalls/Objects.h"

namespace {

ASInt32 Length(const std::string& bytes) { return static_cast<ASInt32>(bytes.size()); }

std::optional<int> PageAt(PDDoc document, PDViewDestination destination)
{
    if (!HostCall(HOST_SLOT(PDModel, PDViewDestIsValid), destination)) return std::nullopt;
    const PDViewDestination real = HostCall(HOST_SLOT(PDModel, PDViewDestResolve), destination, document);
    if (!HostCall(HOST_SLOT(PDModel, PDViewDestIsValid), real)) return std::nullopt;
    ASInt32 page = -1;
    ASAtom fit = kNullAtom;
    ASFixedRect rectangle{};
    ASFixed zoom = 0;
    HostCall(HOST_SLOT(PDModel, PDViewDestGetAttr), real, &page, &fit, &rectangle, &zoom);
    return page < 0 ? std::nullopt : std::optional(static_cast<int>(page));
}

/// What a name stands for: an array, or a dictionary that has it.
std::optional<int> PageOfValue(PDDoc document, CosObj value)
{
    const CosObj array = IsDictionary(value) ? EntryOf(value, "D") : value;
    return PageAt(document, HostCall(HOST_SLOT(PDModel, PDViewDestFromCosObj), array));
}

std::optional<int> PageInTree(PDDoc document, CosObj tree, std::string name)
{
    return PageOfValue(document, HostCall(HOST_SLOT(PDModel, PDNameTreeLookup), tree, name.data(), Length(name)));
}

}  // namespace

std::optional<int> PageOfBookmark(PDDoc document, const std::string& title)
{
    const PDBookmark root = HostCall(HOST_SLOT(PDModel, PDDocGetBookmarkRoot), document);
    if (!HostCall(HOST_SLOT(PDModel, PDBookmarkIsValid), root)) return std::nullopt;
    const std::string text = CHostText::FromNarrow(title).ToPdText();
    constexpr ASInt32 kAllBelow = -1;
    const PDBookmark bookmark =
        HostCall(HOST_SLOT(PDModel, PDBookmarkGetByTitle), root, text.data(), Length(text), kAllBelow);
    if (!HostCall(HOST_SLOT(PDModel, PDBookmarkIsValid), bookmark)) return std::nullopt;
    const PDAction action = HostCall(HOST_SLOT(PDModel, PDBookmarkGetAction), bookmark);
    if (!HostCall(HOST_SLOT(PDModel, PDActionIsValid), action)) return std::nullopt;
    // The destination of any other kind is a page of another document.
    if (HostCall(HOST_SLOT(PDModel, PDActionGetSubtype), action) != Atom("GoTo")) return std::nullopt;
    return PageAt(document, HostCall(HOST_SLOT(PDModel, PDActionGetDest), action));
}

std::optional<int> PageOfDestination(PDDoc document, const std::string& name)
{
    const CosObj root = RootOf(document);
    if (const CosObj names = EntryOf(root, "Names"); IsDictionary(names)) {
        if (const CosObj tree = EntryOf(names, "Dests"); IsDictionary(tree)) {
            const std::string text = CHostText::FromNarrow(name).ToPdText();
            if (const auto page = PageInTree(document, tree, text)) return page;
            // Some producers write names in an encoding of their own.
            if (const auto page = text == name ? std::nullopt : PageInTree(document, tree, name)) return page;
        }
    }
    const CosObj former = EntryOf(root, "Dests");
    return IsDictionary(former) ? PageOfValue(document, EntryOf(former, name)) : std::nullopt;
}

std::optional<int> PageOfLabel(PDDoc document, const std::string& label)
{
    const std::string text = CHostText::FromNarrow(label).ToPdText();
    const ASInt32 page = HostCall(HOST_SLOT(PDModel, PDDocFindPageNumForLabel), document, text.data(), Length(text));
    return page < 0 ? std::nullopt : std::optional(static_cast<int>(page));
}

std::string LabelOfPage(PDDoc document, int page0)
{
    const ASInt32 length =
        HostCall(HOST_SLOT(PDModel, PDDocGetLabelForPageNum), document, ASInt32{page0}, nullptr, ASInt32{0});
    if (length <= 0) return std::to_string(page0 + 1);
    std::string text(static_cast<std::size_t>(length) + 1, '\0');  // a host may put a zero byte behind it
    HostCall(HOST_SLOT(PDModel, PDDocGetLabelForPageNum), document, ASInt32{page0}, text.data(), Length(text));
    text.resize(static_cast<std::size_t>(length));
    return CHostText::FromPdText(std::move(text)).ToUtf8();
}
