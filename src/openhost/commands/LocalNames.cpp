#include "openhost/commands/LocalNames.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

#include "base/Unicode.h"

namespace openhost {

namespace {

/// The zeros of scripts whose ten digits stand in a row.
constexpr char32_t kZeros[] = {U'0',   0x0660, 0x06F0, 0x07C0, 0x0966, 0x09E6, 0x0A66, 0x0AE6, 0x0B66, 0x0BE6,
                               0x0C66, 0x0CE6, 0x0D66, 0x0E50, 0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0xFF10};
constexpr std::u32string_view kPercentSigns = U"%\u066A\uFE6A\uFF05";
/// Spaces, apostrophes and marks of direction; between digits they part groups.
constexpr std::u32string_view kFillers =
    U" \t\u00A0\u2009\u202F\u3000'\u2019\u066C\u200E\u200F\u061C\u2066\u2067\u2068\u2069"
    U"\u202A\u202B\u202C\u202D\u202E";

std::optional<char> PlainCharacter(char32_t character)
{
    for (const char32_t zero : kZeros)
        if (character >= zero && character < zero + 10) return static_cast<char>('0' + (character - zero));
    if (character == U'.' || character == 0xFF0E) return '.';
    if (character == U',' || character == 0xFF0C) return ',';
    if (character == 0x066B) return 'd';  // a decimal separator and nothing else
    if (character == U'-' || character == 0x2212) return '-';
    return std::nullopt;
}

/// ASCII digits with ".", "," and "d" in them; nothing for a text that has other characters.
std::optional<std::string> PlainNumber(std::u32string_view text)
{
    std::string plain;
    for (const char32_t character : text) {
        if (kFillers.find(character) != kFillers.npos) continue;
        const auto one = PlainCharacter(character);
        if (!one) return std::nullopt;
        plain += *one;
    }
    return plain;
}

std::string Without(std::string text, char separator)
{
    std::erase(text, separator);
    return text;
}

std::optional<double> Parsed(std::string text, char decimal)
{
    std::ranges::replace(text, decimal, '.');
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || text.back() == '.') return std::nullopt;
    return number;
}

/// Groups have three digits, the first one to three.
bool IsGrouped(const std::string& text, char separator)
{
    std::size_t digits = 0, groups = 0;
    for (const char c : Without(text, '-')) {
        if (c != separator) {
            ++digits;
            continue;
        }
        if (digits == 0 || digits > 3 || (groups > 0 && digits != 3)) return false;
        ++groups;
        digits = 0;
    }
    return groups > 0 && digits == 3;
}

struct Readings {
    std::optional<double> decimal;  // its last separator parts the fraction
    std::optional<double> grouped;  // all separators part thousands
};

Readings ReadingsOf(const std::string& plain)
{
    const bool points = plain.find('.') != plain.npos, commas = plain.find(',') != plain.npos;
    const std::size_t last = plain.find_last_of(".,d");
    if (last == plain.npos) return {Parsed(plain, '.'), {}};
    const char decimal = plain[last];
    if (decimal == 'd' || (points && commas)) {
        const char group = decimal == '.' ? ',' : decimal == ',' ? '.' : points ? '.' : ',';
        const std::string whole = plain.substr(0, last);
        const bool wellGrouped = whole.find(group) == whole.npos || IsGrouped(whole, group);
        return {wellGrouped ? Parsed(Without(whole, group) + plain.substr(last), decimal) : std::nullopt, {}};
    }
    Readings readings;
    if (std::ranges::count(plain, decimal) == 1) readings.decimal = Parsed(plain, decimal);
    if (IsGrouped(plain, decimal) && plain[0] != '0') readings.grouped = Parsed(Without(plain, decimal), '.');
    return readings;
}

}  // namespace

std::optional<double> ReadClearNumber(std::string_view text)
{
    const auto plain = PlainNumber(Utf8ToUtf32(text));
    if (!plain || plain->empty()) return std::nullopt;
    const Readings readings = ReadingsOf(*plain);
    if (!readings.decimal) return readings.grouped;
    // A point is how programs write a fraction; a comma with three digits behind it may be either.
    if (readings.grouped && plain->find(',') != plain->npos) return std::nullopt;
    return readings.decimal;
}

std::optional<int> ReadWholeNumber(std::string_view text)
{
    const auto plain = PlainNumber(Utf8ToUtf32(text));
    if (!plain || plain->find_first_of(".,d") != plain->npos) return std::nullopt;
    const auto number = ReadClearNumber(text);
    if (!number || *number > std::numeric_limits<int>::max() || *number < 0) return std::nullopt;
    return static_cast<int>(*number);
}

