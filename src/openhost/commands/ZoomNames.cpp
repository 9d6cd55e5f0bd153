#include "openhost/commands/ZoomNames.h"

#include <string>

#include "base/Unicode.h"
#include "openhost/commands/LocalNumbers.h"

namespace openhost {

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
