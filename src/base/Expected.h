#pragma once

#include <string>
#include <utility>
#include <variant>

/// A reason why there is no value; made by Failure("sentence").
struct Failure {
    explicit Failure(std::string text) : sentence(std::move(text)) {}
    std::string sentence;
};

/// A value, or the sentence that says why there is none.
template <class T>
class [[nodiscard]] Expected {
public:
    Expected(T value) : m_state(std::in_place_index<0>, std::move(value)) {}
    Expected(Failure failure) : m_state(std::in_place_index<1>, std::move(failure)) {}

    bool Ok() const { return m_state.index() == 0; }
    explicit operator bool() const { return Ok(); }

    /// Only with Ok().
    T& Value() { return std::get<0>(m_state); }
    const T& Value() const { return std::get<0>(m_state); }
    T& operator*() { return Value(); }
    const T& operator*() const { return Value(); }
    T* operator->() { return &Value(); }
    const T* operator->() const { return &Value(); }

    /// Only without Ok().
    const std::string& Error() const { return std::get<1>(m_state).sentence; }

private:
    std::variant<T, Failure> m_state;
};
