// Help texts for people at a terminal, made from the command table.
#pragma once

#include <cstddef>
#include <string>

#include "cli/CommandTable.h"
#include "protocol/FinalAction.h"

namespace cli {

/// "ferrule run [SEQUENCE] [OPTION]…"
std::string UsageLine(const CommandRow& command);
/// The option's names and value: "-j, --jobs N".
std::string OptionTerm(const OptionRow& option);
/// What it does, with its choices and what counts without it.
std::string OptionHelp(const OptionRow& option);
std::string ActionHelp(const FinalActionFacts& facts);

std::string CommandHelp(const CommandRow& command, std::size_t width);
/// What "ferrule --help" prints.
std::string ProgramHelp(std::size_t width);

/// Breaks lines at blanks; every line but the first begins with `indent` blanks. Counts characters, not bytes.
std::string Wrapped(const std::string& text, std::size_t indent, std::size_t width);

}  // namespace cli
