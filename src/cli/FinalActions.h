// Names of the final actions.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

struct FinalActionRow {
    int code;
    std::string name;
    std::string help;         ///< what happens to the input
    std::string destination;  ///< what --destination means; empty when it means nothing
};

/// In the order of their codes.
const std::vector<FinalActionRow>& FinalActions();

/// By name, in any letter case, or by code. Null when there is none.
const FinalActionRow* FindFinalAction(std::string_view nameOrCode);

}  // namespace cli
