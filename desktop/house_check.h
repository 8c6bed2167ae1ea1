// What is wrong with a house, said so that its author finds the place: file, line, column, key path.
//
// An error is something that the display loses: an item, a table entry, a whole file. A warning is something
// that it shows otherwise than it was meant: a symbol that no table has, two items with one number, a
// misspelt key.
#pragma once

#include "desktop/house.h"

#include <string>
#include <vector>

namespace desktop {

enum class Severity { Warning, Error };

struct Finding {
    HouseFile file = HouseFile::Structure;
    std::size_t line = 1;
    std::size_t column = 1;
    Severity severity = Severity::Warning;
    std::string path; // "[3].sub[1].T"; empty for the file as a whole
    std::string text;
};

struct CheckResult {
    std::vector<Finding> findings; // in the order of the files and of their texts
    std::size_t errors = 0;        // counted also where the list is cut
    std::size_t warnings = 0;

    bool Good() const { return errors == 0; }
};

CheckResult CheckHouse(const House& house);

// "FOLDER/structure.json:12:7: error: [3].sub[1].T: ..."
std::string FormatFinding(const Finding& finding, const std::filesystem::path& folder);

// "no faults", "1 error, 2 warnings"
std::string Summary(const CheckResult& result);

} // namespace desktop
