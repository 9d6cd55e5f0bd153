// The elements that a user can choose from when building an expression.
#pragma once

#include <span>

/// One element: what it is called and the expression that it inserts. Empty: the category itself inserts nothing.
struct PatternElement {
    const char* label;
    const char* pattern;
};

struct PatternCategory {
    PatternElement self;
    std::span<const PatternElement> elements;
};

/// In the order in which they are shown.
[[nodiscard]] std::span<const PatternCategory> PatternCatalogue();
