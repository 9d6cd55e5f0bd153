// What "this" says of the words on its pages.

#include <algorithm>
#include <stdexcept>

#include "base/Text.h"
#include "base/Unicode.h"
#include "openhost/script/ScriptObjects.h"
#include "openhost/script/ScriptValues.h"
#include "openhost/script/Scripts.h"

namespace openhost {

namespace {

const CPageWords& WordsOfArgument(CScriptRun& run, duk_context* context)
{
    return run.WordsOfPage(CheckedPage(run, WholeArgument(context, 0, "nPage", 0)));
}

const PageWord& WordOfArguments(CScriptRun& run, duk_context* context)
{
    const CPageWords& words = WordsOfArgument(run, context);
    const int number = WholeArgument(context, 1, "nWord", 0);
    if (number < 0 || static_cast<std::size_t>(number) >= words.size())
        throw std::runtime_error(FormatText("there is no word %d: words count from 0 and page %d has ", number,
                                            WholeArgument(context, 0, "nPage", 0)) +
                                 std::to_string(words.size()) + " of them");
    return words[static_cast<std::size_t>(number)];
}

/// What surrounds words; signs such as those of currencies belong to them.
bool Surrounds(char32_t character)
{
    constexpr std::pair<char32_t, char32_t> kRanges[] = {{0x2010, 0x2027}, {0x2030, 0x205E}, {0x3001, 0x3003},
                                                         {0x3008, 0x3011}, {0x3014, 0x301F}, {0xFF08, 0xFF09},
                                                         {0xFF0C, 0xFF0F}, {0xFF1A, 0xFF1B}, {0xFF61, 0xFF65}};
    if (IsWhiteSpace(character)) return true;
    if (character <= 0xFF)
        return std::u32string_view(U"!\"#%&'()*,-./:;?@[\\]_{}\u00A1\u00A7\u00AB\u00B6\u00B7\u00BB\u00BF")
                   .find(character) != std::u32string_view::npos;
    if (character == 0xFF01 || character == 0xFF1F) return true;
    return std::ranges::any_of(
        kRanges, [&](const auto& range) { return character >= range.first && character <= range.second; });
}

std::u16string WithoutPunctuation(std::u16string_view word)
{
    const std::u32string text = Utf16ToUtf32(word);
    std::size_t begin = 0, end = text.size();
    while (begin < end && Surrounds(text[begin])) ++begin;
    while (end > begin && Surrounds(text[end - 1])) --end;
    return Utf32ToUtf16(std::u32string_view(text).substr(begin, end - begin));
}

duk_ret_t GetPageNumWords(CScriptRun& run, duk_context* context)
{
    duk_push_number(context, static_cast<double>(WordsOfArgument(run, context).size()));
    return 1;
}

duk_ret_t GetPageNthWord(CScriptRun& run, duk_context* context)
{
    const PageWord& word = WordOfArguments(run, context);
    PushArgument(context, 2, "bStrip");
    const bool strip = duk_is_undefined(context, -1) || duk_to_boolean(context, -1);
    PushScriptText(context, strip ? WithoutPunctuation(word.text) : word.text);
    return 1;
}

/// Of each box the corners: upper left, upper right, lower left, lower right.
duk_ret_t GetPageNthWordQuads(CScriptRun& run, duk_context* context)
{
    const PageWord& word = WordOfArguments(run, context);
    duk_push_array(context);
    duk_uarridx_t count = 0;
    for (const PageBox& box : word.boxes) {
        duk_push_array(context);
        duk_uarridx_t at = 0;
        for (const double number :
             {box.left, box.top, box.right, box.top, box.left, box.bottom, box.right, box.bottom}) {
            duk_push_number(context, number);
            duk_put_prop_index(context, -2, at++);
        }
        duk_put_prop_index(context, -2, count++);
    }
    return 1;
}

}  // namespace

void AddWordMembers(duk_context* context)
{
    duk_push_global_object(context);
    AddScriptMethods(context, {{"getPageNumWords", &ScriptEntry<&GetPageNumWords>},
                               {"getPageNthWord", &ScriptEntry<&GetPageNthWord>},
                               {"getPageNthWordQuads", &ScriptEntry<&GetPageNthWordQuads>}});
    duk_pop(context);
}

}  // namespace openhost
