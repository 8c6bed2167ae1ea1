#include "gui/text_layout.h"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "gui/font.h"

namespace {

// The rules word by word: measuring whole texts, taking characters off the end one by one.
namespace slow {

int Width(CVrGuiFont& font, const std::string& text) {
    CVrSize size;
    font.MeasureText(size, text.c_str());
    return size.width;
}

std::string WithoutLastCharacter(std::string text) {
    while (!text.empty() && (text.back() & 0xC0) == 0x80)
        text.pop_back();
    if (!text.empty())
        text.pop_back();
    return text;
}

std::string Shorten(CVrGuiFont& font, std::string text, int maxWidth) {
    if (text.empty() || maxWidth <= 0)
        return "";
    if (Width(font, text) <= maxWidth)
        return text;
    if (Width(font, "...") > maxWidth)
        return "";
    while (!text.empty() && Width(font, text + "...") > maxWidth)
        text = WithoutLastCharacter(text);
    return text + "...";
}

std::string Wrap(CVrGuiFont& font, const std::string& text, int maxWidth) {
    std::string out, line, word;
    const auto endLine = [&] {
        out += line;
        out += '\n';
        line.clear();
    };
    for (size_t i = 0; i <= text.size(); i++) {
        if (i < text.size() && text[i] != ' ' && text[i] != '\n') {
            word += text[i];
            continue;
        }
        const std::string joined = line.empty() ? word : line + " " + word;
        if (Width(font, joined) <= maxWidth) {
            line = joined;
        } else {
            if (!line.empty())
                endLine();
            line = word;
            while (Width(font, line) > maxWidth) {
                std::string head = line;
                while (Width(font, head) > maxWidth && !WithoutLastCharacter(head).empty())
                    head = WithoutLastCharacter(head);
                if (head == line)
                    break;
                const std::string rest = line.substr(head.size());
                line = head;
                endLine();
                line = rest;
            }
        }
        word.clear();
        if (i < text.size() && text[i] == '\n')
            endLine();
    }
    return out + line;
}

} // namespace slow

class TextLayoutTest : public testing::Test {
protected:
    TextLayoutTest() { font.size = 35; }

    std::string Shortened(const std::string& text, int maxWidth) {
        CVrxStringU out;
        ShortenText(out, &font, text.c_str(), maxWidth);
        return out.CStr();
    }
    std::string Wrapped(const std::string& text, int maxWidth, uint32_t maxLines = UINT32_MAX) {
        CVrxStringU out;
        WrapText(out, &font, text.c_str(), maxWidth, maxLines);
        return out.CStr();
    }
    std::string RandomText() {
        static const std::vector<std::string> kPieces{"a",     "W", "il", "Küche", "Спальня",    " ",
                                                      "Licht", " ", ".",  "AV",    "Wohnzimmer", "kitchen",
                                                      "é",     " ", "-",  "0"};
        std::string text;
        for (auto count = random() % 12; count-- > 0;)
            text += kPieces[random() % kPieces.size()];
        return text;
    }

    CVrGuiFont font;
    std::mt19937 random{7};
};

TEST_F(TextLayoutTest, ShortenedTextIsTheLongestThatFits) {
    for (int i = 0; i < 2000; i++) {
        const std::string text = RandomText();
        const int maxWidth = static_cast<int>(random() % 400) - 10;
        Shortened(text, maxWidth); // the first look-up of a glyph ignores kerning
        EXPECT_EQ(Shortened(text, maxWidth), slow::Shorten(font, text, maxWidth))
            << text << " in " << maxWidth;
    }
}

TEST_F(TextLayoutTest, WrappedTextIsGreedy) {
    for (int i = 0; i < 2000; i++) {
        std::string text = RandomText();
        if (i % 5 == 0)
            text.insert(text.begin() + static_cast<ptrdiff_t>(text.size() / 2), '\n');
        while (!text.empty() && (text[text.size() / 2] & 0xC0) == 0x80)
            text.pop_back(); // the line feed fell into a character
        const int maxWidth = static_cast<int>(random() % 400) + 1;
        Wrapped(text, maxWidth);
        EXPECT_EQ(Wrapped(text, maxWidth), slow::Wrap(font, text, maxWidth)) << text << " in " << maxWidth;
    }
}

TEST_F(TextLayoutTest, EndsOfTheRange) {
    EXPECT_EQ(Shortened("Kitchen", 0), "");
    EXPECT_EQ(Shortened("Kitchen", 5), "");
    EXPECT_EQ(Shortened("Kitchen", slow::Width(font, "...")), "...");
    EXPECT_EQ(Shortened("", 100), "");
    EXPECT_EQ(Wrapped("two words", 0), "two words");
    EXPECT_EQ(Wrapped("ab", 1), "a\nb"); // a character stays whole, however wide
    CVrxStringU out;
    ShortenText(out, nullptr, "no font", 1);
    EXPECT_EQ(out, "no font");
}

TEST_F(TextLayoutTest, MegabytesTakeNoLongerThanWhatFits) {
    std::string text;
    while (text.size() < 4'000'000)
        text += "word ";
    EXPECT_LT(Shortened(text, 500).size(), 60U);
    EXPECT_LT(Wrapped(text, 500, 10).size(), 600U);
    EXPECT_LT(Wrapped(std::string(4'000'000, 'x'), 500, 10).size(), 600U);
}

TEST_F(TextLayoutTest, ResultMayReplaceTheText) {
    CVrxStringU text("A long line of text that does not fit");
    ShortenText(text, &font, text, 200);
    EXPECT_TRUE(text.EndsWith("..."));
    text = "one two three";
    WrapText(text, &font, text, 80);
    EXPECT_EQ(text, "one\ntwo\nthree");
}

} // namespace
