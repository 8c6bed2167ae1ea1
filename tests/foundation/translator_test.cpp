#include "foundation/translator.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "support/log_capture.h"

namespace {

// The one translator in the state of a new process, over a data folder of its own.
class TranslatorTest : public testing::Test {
protected:
    TranslatorTest() {
        std::filesystem::create_directories(m_folder / "translations");
        setenv("WALLSLATE_DATA_DIR", m_folder.c_str(), 1);
        Forget();
    }
    ~TranslatorTest() override {
        unsetenv("WALLSLATE_DATA_DIR");
        std::filesystem::remove_all(m_folder);
        Forget();
    }

    void Write(const std::string& file, const std::string& text) { std::ofstream(m_folder / file) << text; }

    CVrTranslator& translator = CVrTranslator::Instance();

private:
    void Forget() {
        for (CVrxStringArray* list :
             {&translator.keys, &translator.values, &translator.fallbackKeys, &translator.fallbackValues})
            list->Clear();
        translator.language.Clear();
        translator.hasLanguage = false;
    }

    const std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("translator_test_" + std::to_string(getpid()));
};

TEST_F(TranslatorTest, LooksInCatalogThenEnglishThenBuiltInThenShowsTheKey) {
    Write("translations/lang_deu.json", R"({"a":"Eins","shade.open":"Offen"})");
    Write("translations/lang_eng.json", R"({"a":"One","b":"Two","shade.closed":"Shut"})");
    EXPECT_TRUE(translator.LoadFallback());
    EXPECT_TRUE(translator.SetLanguage("de"));
    EXPECT_STREQ("Eins", translator.GetText("a"));
    EXPECT_STREQ("Two", translator.GetText("b"));
    EXPECT_STREQ("Offen", translator.GetText("shade.open"));
    EXPECT_STREQ("Shut", translator.GetText("shade.closed"));
    EXPECT_STREQ("Opening...", translator.GetText("shade.opening"));
    EXPECT_STREQ("no.such.key", translator.GetText("no.such.key"));
    EXPECT_STREQ("", translator.GetText(nullptr));
}

TEST_F(TranslatorTest, AliasesAndCaseNameTheSameLanguage) {
    EXPECT_TRUE(translator.SetLanguage("de"));
    EXPECT_FALSE(translator.SetLanguage("DEU"));
    EXPECT_FALSE(translator.SetLanguage("deu"));
    EXPECT_TRUE(translator.SetLanguage("En_Us"));
    EXPECT_EQ("ENU", translator.language);
    EXPECT_TRUE(translator.SetLanguage(""));
    EXPECT_EQ("ENG", translator.language);
    EXPECT_FALSE(translator.SetLanguage(nullptr));
}

TEST_F(TranslatorTest, MissingCatalogFallsBackToEnglish) {
    LogCapture log;
    EXPECT_TRUE(translator.SetLanguage("xyz"));
    EXPECT_EQ("XYZ", translator.language);
    EXPECT_TRUE(log.Has(
        "CVrTranslator::SetLanguage: [Translator] catalog for 'XYZ' missing, falling back to English"));
    EXPECT_STREQ("Closed", translator.GetText("shade.closed"));
    EXPECT_FALSE(translator.LoadFallback());
    EXPECT_TRUE(log.Has("CVrTranslator::Init: [Translator] English fallback catalog '"));
    EXPECT_TRUE(log.Has("translations/lang_ENG.json' not found"));
}

TEST_F(TranslatorTest, OnlyTextsOfACatalogCount) {
    LogCapture log;
    Write("translations/lang_fra.json", R"({"n":1,"t":true,"o":{"x":"y"},"bare","e":"","s":"mot"})");
    EXPECT_TRUE(translator.SetLanguage("fra"));
    EXPECT_TRUE(log.Has("[Translator] language 'FRA' (2 strings)"));
    EXPECT_STREQ("n", translator.GetText("n"));
    EXPECT_STREQ("", translator.GetText("e"));
    EXPECT_STREQ("mot", translator.GetText("s"));
}

TEST_F(TranslatorTest, BrokenCatalogLeavesNothingOfTheFormerLanguage) {
    Write("translations/lang_deu.json", R"({"a":"Eins"})");
    Write("translations/lang_fra.json", R"({"a":"Un")");
    translator.SetLanguage("deu");
    EXPECT_TRUE(translator.SetLanguage("fra"));
    EXPECT_STREQ("a", translator.GetText("a"));
}

TEST_F(TranslatorTest, CodeCannotLeadOutOfTheFolder) {
    Write("lang_x.json", R"({"a":"outside"})");
    Write("x.json", R"({"a":"outside"})");
    for (const char* code : {"../lang_x", "/../../x", "x/../../x", ".", "de\n"}) {
        EXPECT_TRUE(translator.SetLanguage(code)) << code;
        EXPECT_STREQ("a", translator.GetText("a")) << code;
    }
}

// ---- The catalogs of the product ----

std::set<std::string> KeysOf(const CVrxStringArray& keys) {
    std::set<std::string> set;
    for (int32_t i = 0; i < keys.GetSize(); i++)
        set.insert(keys.TextAt(i));
    return set;
}

TEST(Catalogs, EveryLanguageHasAllKeysOfTheEnglishOne) {
    setenv("WALLSLATE_DATA_DIR", WALLSLATE_SOURCE_DIR "/resources", 1);
    CVrxStringArray keys, values;
    ASSERT_TRUE(CVrTranslator::LoadCatalog("ENG", keys, values));
    const std::set<std::string> english = KeysOf(keys);
    EXPECT_EQ(static_cast<size_t>(keys.GetSize()), english.size());
    EXPECT_GE(english.size(), 62u);
    // The languages of the pairing screen.
    for (const char* code : {"DEU", "ENG", "ENU", "CSY", "FRA", "HUN", "NLD", "NOR", "PLK", "SKY", "ESN",
                             "CAT", "ITA", "ROM", "RUS", "BGR", "TRK", "PTG", "UKR"}) {
        ASSERT_TRUE(CVrTranslator::LoadCatalog(code, keys, values)) << code;
        EXPECT_EQ(english, KeysOf(keys)) << code;
        for (int32_t i = 0; i < values.GetSize(); i++) {
            const std::string text = values.TextAt(i);
            EXPECT_FALSE(text.empty()) << code << ' ' << keys.TextAt(i);
            EXPECT_EQ(std::string::npos, text.find('\\')) << code << ' ' << text; // shown as it stands
        }
    }
    unsetenv("WALLSLATE_DATA_DIR");
}

TEST(Catalogs, EnglishSaysWhatTheBuiltInTextsSay) {
    setenv("WALLSLATE_DATA_DIR", WALLSLATE_SOURCE_DIR "/resources", 1);
    CVrxStringArray keys, values;
    ASSERT_TRUE(CVrTranslator::LoadCatalog("ENG", keys, values));
    int builtIn = 0;
    for (int32_t i = 0; i < keys.GetSize(); i++) {
        const char* text = CVrTranslator::Instance().GetText(keys.TextAt(i)); // no catalog is loaded here
        if (text == std::string(keys.TextAt(i)))
            continue;
        builtIn++;
        EXPECT_STREQ(text, values.TextAt(i));
    }
    EXPECT_EQ(42, builtIn);
    unsetenv("WALLSLATE_DATA_DIR");
}

} // namespace
