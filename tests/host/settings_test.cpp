// What the host's settings change: the picture, the words, the rest, and the file that a restarted display reads.
#include "app/color_scheme.h"
#include "app/settings.h"
#include "foundation/json.h"
#include "foundation/translator.h"
#include "host/hosted_gui_app.h"
#include "host/protocol.h"
#include "support/golden.h"
#include "support/test_display.h"

#include <algorithm>

namespace {

const char* const kOneSwitch = R"([{"T":342,"U":1,"N":"One","C":1}])";

// A display that hears the host's commands.
class Settings : public ::testing::Test {
protected:
    TestStateFolder state;
    TestDisplay display{TestHouse::Of(kOneSwitch)};

    void Send(uint32_t command, const std::string& payload) {
        CVrxByteArray bytes;
        bytes.Assign(reinterpret_cast<const uint8_t*>(payload.data()), static_cast<uint32_t>(payload.size()));
        CHostedGuiApp::DispatchQueuedMessage(command, bytes);
    }
    void SendText(uint32_t command, const std::string& text) { Send(command, text + '\0'); }
    void Night(uint32_t on) {
        Send(CommandNight, std::string(reinterpret_cast<const char*>(&on), sizeof on));
    }
    uint32_t Color(const char* name) {
        for (const CVrColorSpec* color : display.App().structure.styles.colorList)
            if (color->name == name)
                return color->value;
        return 0;
    }
    bool FileHas(const std::string& text) const { return state.Settings().find(text) != std::string::npos; }
    uint32_t PageColor() const { return display.PixelAt(360, 8); } // above the switch
};

CVrDisplaySettings Parsed(const char* text) {
    CVrDisplaySettings settings;
    EXPECT_TRUE(ParseSettings(text, nullptr, &settings, &settings.options)) << text;
    return settings;
}

CVrDisplaySettings ParsedMember(const std::string& member) {
    return Parsed(("{\"wallslate\":{" + member + "}}").c_str());
}

} // namespace

// ---- The file

TEST(SettingsFile, ReadsEverySpellingAndEveryKindOfValue) {
    for (const char* value : {"\"ffffff\"", "\"0xffffff\"", "\"0XFFFFFF\"", "16777215"})
        EXPECT_EQ(ParsedMember(std::string("\"backgroundColor\":") + value).options.background, 0xFFFFFFu)
            << value;
    const struct {
        const char* member;
        uint32_t CVrDisplaySettings::*field;
        uint32_t expected;
    } numbers[] = {
        {R"("is24hFormat":"12h")", &CVrDisplaySettings::timeFormat, 0},
        {R"("24hformat":false)", &CVrDisplaySettings::timeFormat, 0},
        {R"("timeFormat":"TRUE")", &CVrDisplaySettings::timeFormat, 1},
        {R"("timeFormat":"noon")", &CVrDisplaySettings::timeFormat, 1},
        {R"("24hFormat":0,"is24hFormat":1)", &CVrDisplaySettings::timeFormat, 1}, // the first spelling wins
        {R"("dateFormat":"mm/dd/yyyy")", &CVrDisplaySettings::dateFormat, 2},
        {R"("dateformat":257)", &CVrDisplaySettings::dateFormat, 257},
        {R"("dateformat":"tomorrow")", &CVrDisplaySettings::dateFormat, 0},
        {R"("crcRooms":"0x10")", &CVrDisplaySettings::crcRooms, 16},
        {R"("crcrooms":4294967295)", &CVrDisplaySettings::crcRooms, 0xFFFFFFFF},
    };
    for (const auto& number : numbers)
        EXPECT_EQ(ParsedMember(number.member).*number.field, number.expected) << number.member;
    const struct {
        const char* member;
        uint8_t expected;
    } modes[] = {{R"("screenSaver":"date")", 2}, {R"("screensaver":"NEVER")", 5},
                 {R"("screenSaver":4)", 4},      {R"("screenSaver":"0")", 0},
                 {R"("screenSaver":7)", 1},      {R"("screenSaver":"moon")", 1}};
    for (const auto& mode : modes) {
        EXPECT_TRUE(ParsedMember(mode.member).options.hasRestMode) << mode.member;
        EXPECT_EQ(ParsedMember(mode.member).options.restMode, mode.expected) << mode.member;
    }
    const struct {
        const char* member;
        const char *country, *language;
    } words[] = {{R"("country":"de","language":"DEU")", "DE", "DEU"},
                 {R"("countrycode":"XX","languageCode":1031)", "01", "1031"},
                 {R"("country":1,"language":"a long name")", "01", "a long n"},
                 {R"("country":"","language":"ab\"cd")", "01", "ab"},
                 {R"("country":"usa","language":"ÄÄÄÄÄ")", "US", "ÄÄÄÄ"}};
    for (const auto& word : words) {
        EXPECT_STREQ(ParsedMember(word.member).country, word.country) << word.member;
        EXPECT_STREQ(ParsedMember(word.member).language, word.language) << word.member;
    }
}

