#pragma once

#include <string>

#include "openhost/pdf/PdfDocument.h"
#include "support/RefusingOverseer.h"

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
