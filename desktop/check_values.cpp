#include "desktop/check_values.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace desktop {

namespace {

constexpr std::size_t LongestShownText = 40;

} // namespace

bool IsNumber(const JsonDocument& doc, Node node) {
    return doc.At(node).kind == Kind::Number || doc.At(node).kind == Kind::Null;
}

const char* KindName(Kind kind) {
    switch (kind) {
    case Kind::Object:
        return "an object";
    case Kind::Array:
        return "an array";
    case Kind::String:
        return "a string";
    case Kind::Number:
        return "a number";
    case Kind::Boolean:
        return "true or false";
    default:
        return "null";
    }
}

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

std::string Shown(std::string_view text) {
    std::size_t end = std::min(text.size(), LongestShownText);
    while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end; // not inside a character
    return "\"" + std::string(text.substr(0, end)) + (end < text.size() ? "..." : "") + "\"";
}

std::string ShownNumber(double value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

std::optional<bool> ReadYesNo(const JsonDocument& doc, Node node) {
    const std::string_view raw = doc.Raw(node);
    if (IsNumber(doc, node))
        return std::trunc(doc.Number(node)) != 0;
    if (doc.At(node).kind == Kind::Boolean || raw == "true" || raw == "false")
        return doc.At(node).kind == Kind::Boolean || doc.At(node).kind == Kind::String
                   ? std::optional<bool>(raw == "true")
                   : std::nullopt;
    if (doc.At(node).kind != Kind::String)
        return std::nullopt;
    if (raw == "1" || raw == "TRUE")
        return true;
    if (raw == "0" || raw == "FALSE")
        return false;
    return std::nullopt;
}

std::optional<double> ReadLooseNumber(const JsonDocument& doc, Node node) {
    if (IsNumber(doc, node))
        return doc.Number(node);
    if (doc.At(node).kind != Kind::String)
        return std::nullopt;
    std::string text(doc.Raw(node));
    const std::size_t sign = text.starts_with('+') || text.starts_with('-') ? 1 : 0;
    std::size_t digits = 0, separators = 0;
    for (std::size_t i = sign; i < text.size(); ++i) {
        const bool separator = text[i] == '.' || text[i] == ',';
        separators += separator;
        digits += !separator && text[i] >= '0' && text[i] <= '9';
    }
    if (digits == 0 || separators > 1 || sign + digits + separators != text.size())
        return std::nullopt;
    std::replace(text.begin(), text.end(), ',', '.');
    return std::strtod(text.c_str(), nullptr);
}

std::string FormatFault(std::string_view format) {
    int placeholders = 0;
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%')
            continue;
        if (i + 1 < format.size() && format[i + 1] == '%') {
            ++i;
            continue;
        }
        std::size_t digit = i + 2;
        while (digit < format.size() && format[digit] >= '0' && format[digit] <= '9')
            ++digit;
        const bool shaped = i + 1 < format.size() && format[i + 1] == '.' && digit > i + 2 &&
                            digit < format.size() && (format[digit] == 'f' || format[digit] == 'F');
        if (!shaped)
            return "a '%' that is neither \"%%\" nor a placeholder as \"%.1f\"";
        if (digit - i - 2 > 1)
            return "a placeholder has at most 9 decimals";
        ++placeholders;
        i = digit;
    }
    if (placeholders > 1)
        return "more than one placeholder";
    return "";
}

} // namespace desktop