TEST(SettingsFile, RefusesWhatIsNoJsonAndBearsTheRest) {
    CVrDisplaySettings settings;
    for (const char* broken : {"", "{", "{\"wallslate\":{\"24hFormat\":0", "nonsense"})
        EXPECT_FALSE(ParseSettings(broken, nullptr, &settings, &settings.options)) << broken;
    for (const char* empty : {"{}", "[]", R"({"wallslate":7})", R"({"24hFormat":0})"})
        EXPECT_TRUE(ParseSettings(empty, nullptr, &settings, &settings.options)) << empty;
    EXPECT_EQ(settings.timeFormat, 1u);
    EXPECT_FALSE(settings.options.hasRestMode);
}

TEST(SettingsFile, WhatIsWrittenIsReadBack) {
    CVrDisplaySettings settings = ParsedMember(
        R"("screenSaver":3,"restModeDelaySec":60,"colorScheme":9,"backgroundColor":255,"24hFormat":0,"language":"UKR")");
    CVrSchemeColors colors;
    colors.Set(CVrSchemeColors::ButtonText, "white");
    colors.Set(CVrSchemeColors::SliderDisabled, "40eeeeee");
    CVrxStringU text;
    SerializeSettings(text, &colors, &settings, &settings.options);
    EXPECT_STREQ(
        text.CStr(),
        "{ \"colors\": [ { \"btntext\": \"white\" }, { \"sliderbkgdis\": \"40eeeeee\" } ], "
        "\"wallslate\": {\"screenSaver\": \"TEMPERATURE\", \"interactionTimeoutSec\": 60, "
        "\"nRestModeDelaySeconds\": 60, \"colorScheme\": 9, \"backgroundColor\": 255, \"24hFormat\": 0, "
        "\"dateFormat\": 0, \"country\": \"01\", \"language\": \"UKR\", \"crcRooms\": 0, "
        "\"crcCategories\": 0, \"crcStructure\": 0 } }\n");
    CVrSchemeColors colorsBack;
    CVrDisplaySettings back;
    ASSERT_TRUE(ParseSettings(text, &colorsBack, &back, &back.options));
    CVrxStringU again;
    SerializeSettings(again, &colorsBack, &back, &back.options);
    EXPECT_STREQ(again.CStr(), text.CStr());
}

TEST_F(Settings, ARewriteKeepsWhatThisRunNeverSet) {
    state.WriteSettings(R"({"colors":[{"btnbkg":"ff123456"},{"other":"x"}],"wallslate":{"colorScheme":4}})");
    CVrDisplaySettings settings;
    settings.options.hasRestDelay = true;
    settings.options.restDelay = 30;
    EXPECT_TRUE(SaveSettings(settings));
    for (const char* kept :
         {"\"btnbkg\": \"ff123456\"", "\"colorScheme\": 4", "\"nRestModeDelaySeconds\": 30"})
        EXPECT_TRUE(FileHas(kept)) << kept << " in " << state.Settings();
}

// ---- Colours

TEST_F(Settings, TheSchemeFollowsFromTheBackground) {
    const struct {
        uint32_t color; // 0x00BBGGRR
        uint32_t page, button, text, disabled;
    } cases[] = {
        {0xFFFFFF, 0xFFFFFFFF, 0xFFDDDDDD, 0xFF000000, 0xFF797672},
        {0x000000, 0xFF000000, 0xFF181818, 0xFFFFFFFF, 0xFFBABCBA},
        {0x0000FF, 0xFFFF0000, 0xFFFE1818, 0xFFFFFFFF, 0xFFBABCBA}, // red: dark to the eye
        {0x00FF00, 0xFF00FF00, 0xFF04DD04, 0xFF000000, 0xFF797672}, // green: light
    };
    for (const auto& c : cases) {
        SendText(CommandRuntime, "{\"color\":" + std::to_string(c.color) + "}");
        EXPECT_EQ(Color("framebkg"), c.page) << std::hex << c.color;
        EXPECT_EQ(Color("btnbkg"), c.button) << std::hex << c.color;
        EXPECT_EQ(Color("textdis"), c.disabled) << std::hex << c.color;
        EXPECT_EQ(Color("symbol"), c.text) << "follows btntext, a link further";
        EXPECT_EQ(Color("symbolsel"), c.page);
        EXPECT_EQ(PageColor(), c.page);
        EXPECT_TRUE(FileHas("\"backgroundColor\": " + std::to_string(c.color) + ",")) << state.Settings();
        EXPECT_TRUE(FileHas("\"framebkg\"")) << "the colours stay in the file beside the option";
    }
}

