// The whole house; check_tables.* and check_structure.* know the files.
#include "desktop/house_check.h"

#include "desktop/check_structure.h"

#include <algorithm>
#include <tuple>

namespace desktop {

namespace {

// Reads one file; false with an error in the result when it cannot be read.
bool ReadFile(const House& house, HouseFile file, JsonDocument& doc, CheckResult& result) {
    const auto problem = doc.Parse(house.Text(file));
    Report report(result, file, doc);
    const auto pathOf = [&](const JsonRemark& remark) {
        return remark.node < doc.NodeCount() ? doc.PathOf(remark.node) : "";
    };
    for (const JsonRemark& remark : doc.Remarks())
        report.AddAt(Severity::Warning, remark.offset, pathOf(remark), remark.text);
    if (problem)
        report.AddAt(Severity::Error, problem->offset, pathOf(*problem), problem->text);
    return !problem;
}

} // namespace

CheckResult CheckHouse(const House& house) {
    CheckResult result;
    Tables tables;
    const auto check = [&](HouseFile file, auto visit) {
        JsonDocument doc;
        Report report(result, file, doc);
        if (ReadFile(house, file, doc, result))
            visit(doc, report);
    };
    check(HouseFile::Symbols,
          [&](const JsonDocument& doc, Report& report) { tables.symbols = CheckSymbols(doc, report); });
    check(HouseFile::Categories, [&](const JsonDocument& doc, Report& report) {
        tables.categories = CheckRoomsOrCategories(doc, report, tables.symbols);
    });
    check(HouseFile::Rooms, [&](const JsonDocument& doc, Report& report) {
        tables.rooms = CheckRoomsOrCategories(doc, report, tables.symbols);
    });
    check(HouseFile::Structure,
          [&](const JsonDocument& doc, Report& report) { CheckStructure(doc, report, tables); });
    std::stable_sort(result.findings.begin(), result.findings.end(), [](const Finding& a, const Finding& b) {
        return std::tuple(a.file, a.line, a.column) < std::tuple(b.file, b.line, b.column);
    });
    return result;
}

std::string FormatFinding(const Finding& finding, const std::filesystem::path& folder) {
    std::string line = (folder / FileNameOf(finding.file)).string() + ":" + std::to_string(finding.line) +
                       ":" + std::to_string(finding.column) + ": ";
    line += finding.severity == Severity::Error ? "error: " : "warning: ";
    if (!finding.path.empty())
        line += finding.path + ": ";
    return line + finding.text;
}

std::string Summary(const CheckResult& result) {
    const auto count = [](std::size_t number, const char* what) {
        return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
    };
    if (result.errors + result.warnings == 0)
        return "no faults";
    std::string text = count(result.errors, "error") + ", " + count(result.warnings, "warning");
    if (result.findings.size() < result.errors + result.warnings)
        text += "; the first " + std::to_string(result.findings.size()) + " are shown";
    return text;
}

} // namespace desktop
