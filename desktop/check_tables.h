// The three tables of a house: categories, rooms, symbols.
#pragma once

#include "desktop/check_report.h"

#include <optional>
#include <unordered_set>

namespace desktop {

using Numbers = std::unordered_set<int>;

// nullopt: the file could not be read, so nobody knows what it would hold
struct Tables {
    std::optional<Numbers> categories;
    std::optional<Numbers> rooms;
    std::optional<Numbers> symbols;
};

// Each checks one file and answers with the numbers that it holds.
Numbers CheckRoomsOrCategories(const JsonDocument& doc, Report& report,
                               const std::optional<Numbers>& symbols);
Numbers CheckSymbols(const JsonDocument& doc, Report& report);

} // namespace desktop
