#include "pdflib/PageText.h"

#include <algorithm>

#include "protocol/SearchOrder.h"

std::optional<PageRect> PageRectFrom(std::string_view text)
{
    const auto area = ParseSearchArea(text);
    if (!area) return std::nullopt;
    return PageRect{(*area)[0], (*area)[1], (*area)[2], (*area)[3]};
}

CPageText::CPageText(std::vector<HostWord> words) : m_words(std::move(words))
{
    std::size_t start = 0;
    for (const HostWord& word : m_words) {
        m_starts.push_back(start);
        start += word.text.size() + (word.endsLine || word.spaceAfter ? 1 : 0);
    }
}

const CSearchedText& CPageText::Text(LineEnds ends) const
{
    const auto made = m_texts.find(ends);
    if (made != m_texts.end()) return made->second;
    std::u16string text;
    for (const HostWord& word : m_words) {
        text += word.text;
        if (word.endsLine)
            text += ends == LineEnds::LineFeeds ? u'\n' : u' ';
        else if (word.spaceAfter)
            text += u' ';
    }
    return m_texts.emplace(ends, CSearchedText(std::move(text))).first->second;
}

std::vector<const HostWord*> CPageText::WordsIn(TextRange range) const
{
    std::vector<const HostWord*> found;
    const auto behind = std::upper_bound(m_starts.begin(), m_starts.end(), range.start);
    auto index = static_cast<std::size_t>(behind - m_starts.begin());
    if (index > 0) --index;
    for (; index < m_words.size() && m_starts[index] < range.End(); ++index)
        if (m_starts[index] + m_words[index].text.size() > range.start) found.push_back(&m_words[index]);
    return found;
}

CPageText CPageText::Inside(const PageRect& area) const
{
    std::vector<HostWord> inside;
    for (const HostWord& word : m_words) {
        const bool counts = !word.boxes.empty() && area.Contains((word.boxes[0].left + word.boxes[0].right) / 2,
                                                                 (word.boxes[0].bottom + word.boxes[0].top) / 2);
        if (counts) {
            inside.push_back(word);
        } else if (!inside.empty()) {
            // What is left out still divides what stands on both sides of it.
            inside.back().spaceAfter = true;
            inside.back().endsLine |= word.endsLine;
        }
    }
    return CPageText(std::move(inside));
}

CDocumentText::CDocumentText(PDDoc document, CHostWordFinder::Fonts fonts) : m_finder(document, fonts) {}

const CPageText& CDocumentText::Page(int page0)
{
    if (const auto kept = m_kept.find(page0); kept != m_kept.end()) {
        if (!kept->second) kept->second.emplace(m_finder.Words(page0));
        return *kept->second;
    }
    if (m_page0 == page0) return m_page;
    m_page0 = -1;
    m_page = CPageText(m_finder.Words(page0));
    m_page0 = page0;
    return m_page;
}
