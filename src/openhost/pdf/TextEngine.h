// Text of pages as a library finds it; each library that can do so has its own class behind this interface.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "openhost/pdf/PdfDocument.h"

namespace openhost {

/// A rectangle on the page as it is shown: from its left upper corner, in units of user space, downwards.
struct ShownBox {
    double left = 0, top = 0, right = 0, bottom = 0;

    double Width() const { return right - left; }
    double Height() const { return bottom - top; }
};

/// Characters that stand together on a line.
struct TextPiece {
    std::u32string text;          ///< in the order in which they stand on the line, whatever the script's direction
    std::vector<ShownBox> boxes;  ///< one for each character
    ShownBox box;
    int rotation = 0;           ///< of the letters on the page as it is shown: quarters of a turn, clockwise
    bool spaceAfter = false;    ///< another piece of the same line follows behind a space
    std::string fontName = {};  ///< as it is in the document, without the mark of a subset; when asked for
    double fontSize = 0;        ///< likewise
};

class CTextEngine {
public:
    virtual ~CTextEngine() = default;

    /// Loads a file as it is on disk. Fails: CPdfError.
    virtual void LoadFile(const std::string& path, const std::string& passwordBytes) = 0;
    /// Loads the bytes of a file and keeps them. Fails: CPdfError.
    virtual void LoadMemory(std::string bytes, const std::string& description, const std::string& passwordBytes) = 0;
    virtual int PageCount() const = 0;
    /// UTF-8, lines ended by a line feed. Fails: BadPage.
    virtual std::string PageText(int page0) = 0;
    /// What stands at least partly on the page, in reading order. Fonts cost time and are looked up when asked for.
    /// Fails: BadPage.
    virtual std::vector<TextPiece> Pieces(int page0, bool withFonts) = 0;
};

/// The engine that this build is made with.
std::unique_ptr<CTextEngine> NewTextEngine();
/// Name and version of the library behind it: another one may read a page otherwise.
std::string TextEngineVersion();
/// "ABCDEF+Name" is a part of the font of that name.
std::string WithoutSubsetMark(const std::string& name);
/// Loads a file as it is on disk, without its output profiles, whose offsets are given. Fails: CPdfError.
void LoadWithoutProfiles(CTextEngine& engine, const std::string& path, const std::string& passwordBytes,
                         const std::vector<std::uint64_t>& profiles);
/// Gives the engine the document's present state: its file when nothing changed, else a copy in memory.
void LoadPresentState(CTextEngine& engine, CPdfDocument& document);

}  // namespace openhost
