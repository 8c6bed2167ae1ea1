#include "svg_text.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "path_text.h"

namespace iconpack {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kFamilyStroke = "1.5";
constexpr std::string_view kDotStroke = "2";

struct Attribute {
    std::string name;
    std::string value;
};

struct Tag {
    std::string name;
    std::vector<Attribute> attributes;
    bool isClosing = false; // </name>
    bool isEmpty = false;   // <name/>

    const Attribute* Find(std::string_view wanted) const {
        for (const Attribute& attribute : attributes) {
            if (attribute.name == wanted)
                return &attribute;
        }
        return nullptr;
    }
};

class Scanner {
public:
    explicit Scanner(std::string_view text) : m_text(text) {}

    // The tags in order; whatever stands between them is left out.
    std::vector<Tag> Run() {
        std::vector<Tag> tags;
        while (SkipBehind("<")) {
            if (m_text.starts_with("!--"))
                Require(SkipBehind("-->"), "a comment does not end");
            else if (m_text.starts_with("?") || m_text.starts_with("!"))
                Require(SkipBehind(">"), "a declaration does not end");
            else
                tags.push_back(ReadTag());
        }
        return tags;
    }

private:
    static void Require(bool condition, const char* fault) {
        if (!condition)
            throw std::runtime_error(fault);
    }

    Tag ReadTag() {
        Tag tag;
        tag.isClosing = Take("/");
        tag.name = TakeName();
        Require(!tag.name.empty(), "a tag has no name");
        for (SkipBlanks(); !Take(">"); SkipBlanks()) {
            if (Take("/"))
                tag.isEmpty = true;
            else
                tag.attributes.push_back(ReadAttribute());
        }
        return tag;
    }

    Attribute ReadAttribute() {
        Attribute attribute;
        attribute.name = TakeName();
        SkipBlanks();
        Require(!attribute.name.empty() && Take("="), "an attribute is malformed");
        SkipBlanks();
        Require(m_text.starts_with('"') || m_text.starts_with('\''), "an attribute has no quotes");
        char quote = m_text.front();
        size_t end = m_text.find(quote, 1);
        Require(end != std::string_view::npos, "an attribute does not end");
        attribute.value = m_text.substr(1, end - 1);
        m_text.remove_prefix(end + 1);
        return attribute;
    }

    std::string TakeName() {
        size_t end = std::min(m_text.find_first_of(" \t\r\n=/>"), m_text.size());
        std::string name(m_text.substr(0, end));
        m_text.remove_prefix(end);
        return name;
    }

    bool Take(std::string_view expected) {
        Require(!m_text.empty(), "a tag does not end");
        if (!m_text.starts_with(expected))
            return false;
        m_text.remove_prefix(expected.size());
        return true;
    }

    void SkipBlanks() { m_text.remove_prefix(std::min(m_text.find_first_not_of(kBlanks), m_text.size())); }

    bool SkipBehind(std::string_view mark) {
        size_t at = m_text.find(mark);
        if (at == std::string_view::npos)
            return false;
        m_text.remove_prefix(at + mark.size());
        return true;
    }

    std::string_view m_text;
};

bool IsDropped(const Attribute& attribute) {
    return attribute.name == "class" || attribute.name.starts_with("aria-") ||
           attribute.name.starts_with("data-");
}

void Normalize(Attribute& attribute) {
    if (attribute.value == "currentColor")
        attribute.value = "#000";
    else if (attribute.name == "stroke-width" && attribute.value == "2")
        attribute.value = kFamilyStroke;
    else if (attribute.name == "d")
        attribute.value = NormalizePath(attribute.value);
}

void Normalize(Tag& tag) {
    std::erase_if(tag.attributes, IsDropped);
    for (Attribute& attribute : tag.attributes)
        Normalize(attribute);
    const Attribute* data = tag.Find("d");
    if (data && IsDots(data->value) && !tag.Find("stroke-width"))
        tag.attributes.push_back({"stroke-width", std::string(kDotStroke)});
}

// Place of a root attribute in the order that packs best; others follow as they come.
size_t RootRank(const Attribute& attribute) {
    static constexpr std::string_view kOrder[] = {"xmlns",          "width",           "height",
                                                  "viewBox",        "stroke",          "stroke-width",
                                                  "stroke-linecap", "stroke-linejoin", "fill"};
    return static_cast<size_t>(std::ranges::find(kOrder, attribute.name) - std::begin(kOrder));
}

std::string Write(const Tag& tag, std::string_view beforeAttribute, std::string_view end) {
    std::string text = (tag.isClosing ? "</" : "<") + tag.name;
    for (const Attribute& attribute : tag.attributes) {
        char quote = attribute.value.find('"') == std::string::npos ? '"' : '\'';
        text.append(beforeAttribute).append(attribute.name) += '=';
        (text += quote).append(attribute.value) += quote;
    }
    return text.append(end).append("\n");
}

} // namespace

std::string NormalizeSvg(std::string_view text) {
    std::vector<Tag> tags = Scanner(text).Run();
    if (tags.size() < 2 || tags.front().name != "svg" || tags.back().name != "svg" || !tags.back().isClosing)
        throw std::runtime_error("the text is not one svg element");
    for (Tag& tag : tags)
        Normalize(tag);
    std::ranges::stable_sort(tags.front().attributes, {}, RootRank);
    std::string result = Write(tags.front(), "\n  ", "\n>");
    for (size_t i = 1; i + 1 < tags.size(); i++)
        result += "  " + Write(tags[i], " ", tags[i].isEmpty ? " />" : ">");
    return result + "</svg>\n";
}

} // namespace iconpack
