#include "openhost/catalog/TextReaders.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "openhost/catalog/TextMessages.h"
#include "platform/ChildProcess.h"
#include "platform/Clock.h"

namespace openhost {

namespace {

constexpr int kWaitMilliseconds = 500;

struct Reader {
    explicit Reader(platform::CChildProcess started) : child(std::move(started)) {}

    platform::CChildProcess child;
    std::optional<std::size_t> order;  // what it is reading
    DocumentTexts texts;               // as far as they have come
    std::uint64_t deadline = 0;        // 0: none
    std::string killedFor;
    bool gone = false;
};

class CReaders {
public:
    CReaders(const ReaderSettings& settings, const std::vector<TextOrder>& orders,
             const std::function<void(std::size_t, DocumentTexts)>& take)
        : m_settings(settings), m_orders(orders), m_take(take)
    {
    }

    void Run()
    {
        const std::size_t wanted = std::min(m_orders.size(), static_cast<std::size_t>(std::max(1, m_settings.jobs)));
        platform::CChildWatch watch;
        while (m_done < m_orders.size()) {
            while (m_readers.size() < wanted && m_next < m_orders.size() && StartReader()) {
            }
            if (m_readers.empty()) return GiveUp();
            std::vector<platform::CChildProcess*> children;
            for (const auto& reader : m_readers) children.push_back(&reader->child);
            if (const auto news = watch.Wait(children, kWaitMilliseconds)) Handle(*news);
            KillLate();
            std::erase_if(m_readers, [](const auto& reader) { return reader->gone; });
        }
    }

private:
    bool StartReader()
    {
        platform::FileResult result;
        auto child = platform::CChildProcess::Start({.program = m_settings.program,
                                                     .arguments = m_settings.arguments,
                                                     .addressSpaceBytes = m_settings.memoryBytes},
                                                    &result);
        if (!child) {
            m_problem = m_settings.program + " cannot be started: " + platform::ErrorText(result.errorNumber);
            return false;
        }
        m_readers.push_back(std::make_unique<Reader>(std::move(*child)));
        HandOut(*m_readers.back());
        return true;
    }

    void HandOut(Reader& reader)
    {
        reader.order.reset();
        if (m_next == m_orders.size()) return reader.child.CloseInput();
        reader.order = m_next++;
        reader.texts = {};
        const auto limit = static_cast<std::uint64_t>(m_settings.timeoutSeconds) * 1000;
        reader.deadline = limit == 0 ? 0 : platform::MonotonicMilliseconds() + limit;
        (void)reader.child.Send(OrderLine(m_orders[*reader.order]));  // that it is gone comes as news
    }

    void Handle(const platform::ChildNews& news)
    {
        const auto found = std::find_if(m_readers.begin(), m_readers.end(),
                                        [&](const auto& reader) { return &reader->child == news.child; });
        if (found == m_readers.end()) return;
        Reader& reader = **found;
        if (news.event == platform::ChildEvent::Ended) {
            reader.gone = true;
            if (reader.order) Deliver(reader, DeathOf(reader));
        } else if (news.event == platform::ChildEvent::Line && reader.order && TakeLine(news.text, reader.texts)) {
            Deliver(reader, std::move(reader.texts));
            HandOut(reader);
        }
    }

    /// A document that a reader died over is not tried again before it changes; a reader that simply ended is not to
    /// blame on the document.
    static DocumentTexts DeathOf(const Reader& reader)
    {
        if (!reader.killedFor.empty()) return {.state = DocumentState::Failed, .message = reader.killedFor};
        const platform::ChildEnding ending = reader.child.Ending();
        if (ending.signal == 0)
            return {
                .state = DocumentState::Unreadable,
                .message = "The program that reads it ended with the code " + std::to_string(ending.exitCode) + "."};
        return {.state = DocumentState::Failed,
                .message = "The program crashed while reading it (signal " + std::to_string(ending.signal) + ")."};
    }

    void Deliver(Reader& reader, DocumentTexts texts)
    {
        const std::size_t order = *reader.order;
        reader.order.reset();
        ++m_done;
        m_take(order, std::move(texts));
    }

    void KillLate()
    {
        for (const auto& reader : m_readers) {
            const bool late = reader->order && reader->deadline != 0 && reader->killedFor.empty() &&
                              platform::MonotonicMilliseconds() > reader->deadline;
            if (!late) continue;
            reader->killedFor =
                "Reading it took longer than " + std::to_string(m_settings.timeoutSeconds) + " seconds.";
            reader->child.Kill();
        }
    }

    /// No reader can be started: what is left can be tried again.
    void GiveUp()
    {
        for (; m_next < m_orders.size(); ++m_next, ++m_done)
            m_take(m_next, {.state = DocumentState::Unreadable, .message = m_problem});
    }

    const ReaderSettings& m_settings;
    const std::vector<TextOrder>& m_orders;
    const std::function<void(std::size_t, DocumentTexts)>& m_take;
    std::vector<std::unique_ptr<Reader>> m_readers;
    std::size_t m_next = 0, m_done = 0;
    std::string m_problem;
};

}  // namespace

void ReadAllTexts(const ReaderSettings& settings, const std::vector<TextOrder>& orders,
                  const std::function<void(std::size_t number, DocumentTexts texts)>& take)
{
    if (!settings.program.empty()) return CReaders(settings, orders, take).Run();
    for (std::size_t i = 0; i < orders.size(); ++i)
        take(i, ReadDocumentTexts(orders[i], settings.passwordsUtf8, nullptr));
}

}  // namespace openhost
