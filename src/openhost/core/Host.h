// The host object, and where its remarks go.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace openhost {

/// The state of one running host, made of parts: one object of each class that somebody asked for.
///
/// A part is made when it is first asked for and destroyed with the host, the youngest first. The functions behind
/// the tables have no argument that leads to the host, so the living host is reached through Part<T>(). There is at
/// most one host at a time; everything happens on one thread.
class CHost {
public:
    CHost();
    ~CHost();
    CHost(const CHost&) = delete;
    CHost& operator=(const CHost&) = delete;

    static CHost& Current();

    template <class T>
    T& Get()
    {
        const std::size_t index = IndexOf<T>();
        if (index >= m_byType.size()) m_byType.resize(index + 1, nullptr);
        if (!m_byType[index]) {
            auto holder = std::make_unique<CHolder<T>>();
            void* part = &holder->part;
            m_parts.push_back(std::move(holder));
            m_byType[index] = part;
        }
        return *static_cast<T*>(m_byType[index]);
    }

private:
    struct CHolderBase {
        virtual ~CHolderBase() = default;
    };
    template <class T>
    struct CHolder final : CHolderBase {
        T part;
    };
    template <class T>
    static std::size_t IndexOf()
    {
        static const std::size_t index = NextIndex();
        return index;
    }
    static std::size_t NextIndex();

    std::vector<std::unique_ptr<CHolderBase>> m_parts;  // in order of making
    std::vector<void*> m_byType;
};

/// The part T of the running host.
template <class T>
T& Part()
{
    return CHost::Current().Get<T>();
}

/// Where the host's own remarks go: standard error unless somebody listens. Each remark is one line without its end.
class CDiagnostics {
public:
    using Listener = std::function<void(std::string_view)>;
    void SetListener(Listener listener) { m_listener = std::move(listener); }
    void Say(std::string_view remark);

private:
    Listener m_listener;
};

/// Says one remark about the host or a plug-in, for the person who operates the host.
void Diagnose(std::string_view remark);
/// Where remarks go that nobody hears.
void SayOnStandardError(std::string_view remark);

}  // namespace openhost
