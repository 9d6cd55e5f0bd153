// What "this" says of its pages.

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <qpdf/QPDFPageLabelDocumentHelper.hh>

#include "base/Text.h"
#include "openhost/pdf/PageBoxes.h"
#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"
#include "openhost/values/Text.h"

namespace openhost {

int CheckedPage(const CScriptRun& run, int page0)
{
    const int pages = run.Pdf().PageCount();
    if (page0 < 0 || page0 >= pages)
        throw std::runtime_error(
            FormatText("there is no page %d: pages count from 0 and the document has %d of them", page0, pages));
    return page0;
}

namespace {

// ---- labels

std::u16string Digits(long long number) { return Utf16FromPdText(std::to_string(number)); }

std::u16string Roman(long long number)
{
    constexpr std::pair<int, const char16_t*> kNumerals[] = {
        {1000, u"m"}, {900, u"cm"}, {500, u"d"}, {400, u"cd"}, {100, u"c"}, {90, u"xc"}, {50, u"l"},
        {40, u"xl"},  {10, u"x"},   {9, u"ix"},  {5, u"v"},    {4, u"iv"},  {1, u"i"}};
    constexpr long long most = 100'000;
    if (number < 1 || number > most) return Digits(number);
    std::u16string text;
    for (const auto& [value, numeral] : kNumerals)
        for (; number >= value; number -= value) text += numeral;
    return text;
}

/// a to z, aa to zz, aaa to zzz.
std::u16string Letters(long long number)
{
    constexpr long long letters = 26, most = 100 * letters;
    if (number < 1 || number > most) return Digits(number);
    return std::u16string(static_cast<std::size_t>((number - 1) / letters + 1),
                          static_cast<char16_t>(u'a' + (number - 1) % letters));
}

std::u16string Capital(std::u16string text)
{
    for (char16_t& character : text)
        if (character >= u'a' && character <= u'z') character = static_cast<char16_t>(character - u'a' + u'A');
    return text;
}

std::u16string LabelFrom(QPDFObjectHandle label)
{
    const QPDFObjectHandle style = label.getKey("/S"), start = label.getKey("/St"), prefix = label.getKey("/P");
    const long long number = QPDFObjectHandle(start).isInteger() ? QPDFObjectHandle(start).getIntValue() : 1;
    std::u16string text;
    if (QPDFObjectHandle(prefix).isString()) text = Utf16FromPdText(QPDFObjectHandle(prefix).getStringValue());
    const std::string name = QPDFObjectHandle(style).isName() ? QPDFObjectHandle(style).getName() : std::string();
    if (name == "/D") return text + Digits(number);
    if (name == "/r") return text + Roman(number);
    if (name == "/R") return text + Capital(Roman(number));
    if (name == "/a") return text + Letters(number);
    if (name == "/A") return text + Capital(Letters(number));
    return text;
}

duk_ret_t GetPageLabel(CScriptRun& run, duk_context* context)
{
    const int page0 = CheckedPage(run, WholeArgument(context, 0, "nPage", 0));
    QPDFPageLabelDocumentHelper labels(run.Pdf().Library());
    const QPDFObjectHandle label =
        labels.hasPageLabels() ? labels.getLabelForPage(page0) : QPDFObjectHandle::newNull();
    PushScriptText(context, QPDFObjectHandle(label).isDictionary() ? LabelFrom(label) : Digits(page0 + 1));
    return 1;
}

// ---- boxes

BoxKind KindNamed(const std::string& name)
{
    constexpr std::pair<const char*, BoxKind> kNames[] = {{"Media", BoxKind::Media},
                                                          {"Crop", BoxKind::Crop},
                                                          {"Bleed", BoxKind::Bleed},
                                                          {"Trim", BoxKind::Trim},
                                                          {"Art", BoxKind::Art}};
    for (const auto& [known, kind] : kNames)
        if (EqualsIgnoreCaseAscii(known, name)) return kind;
    throw std::runtime_error("there is no box \"" + name + "\": it must be Media, Crop, Bleed, Trim or Art");
}

/// As it lies on the page that is shown turned: the media box turns around its lower left corner and comes to lie
/// with its new lower left corner there.
PageBox Turned(const PageBox& box, const PageBox& media, int rotation)
{
    const double x = media.left, y = media.bottom;
    const PageBox from{box.left - x, box.bottom - y, box.right - x, box.top - y};
    const double width = media.Width(), height = media.Height();
    PageBox to = from;
    if (rotation == 90) to = {from.bottom, width - from.right, from.top, width - from.left};
    if (rotation == 180) to = {width - from.right, height - from.top, width - from.left, height - from.bottom};
    if (rotation == 270) to = {height - from.top, from.left, height - from.bottom, from.right};
    return {to.left + x, to.bottom + y, to.right + x, to.top + y};
}

/// The way back.
PageBox TurnedBack(const PageBox& box, const PageBox& media, int rotation)
{
    const double x = media.left, y = media.bottom;
    const PageBox from{box.left - x, box.bottom - y, box.right - x, box.top - y};
    const double width = media.Width(), height = media.Height();
    PageBox to = from;
    if (rotation == 90) to = {width - from.top, from.left, width - from.bottom, from.right};
    if (rotation == 180) to = {width - from.right, height - from.top, width - from.left, height - from.bottom};
    if (rotation == 270) to = {from.bottom, height - from.right, from.top, height - from.left};
    return {to.left + x, to.bottom + y, to.right + x, to.top + y};
}

duk_ret_t GetPageBox(CScriptRun& run, duk_context* context)
{
    const BoxKind kind = KindNamed(TextArgument(context, 0, "cBox", "Crop"));
    const int page0 = CheckedPage(run, WholeArgument(context, 1, "nPage", 0));
    CScriptChanges& pages = run.Changes();
    const PageBox box = Turned(pages.Box(page0, kind), pages.Box(page0, BoxKind::Media), pages.Rotation(page0));
    duk_push_array(context);
    duk_uarridx_t at = 0;
    for (const double edge : {box.left, box.top, box.right, box.bottom}) {
        duk_push_number(context, edge);
        duk_put_prop_index(context, -2, at++);
    }
    return 1;
}

/// Left, top, right and bottom, as the function above answers them; nothing when the argument is not there.
std::optional<PageBox> BoxArgument(duk_context* context, duk_idx_t place, const char* name)
{
    PushArgument(context, place, name);
    if (duk_is_null_or_undefined(context, -1)) return std::nullopt;
    double edges[4] = {};
    const bool whole = duk_is_array(context, -1) && duk_get_length(context, -1) == std::size(edges);
    for (duk_uarridx_t at = 0; whole && at < std::size(edges); ++at) {
        duk_get_prop_index(context, -1, at);
        edges[at] = duk_to_number(context, -1);
        duk_pop(context);
    }
    if (!whole || !std::ranges::all_of(edges, [](double edge) { return std::isfinite(edge); }))
        throw std::runtime_error(std::string(name) + " must be four numbers: left, top, right and bottom");
    return PageBox{edges[0], edges[3], edges[2], edges[1]};
}

/// Without pages all of them, with a first one only that one.
duk_ret_t SetPageBoxes(CScriptRun& run, duk_context* context)
{
    const BoxKind kind = KindNamed(TextArgument(context, 0, "cBox", "Crop"));
    constexpr int none = -1;
    const int start = WholeArgument(context, 1, "nStart", none), end = WholeArgument(context, 2, "nEnd", none);
    const int first = CheckedPage(run, start == none ? 0 : start);
    const int last = CheckedPage(run, end != none ? end : start != none ? start : run.Pdf().PageCount() - 1);
    if (last < first) throw std::runtime_error("nEnd is before nStart");
    const auto box = BoxArgument(context, 3, "rBox");
    CScriptChanges& pages = run.Changes();
    for (int page0 = first; page0 <= last; ++page0) {
        const PageBox media = pages.Box(page0, BoxKind::Media);
        pages.SetBox(page0, kind, box ? std::optional(TurnedBack(*box, media, pages.Rotation(page0))) : std::nullopt);
    }
    return 0;
}

duk_ret_t GetPageRotation(CScriptRun& run, duk_context* context)
{
    const int page0 = CheckedPage(run, WholeArgument(context, 0, "nPage", 0));
    duk_push_int(context, run.Changes().Rotation(page0));
    return 1;
}

}  // namespace

void AddPageMembers(duk_context* context)
{
    duk_push_global_object(context);
    AddScriptMethods(context, {{"getPageLabel", &ScriptEntry<&GetPageLabel>},
                               {"getPageBox", &ScriptEntry<&GetPageBox>},
                               {"setPageBoxes", &ScriptEntry<&SetPageBoxes>},
                               {"getPageRotation", &ScriptEntry<&GetPageRotation>}});
    duk_pop(context);
}

}  // namespace openhost
