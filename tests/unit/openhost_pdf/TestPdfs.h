#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "openhost/pdf/PdfDocument.h"
#include "support/TemporaryFolder.h"

/// A file of `pages` pages; page n shows "Page n of the sample". `extra` goes into the trailer, `objects` after the
/// pages (they begin with object 100).
inline std::string SamplePdf(int pages, const std::string& extra = {}, const std::string& objects = {})
{
    std::string kids;
    std::string body;
    for (int i = 0; i < pages; ++i) {
        const std::string page = std::to_string(1000 + 2 * i), content = std::to_string(1001 + 2 * i);
        const std::string draw = "BT /F1 18 Tf 72 700 Td (Page " + std::to_string(i + 1) + " of the sample) Tj ET";
        kids += page + " 0 R ";
        body += page +
                " 0 obj\n<</Type/Page/Parent 2 0 R/MediaBox[0 0 612 792]/Resources<</Font<</F1 3 0 R>>>>/Contents " +
                content + " 0 R>>\nendobj\n" + content + " 0 obj\n<</Length " + std::to_string(draw.size()) +
                ">>\nstream\n" + draw + "\nendstream\nendobj\n";
    }
    const std::string count = std::to_string(pages);
    std::string file = "%PDF-1.4\n1 0 obj\n<</Type/Catalog/Pages 2 0 R/Metadata 100 0 R/AcroForm 101 0 R>>\nendobj\n";
    file += "2 0 obj\n<</Type/Pages/Kids[" + kids + "]/Count " + count + ">>\nendobj\n";
    file += "3 0 obj\n<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>\nendobj\n" + body + objects;
    // A table with right offsets, so that nothing needs repair.
    std::vector<std::pair<int, std::size_t>> places;
    for (std::size_t at = file.find(" 0 obj"); at != std::string::npos; at = file.find(" 0 obj", at + 1)) {
        const std::size_t start = file.rfind('\n', at) + 1;
        places.emplace_back(std::atoi(file.c_str() + start), start);
    }
    const std::size_t table = file.size();
    file += "xref\n0 1\n0000000000 65535 f \n";
    for (const auto& [number, offset] : places) {
        char line[64];
        std::snprintf(line, sizeof line, "%d 1\n%010zu 00000 n \n", number, offset);
        file += line;
    }
    file += "trailer\n<</Size 9000/Root 1 0 R" + extra + ">>\nstartxref\n" + std::to_string(table) + "\n%%EOF\n";
    return file;
}

/// An object to put into SamplePdf: a stream with these bytes.
inline std::string StreamObject(int number, const std::string& dictionary, const std::string& bytes)
{
    return std::to_string(number) + " 0 obj\n<<" + dictionary + "/Length " + std::to_string(bytes.size()) +
           ">>\nstream\n" + bytes + "\nendstream\nendobj\n";
}

/// Empty passwords are none.
inline openhost::StandardSecurity Protection(const std::string& user, const std::string& owner, int method = 7,
                                             int revision = 0, int keyBytes = 16)
{
    openhost::StandardSecurity security;
    security.hasUser = !user.empty();
    security.hasOwner = !owner.empty();
    security.userPasswordUtf8 = user;
    security.ownerPasswordUtf8 = owner;
    security.method = method;
    security.revision = revision;
    security.keyLengthBytes = keyBytes;
    return security;
}

inline openhost::CPdfDocument TitledDocument(const std::string& path, const std::string& title)
{
    openhost::CPdfDocument document = openhost::CPdfDocument::Open(path);
    document.SetInfo("Title", title);
    return document;
}

inline std::string TitleOf(const std::string& path)
{
    return openhost::CPdfDocument::Open(path).Info("Title").value_or("<none>");
}

class CPdfTest : public testing::Test {
protected:
    const CTemporaryFolder folder;
};

/// Runs `body` and answers which problem it ended with; nothing when it went well.
template <class Body>
std::optional<openhost::PdfProblem> ProblemOf(Body body)
{
    try {
        body();
    } catch (const openhost::CPdfError& error) {
        return error.Problem();
    }
    return std::nullopt;
}

inline openhost::PdfOpenOptions WithPassword(const std::string& utf8,
                                             openhost::WantedRights wanted = openhost::WantedRights::Open)
{
    return {.authorise = [=](openhost::CPdfDocument& document) { return document.Authorize(utf8, wanted); }};
}
