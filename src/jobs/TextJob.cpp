#include "jobs/TextJob.h"

#include "common/PageRange.h"
#include "engine/InputOpening.h"
#include "pdflib/AcrobatDoc.h"
#include "pdflib/DocumentPages.h"
#include "pdflib/PageText.h"
#include "protocol/Json.h"
#include "protocol/SearchOrder.h"

std::string ReportPageText(const Json& job, CLogWriter& log, const std::function<void(const std::string&)>& report)
{
    const std::string path = BytesAt(job, "path");
    CAcrobatDoc document;
    if (const std::string reason = OpenInput(document, path, log); !reason.empty())
        return "The file " + path + " cannot be opened: " + reason;
    PageRange range{.firstExpression = TextAt(job, "firstPage"), .lastExpression = TextAt(job, "lastPage")};
    if (!range.firstExpression.empty() || !range.lastExpression.empty())
        range.selection = static_cast<int>(PageSelection::FromTo);
    const auto pages = range.Pages(CDocumentPages(document.Document()));
    if (!pages) return path + ": " + pages.Error();
    const auto area = AreaAt(job);
    CDocumentText text(document.Document());
    for (const int page0 : *pages) {
        const CPageText& page = text.Page(page0);
        const auto shown = [&](const CPageText& part) {
            const CSearchedText& lines = part.Text(LineEnds::LineFeeds);
            report(LineOf({{"page", page0 + 1}, {"text", lines.Utf8({0, lines.View().size()})}}));
        };
        area ? shown(page.Inside(PageRect{(*area)[0], (*area)[1], (*area)[2], (*area)[3]})) : shown(page);
    }
    return {};
}
