#include "common/ErrorReport.h"

#include "base/Text.h"
#include "common/TextFile.h"

std::string CErrorReport::ReportText() const
{
    std::string text = std::string(kErrorReportHeading) + "\n";
    for (const auto& entry : m_entries) {
        text.append(entry.isError ? "Error" : "Warning").append("\t").append(entry.description);
        text.append("\t").append(entry.fileName).append("\t").append(std::to_string(entry.fileNumber)).append("\n");
    }
    return text;
}

bool CErrorReport::Save(const std::string& path) const
{
    try {
        CTextFileWrite file;
        if (!file.Open(path, TextEncoding::Utf8, false)) return false;
        file.Write(ReplaceAll(ReportText(), "\n", "\r\n"));
        file.Close();
        return true;
    } catch (const CTextFileException&) {
        return false;
    }
}
