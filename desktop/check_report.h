// What the checks of all four files share: where findings go, and the reading of single members with a word about them.
#pragma once

#include "desktop/check_values.h"
#include "desktop/house_check.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace desktop {

class Report {
    static constexpr std::size_t MaxFindings = 1000;

public:
    Report(CheckResult& into, HouseFile of, const JsonDocument& document)
        : result(into), file(of), doc(document) {}

    void Error(Node node, std::string text) { Add(Severity::Error, node, std::move(text)); }
    void Warn(Node node, std::string text) { Add(Severity::Warning, node, std::move(text)); }

    void AddAt(Severity severity, std::size_t offset, std::string path, std::string text) {
        ++(severity == Severity::Error ? result.errors : result.warnings);
        if (result.findings.size() >= MaxFindings)
            return;
        const TextPosition at = doc.PositionOf(offset);
        result.findings.push_back({file, at.line, at.column, severity, std::move(path), std::move(text)});
    }

private:
    void Add(Severity severity, Node node, std::string text) {
        const bool shown = result.findings.size() < MaxFindings;
        AddAt(severity, doc.At(node).start, shown ? doc.PathOf(node) : "", std::move(text));
    }

    CheckResult& result;
    HouseFile file;
    const JsonDocument& doc;
};

// What all checks of one file share.
class FileCheck {
public:
    FileCheck(const JsonDocument& document, Report& to) : doc(document), report(to) {}

protected:
    Node Find(Node object, std::string_view key) const { return doc.Find(object, key); }
    Kind KindOf(Node node) const { return doc.At(node).kind; }
    bool HasKind(Node node, Kind kind) const { return node != None && KindOf(node) == kind; }

    // The whole number under the key; 0 with a warning where the display would read 0 as well.
    std::optional<int> Whole(Node object, std::string_view key) {
        const Node node = Find(object, key);
        if (node == None)
            return std::nullopt;
        if (!IsNumber(doc, node)) {
            report.Warn(node, "is " + std::string(KindName(KindOf(node))) + ", not a number; read as 0");
            return 0;
        }
        return WholeOf(node);
    }

    int WholeOf(Node node) {
        const double value = doc.Number(node);
        if (value != std::trunc(value))
            report.Warn(node, "is no whole number; what stands behind the point is dropped");
        if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max()) {
            report.Warn(node, "is too large for a 32-bit number");
            return 0;
        }
        return static_cast<int>(value);
    }

    void WarnUnlessString(Node object, std::string_view key) {
        const Node node = Find(object, key);
        if (node != None && KindOf(node) != Kind::String)
            report.Warn(node, "is " + std::string(KindName(KindOf(node))) + ", not a string");
    }

    // Keys count letter by letter; "n" for "N" is a slip that nothing else would tell.
    void WarnMisspeltKeys(Node object, std::span<const std::string_view> known) {
        for (Node i = doc.At(object).firstChild; i != None; i = doc.At(i).nextSibling) {
            const std::string_view key = doc.Key(i);
            if (std::find(known.begin(), known.end(), key) != known.end())
                continue;
            for (const std::string_view meant : known)
                if (EqualIgnoringCase(key, meant))
                    report.Warn(i, "is not read; the key is \"" + std::string(meant) + "\"");
        }
    }

    const JsonDocument& doc;
    Report& report;
};

} // namespace desktop