TEST_F(Settings, CirclesAndChainsOfNamesComeToAnEnd) {
    CVrStructure& structure = display.App().structure;
    const auto add = [&](const char* name, const char* text) {
        auto* color = new CVrColorSpec;
        color->name = name;
        color->valueText = text;
        structure.styles.colorList.Add(color);
    };
    add("a", "b"); // a chain against the order of the table
    add("b", "c");
    add("c", "ff0000ffzz");
    add("snake", "tail");
    add("tail", "snake");
    EXPECT_TRUE(ResolveColorLinks(structure));
    EXPECT_EQ(Color("a"), 0xFF0000FFu);
    EXPECT_FALSE(ResolveColorLinks(structure));
}

TEST_F(Settings, NightCoversEveryBackgroundAndIsForgottenByTheFile) {
    SendText(CommandRuntime, R"({"color":255})");
    Night(2);
    EXPECT_EQ(PageColor(), 0xFF000000u);
    EXPECT_TRUE(display.Root().night);
    const std::string file = state.Settings();
    EXPECT_EQ(file.find("ff360000"), std::string::npos);
    SendText(CommandRuntime, R"({"color":16777215})"); // changes nothing on the screen
    EXPECT_EQ(PageColor(), 0xFF000000u);
    EXPECT_TRUE(FileHas("\"backgroundColor\": 16777215"));
    SendText(CommandRuntime, R"({"nightmode":0})");
    EXPECT_EQ(PageColor(), 0xFFFFFFFFu);
    EXPECT_FALSE(display.Root().night);
}

TEST_F(Settings, WhilePairingTheSchemeIsWhite) {
    CVrGuiElement pairing;
    display.Root().pairingScreen = &pairing;
    pairing.SetHidden(false);
    SendText(CommandRuntime, R"({"color":255})");
    EXPECT_EQ(Color("framebkg"), 0xFFFFFFFFu);
    display.Root().pairingScreen = nullptr;
}

TEST(SettingsGolden, PagesByDayAndNight) {
    const struct {
        const char *folder, *name;
    } houses[] = {{"demo", "demo-first-page"}, {"tests/houses/one-switch", "one-switch"}};
    for (const auto& house : houses) {
        TestDisplay display(TestHouse::FromFolder(house.folder));
        display.Tap(360, 400);
        for (const uint32_t night : {1u, 0u}) {
            CVrxByteArray payload;
            payload.Assign(reinterpret_cast<const uint8_t*>(&night), sizeof night);
            CHostedGuiApp::DispatchQueuedMessage(CommandNight, payload);
            display.Settle();
            const std::string name = std::string(house.name) + (night ? "-night" : "-white");
            EXPECT_TRUE(golden::Matches(name, display.Screen(), kScreenSide, kScreenSide));
        }
    }
}

// ---- Language, formats, rest

TEST_F(Settings, FormatsAndLanguageReachTheRootAndTheFile) {
    const CVrGuiMainWin& root = display.Root();
    SendText(CommandSettings,
             R"({"wallslate":{"24hFormat":0,"dateFormat":258,"language":"de","crcRooms":5}})");
    EXPECT_FALSE(root.use24Hours);
    EXPECT_EQ(root.dateOrder, 2u);
    EXPECT_EQ(root.fahrenheit, 1u);
    EXPECT_EQ(root.dateSeparator, '/');
    EXPECT_STREQ(CVrTranslator::Instance().language.CStr(), "DEU");
    EXPECT_FALSE(root.idle) << "a new house keeps the display awake";
    SendText(CommandSettings, R"({"wallslate":{"dateFormat":7,"language":"en","crcRooms":5}})");
    EXPECT_TRUE(root.idle);
    EXPECT_EQ(root.dateSeparator, '/');
    EXPECT_TRUE(root.use24Hours) << "what is missing is back at its default";
    EXPECT_STREQ(CVrTranslator::Instance().language.CStr(), "ENG");
    EXPECT_TRUE(FileHas("\"crcRooms\": 5"));
}

TEST_F(Settings, ARestWithoutAScreenSaverStaysOnThePage) {
    const std::vector<uint32_t> page(display.Screen(), display.Screen() + kScreenSide * kScreenSide);
    const auto pageStays = [&] { return std::equal(page.begin(), page.end(), display.Screen()); };
    Send(CommandRest, "");
    display.Settle();
    EXPECT_TRUE(display.Root().idle);
    EXPECT_TRUE(pageStays());
    display.Tap(360, 400);
    EXPECT_EQ(display.TakeCommands().size(), 1u) << "the page can be used";
    EXPECT_FALSE(display.Root().idle);
    display.Tap(360, 400); // off again

    SendText(CommandRuntime, R"({"restmode":0})"); // rests at once, and dark
    display.Settle();
    EXPECT_TRUE(display.Root().displayOff);
    EXPECT_TRUE(pageStays());
    display.TakeCommands();
    display.Tap(360, 400);
    EXPECT_TRUE(display.TakeCommands().empty()) << "the first touch only wakes";
    display.Tap(360, 400);
    EXPECT_EQ(display.TakeCommands().size(), 1u);

    SendText(CommandRuntime, R"({"restmode":9})");
    EXPECT_EQ(display.Root().restMode, 5) << "the highest there is: never";
    EXPECT_FALSE(display.Root().idle);
    EXPECT_TRUE(FileHas("\"screenSaver\": \"NEVER\""));
}

