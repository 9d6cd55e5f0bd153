#pragma once

#include <cstddef>
#include <memory>
#include <string>

/// SHA-256 of bytes that come in pieces; lower-case hexadecimal digits.
class CSha256 {
public:
    CSha256();
    ~CSha256();
    CSha256(const CSha256&) = delete;
    CSha256& operator=(const CSha256&) = delete;

    void Add(const char* bytes, std::size_t length);
    /// Once, at the end.
    std::string Digest();

private:
    struct State;
    std::unique_ptr<State> m_state;
};
