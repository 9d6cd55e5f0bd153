#include "openhost/catalog/Query.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/Text.h"
#include "base/Unicode.h"

namespace openhost {

struct CIndexQuery::Node {
    enum class Kind { Text, And, Or, Not } kind = Kind::Text;
    std::string expression = {};  // of a text
    std::vector<std::unique_ptr<Node>> parts = {};
};

namespace {

using Node = CIndexQuery::Node;
using NodePointer = std::unique_ptr<Node>;

constexpr int kDeepest = 100;

struct Token {
    enum class Kind { Text, And, Or, Not, Open, Close, End } kind = Kind::End;
    std::string text = {};
    bool quoted = false, isPrefix = false;
};

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool HoldsWord(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();)
        if (IsPartOfWord(NextUtf8(text, at))) return true;
    return false;
}

class CTokens {
public:
    explicit CTokens(std::string_view text) : m_text(text) { Advance(); }

    const Token& Now() const { return m_now; }
    bool Unclosed() const { return m_unclosed; }
    void Advance()
    {
        while (m_at < m_text.size() && IsBlank(m_text[m_at])) ++m_at;
        m_now = {};
        if (m_at == m_text.size()) return;
        const char first = m_text[m_at];
        const bool more = m_at + 1 < m_text.size() && !IsBlank(m_text[m_at + 1]);
        if (first == '(' || first == ')') {
            m_now.kind = first == '(' ? Token::Kind::Open : Token::Kind::Close;
            ++m_at;
        } else if (first == '-' && more) {
            m_now.kind = Token::Kind::Not;
            ++m_at;
        } else if (first == '"') {
            TakeQuoted();
        } else {
            TakeWord();
        }
    }

private:
    void TakeQuoted()
    {
        const auto end = m_text.find('"', m_at + 1);
        m_unclosed = m_unclosed || end == std::string_view::npos;
        m_now = {
            .kind = Token::Kind::Text, .text = std::string(m_text.substr(m_at + 1, end - m_at - 1)), .quoted = true};
        m_at = end == std::string_view::npos ? m_text.size() : end + 1;
        TakeStar();
    }
    void TakeWord()
    {
        const std::size_t begin = m_at;
        while (m_at < m_text.size() && !IsBlank(m_text[m_at]) &&
               std::string_view("()\"*").find(m_text[m_at]) == std::string_view::npos)
            ++m_at;
        m_now = {.kind = Token::Kind::Text, .text = std::string(m_text.substr(begin, m_at - begin))};
        if (m_now.text == "AND") m_now.kind = Token::Kind::And;
        if (m_now.text == "OR") m_now.kind = Token::Kind::Or;
        if (m_now.text == "NOT") m_now.kind = Token::Kind::Not;
        TakeStar();
    }
    void TakeStar()
    {
        for (; m_at < m_text.size() && m_text[m_at] == '*'; ++m_at) m_now.isPrefix = true;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    Token m_now;
    bool m_unclosed = false;
};

/// Answers null, with the reason, when the query makes no sense.
class CParser {
public:
    explicit CParser(std::string_view text) : m_tokens(text) {}

    NodePointer Parse()
    {
        NodePointer node = Alternatives(0);
        if (node && m_tokens.Now().kind == Token::Kind::Close)
            return Fail("a closing parenthesis has no opening one");
        if (m_tokens.Unclosed()) return Fail("a quotation mark has no second one");
        return node;
    }
    const std::string& Problem() const { return m_problem; }

private:
    NodePointer Fail(const std::string& problem)
    {
        if (m_problem.empty()) m_problem = problem;
        return nullptr;
    }

    NodePointer Alternatives(int depth)
    {
        if (depth > kDeepest) return Fail("there are too many parentheses inside one another");
        auto all = std::make_unique<Node>(Node{.kind = Node::Kind::Or});
        for (;;) {
            NodePointer part = Together(depth);
            if (!part) return nullptr;
            all->parts.push_back(std::move(part));
            if (m_tokens.Now().kind != Token::Kind::Or) break;
            m_tokens.Advance();
        }
        return all->parts.size() == 1 ? std::move(all->parts.front()) : std::move(all);
    }

    NodePointer Together(int depth)
    {
        auto all = std::make_unique<Node>(Node{.kind = Node::Kind::And});
        bool wantsMore = true;
        for (;;) {
            const Token::Kind kind = m_tokens.Now().kind;
            if (kind == Token::Kind::And) {
                if (wantsMore) return Fail("AND needs something on both sides");
                wantsMore = true;
                m_tokens.Advance();
                continue;
            }
            if (kind == Token::Kind::End || kind == Token::Kind::Or || kind == Token::Kind::Close) break;
            NodePointer part = Single(depth);
            if (!part) return nullptr;
            all->parts.push_back(std::move(part));
            wantsMore = false;
        }
        if (all->parts.empty()) return Fail("something to look for is missing");
        if (wantsMore) return Fail("AND needs something on both sides");
        const bool onlyNot = std::all_of(all->parts.begin(), all->parts.end(),
                                         [](const NodePointer& part) { return part->kind == Node::Kind::Not; });
        if (onlyNot) return Fail("beside what must not be there, say what is to be found");
        return all->parts.size() == 1 ? std::move(all->parts.front()) : std::move(all);
    }