std::optional<double> ReadPercentage(std::string_view text, double most)
{
    std::u32string wide = Utf8ToUtf32(text);
    std::erase_if(wide, [](char32_t character) { return kFillers.find(character) != kFillers.npos; });
    const auto isPercent = [](char32_t character) { return kPercentSigns.find(character) != kPercentSigns.npos; };
    if (!wide.empty() && isPercent(wide.front()))
        wide.erase(0, 1);
    else if (!wide.empty() && isPercent(wide.back()))
        wide.pop_back();
    const auto plain = PlainNumber(wide);
    if (!plain || plain->empty()) return std::nullopt;
    const Readings readings = ReadingsOf(*plain);
    for (const auto& reading : {readings.grouped, readings.decimal})
        if (reading && *reading > 0 && *reading <= most) return reading;
    return std::nullopt;
}

namespace {

constexpr double kMostPercent = 6400;
constexpr double kLeastPercent = 1;

/// Names in English, German, French, Spanish, Italian, Portuguese, Dutch, simplified and traditional Chinese,
/// Japanese and Korean, parted by bars.
const struct {
    const char* fit;
    double zoom;  // 0: the reader's own
    const char* names;
} kViews[] = {
    {"Fit", 0,
     "Fit Page|Ganze Seite|Seite einpassen|An Seite anpassen|Pleine page|Page entière|Ajuster à la page|Ajuster la "
     "page|Ajustar página|Ajustar a página|Encajar página|Adatta pagina|Página inteira|Hele pagina|Passend op pagina|"
     "适合页面|適合頁面|符合頁面|整頁|全体表示|ページ全体|ページに合わせる|ページに合わせて表示|페이지 맞춤|페이지에 "
     "맞추기"},
    {"FitH", 0,
     "Fit Width|Fensterbreite|Seitenbreite|Breite einpassen|An Breite anpassen|Pleine largeur|Largeur de "
     "page|Ajuster à la "
     "largeur|Ajuster la largeur|Ajustar ancho|Ajustar al ancho|Ancho de página|Adatta larghezza|Larghezza "
     "pagina|Ajustar "
     "largura|Largura da página|Paginabreedte|Passend op breedte|适合宽度|適合寬度|符合寬度|頁寬|幅に合わせる|"
     "幅に合わせて表示|ページ幅|너비 맞춤|너비에 맞추기|폭에 맞추기"},
    {"FitV", 0,
     "Fit Height|Fensterhöhe|Seitenhöhe|Höhe einpassen|An Höhe anpassen|Hauteur de page|Ajuster à la hauteur|Ajuster "
     "la "
     "hauteur|Ajustar alto|Ajustar altura|Ajustar a la altura|Adatta altezza|Altezza pagina|Paginahoogte|Passend op "
     "hoogte|"
     "适合高度|適合高度|符合高度|頁高|高さに合わせる|高さに合わせて表示|높이 맞춤|높이에 맞추기"},
    {"FitBH", 0,
     "Fit Visible|Sichtbaren Bereich einpassen|Sichtbare Breite|Zone visible|Ajuster à la zone visible|Ajustar "
     "visible|"
     "Ajustar a visible|Adatta visibile|Ajustar "
     "visível|适合可见|适合可见区域|適合可見|符合可見|描画領域の幅に合わせる|"
     "표시 영역 맞춤|보이는 영역에 맞추기"},
    {"XYZ", 1,
     "Actual Size|Originalgröße|Tatsächliche Größe|Taille réelle|Tamaño real|Dimensioni effettive|Tamanho real|Ware "
     "grootte|Werkelijke grootte|实际大小|實際大小|実際のサイズ|실제 크기"},
    {"XYZ", 0,
     "Default|Inherit Zoom|Standard|Par "
     "défaut|Predeterminado|Predefinito|Padrão|Standaard|默认|缺省|預設|预设|デフォルト|"
     "기본값"},
};

bool IsLeftOut(char32_t character)
{
    return character == U' ' || character == U'&' || character == 0x00A0 || character == 0x202F ||
           character == 0x3000;
}

std::u32string Compared(std::string_view utf8)
{
    std::u32string text;
    for (const char32_t character : Utf8ToUtf32(utf8))
        if (!IsLeftOut(character)) text += LowerCased(character);
    return text;
}

bool Holds(std::string_view names, const std::u32string& wanted)
{
    for (std::size_t from = 0; from <= names.size();) {
        const std::size_t to = std::min(names.find('|', from), names.size());
        if (Compared(names.substr(from, to - from)) == wanted) return true;
        from = to + 1;
    }
    return false;
}

}  // namespace

std::optional<OpenView> ViewNamed(std::string_view name)
{
    const auto percent = ReadPercentage(name, kMostPercent);
    if (percent && *percent >= kLeastPercent) return OpenView{"XYZ", *percent / 100};
    const std::u32string wanted = Compared(name);
    for (const auto& view : kViews)
        if (Holds(view.names, wanted))
            return OpenView{view.fit, view.zoom > 0 ? std::optional(view.zoom) : std::nullopt};
    return std::nullopt;
}

}  // namespace openhost
