#pragma once

#include <string>

#include "ui/Windows.h"

/// Lets the user choose an element of a search expression from the catalogue.
class CDlgAddRegExpElement {
public:
    explicit CDlgAddRegExpElement(DialogServices services) : m_services(std::move(services)) {}
    CDlgAddRegExpElement(const CDlgAddRegExpElement&) = delete;
    CDlgAddRegExpElement& operator=(const CDlgAddRegExpElement&) = delete;

    /// True when the user has confirmed; then Pattern() is what is to be inserted.
    [[nodiscard]] bool Show();
    [[nodiscard]] std::string Pattern() const;

    [[nodiscard]] DialogForm Describe();

private:
    [[nodiscard]] FormAnswer Confirm();

    DialogServices m_services;
    int m_selected = -1;  // in the tree, from top to bottom
};