    NodePointer Single(int depth)
    {
        if (depth > kDeepest) return Fail("there are too many parentheses inside one another");
        const Token token = m_tokens.Now();
        m_tokens.Advance();
        if (token.kind == Token::Kind::Not) {
            const Token::Kind next = m_tokens.Now().kind;
            if (next != Token::Kind::Text && next != Token::Kind::Open) return Fail("NOT needs something behind it");
            auto node = std::make_unique<Node>(Node{.kind = Node::Kind::Not});
            NodePointer part = Single(depth + 1);
            if (!part) return nullptr;
            node->parts.push_back(std::move(part));
            return node;
        }
        if (token.kind == Token::Kind::Open) {
            NodePointer node = Alternatives(depth + 1);
            if (!node) return nullptr;
            if (m_tokens.Now().kind != Token::Kind::Close) return Fail("an opening parenthesis has no closing one");
            m_tokens.Advance();
            return node;
        }
        if (!HoldsWord(token.text)) return Fail("\"" + token.text + "\" holds no letter and no digit");
        return std::make_unique<Node>(
            Node{.kind = Node::Kind::Text,
                 .expression = "\"" + ReplaceAll(token.text, "\"", "\"\"") + "\"" + (token.isPrefix ? "*" : "")});
    }

    CTokens m_tokens;
    std::string m_problem;
};

using Keys = std::vector<std::int64_t>;  // pages or documents, ascending

/// Finds what holds for pages, or for documents.
class CEvaluation {
public:
    CEvaluation(CIndexReader& index, bool onOnePage) : m_index(index), m_onOnePage(onOnePage) {}

    Keys Evaluate(const Node& node)
    {
        if (node.kind == Node::Kind::Text) {
            Keys keys = m_index.PagesWith(node.expression);
            m_pages.insert(m_pages.end(), keys.begin(), keys.end());
            return Grouped(std::move(keys));
        }
        return node.kind == Node::Kind::Or ? Either(node) : Both(node);
    }
    /// Those of all texts that are wanted.
    Keys Pages()
    {
        std::sort(m_pages.begin(), m_pages.end());
        m_pages.erase(std::unique(m_pages.begin(), m_pages.end()), m_pages.end());
        return std::move(m_pages);
    }

private:
    Keys Grouped(Keys keys) const
    {
        if (m_onOnePage) return keys;
        for (std::int64_t& key : keys) key = DocumentOf(key);
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
        return keys;
    }

    Keys Either(const Node& node)
    {
        Keys all;
        for (const NodePointer& part : node.parts) {
            const Keys more = Evaluate(*part);
            Keys merged;
            std::set_union(all.begin(), all.end(), more.begin(), more.end(), std::back_inserter(merged));
            all = std::move(merged);
        }
        return all;
    }

    /// What must not be there is taken away from what is; the parser has seen to it that there is something.
    Keys Both(const Node& node)
    {
        Keys all;
        bool first = true;
        for (const NodePointer& part : node.parts) {
            if (part->kind == Node::Kind::Not) continue;
            Keys more = Evaluate(*part), kept;
            std::set_intersection(all.begin(), all.end(), more.begin(), more.end(), std::back_inserter(kept));
            all = first ? std::move(more) : std::move(kept);
            first = false;
        }
        for (const NodePointer& part : node.parts) {
            if (part->kind != Node::Kind::Not) continue;
            CEvaluation unwanted(m_index, m_onOnePage);  // its pages are nobody's
            const Keys less = unwanted.Evaluate(*part->parts.front());
            Keys kept;
            std::set_difference(all.begin(), all.end(), less.begin(), less.end(), std::back_inserter(kept));
            all = std::move(kept);
        }
        return all;
    }

    CIndexReader& m_index;
    bool m_onOnePage;
    Keys m_pages;
};

void AddWanted(const Node& node, std::string& expression)
{
    if (node.kind == Node::Kind::Not) return;
    if (node.kind == Node::Kind::Text) expression += (expression.empty() ? "" : " OR ") + node.expression;
    for (const NodePointer& part : node.parts) AddWanted(*part, expression);
}

}  // namespace

CIndexQuery::CIndexQuery(std::unique_ptr<Node> root) : m_root(std::move(root)) {}
CIndexQuery::CIndexQuery(CIndexQuery&&) noexcept = default;
CIndexQuery& CIndexQuery::operator=(CIndexQuery&&) noexcept = default;
CIndexQuery::~CIndexQuery() = default;

Expected<CIndexQuery> CIndexQuery::Parse(std::string_view utf8)
{
    const std::string text = ReplaceAll(SanitizeUtf8(utf8), std::string_view("\0", 1), " ");
    CParser parser(text);
    NodePointer root = parser.Parse();
    if (!root) return Failure("The query cannot be understood: " + parser.Problem() + ".");
    return CIndexQuery(std::move(root));
}

std::vector<PageKey> CIndexQuery::Run(CIndexReader& index, bool onOnePage) const
{
    CEvaluation evaluation(index, onOnePage);
    const Keys matching = evaluation.Evaluate(*m_root);
    std::vector<PageKey> pages = evaluation.Pages();
    std::erase_if(pages, [&](PageKey page) {
        return !std::binary_search(matching.begin(), matching.end(), onOnePage ? page : DocumentOf(page));
    });
    return pages;
}

std::string CIndexQuery::WantedTexts() const
{
    std::string expression;
    AddWanted(*m_root, expression);
    return expression;
}

}  // namespace openhost