TEST_F(Settings, ARestartedDisplayKeepsItsRestAndFormats) {
    SendText(CommandRuntime, R"({"restmode":3,"restModeDelay":5,"color":255})");
    SendText(CommandSettings, R"({"wallslate":{"24hFormat":0,"language":"UKR"}})");
    TestDisplay again(TestHouse::Of(kOneSwitch));
    EXPECT_EQ(again.Root().restMode, 3);
    EXPECT_FALSE(again.Root().use24Hours);
    EXPECT_STREQ(CVrTranslator::Instance().language.CStr(), "UKR");
    EXPECT_EQ(again.App().runtime.bg, 255u);
    EXPECT_NE(again.PixelAt(360, 8), 0xFFFF0000u) << "colours wait for the first message";
    again.Advance(4'900);
    EXPECT_FALSE(again.Root().idle);
    again.Advance(300);
    EXPECT_TRUE(again.Root().idle);
    SendText(CommandRuntime, R"({"restModeDelay":0})");
    again.Tap(360, 400);
    again.Advance(100'000);
    EXPECT_FALSE(again.Root().idle) << "without a delay it never rests";
}

TEST_F(Settings, MessagesThatSayNothingDoNothing) {
    const uint32_t frames = display.FrameCount();
    for (const char* text : {"", "{", "[1]", "{}", R"({"Color":255,"NIGHTMODE":1})", "no json"}) {
        SendText(CommandRuntime, text);
        if (std::string(text) != "{}" && std::string(text) != "[1]" && text[0] != '{')
            SendText(CommandSettings, text);
    }
    Send(CommandNight, "abc"); // shorter than a number
    Send(CommandText, "");
    Send(99, "what");
    EXPECT_EQ(state.Settings(), "");
    EXPECT_FALSE(display.Root().idle);
    EXPECT_EQ(display.FrameCount(), frames);
    SendText(CommandRuntime, R"({"nightmode":"1"})"); // a text counts as 0
    EXPECT_FALSE(display.Root().night);
}

TEST_F(Settings, ADisplayWithSensorsSleepsAndWakesByThem) {
    CVrGuiMainWin& root = display.Root();
    const auto tell = [&](CVrRuntimeMessage::Flag flag, auto CVrRuntimeMessage::*field, int value) {
        CVrRuntimeMessage message;
        message.flags = flag;
        message.*field = static_cast<std::remove_reference_t<decltype(message.*field)>>(value);
        display.App().HandleWallSlateRuntimeSettingsMessage(message);
    };
    tell(CVrRuntimeMessage::HasPresence, &CVrRuntimeMessage::presence, 0);
    EXPECT_FALSE(root.displayOff) << "nobody was there before";
    tell(CVrRuntimeMessage::HasPresence, &CVrRuntimeMessage::presence, 1);
    tell(CVrRuntimeMessage::HasPresence, &CVrRuntimeMessage::presence, 0);
    EXPECT_TRUE(root.displayOff);
    tell(CVrRuntimeMessage::HasPresence, &CVrRuntimeMessage::presence, 1);
    EXPECT_FALSE(root.displayOff);
    EXPECT_TRUE(root.idle) << "presence wakes to the rest, not to the page";
    tell(CVrRuntimeMessage::HasEco, &CVrRuntimeMessage::eco, 1);
    EXPECT_TRUE(root.displayOff);
    tell(CVrRuntimeMessage::HasDisplayOn, &CVrRuntimeMessage::displayon, 1);
    EXPECT_FALSE(root.displayOff || root.idle);
    display.Advance(61'000);
    EXPECT_FALSE(root.idle) << "kept on";
    tell(CVrRuntimeMessage::HasBrightness, &CVrRuntimeMessage::brightness, 180);
    EXPECT_EQ(root.brightness, 100u);
    tell(CVrRuntimeMessage::HasBrGain, &CVrRuntimeMessage::brGain, -9);
    tell(CVrRuntimeMessage::HasAbr, &CVrRuntimeMessage::abr, 1);
    EXPECT_EQ(root.brightness, 35u) << "automatic, with the gain held at -5";
}
