// Values of a house's files, read as the display reads them, and words about them.
#pragma once

#include "desktop/json_document.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace desktop {

using Node = std::uint32_t;
using Kind = JsonDocument::Kind;
constexpr Node None = JsonDocument::None;

// null is read as the number 0
bool IsNumber(const JsonDocument& doc, Node node);
const char* KindName(Kind kind); // "a string"
bool IsHexDigit(char c);
std::string Shown(std::string_view text); // in quotes, a long one cut
std::string ShownNumber(double value);
bool EqualIgnoringCase(std::string_view a, std::string_view b);

std::optional<bool> ReadYesNo(const JsonDocument& doc, Node node);
// A number, or a string of a sign, digits and at most one separator.
std::optional<double> ReadLooseNumber(const JsonDocument& doc, Node node);
// What is wrong with the text that formats a value; empty when nothing is.
std::string FormatFault(std::string_view format);

} // namespace desktop
