#include "desktop/web_files.h"

#include <algorithm>
#include <vector>

#define WALLSLATE_WEB_FILE(name) extern "C" const char name[], name##_end[]

WALLSLATE_WEB_FILE(web_index);
WALLSLATE_WEB_FILE(web_style);
WALLSLATE_WEB_FILE(web_main);
WALLSLATE_WEB_FILE(web_link);
WALLSLATE_WEB_FILE(web_screen);
WALLSLATE_WEB_FILE(web_pixels);
WALLSLATE_WEB_FILE(web_touch);
WALLSLATE_WEB_FILE(web_panels);
WALLSLATE_WEB_FILE(web_settings);
WALLSLATE_WEB_FILE(web_house);
WALLSLATE_WEB_FILE(web_record);
WALLSLATE_WEB_FILE(web_icon);

namespace desktop {

namespace {

constexpr std::string_view Html = "text/html; charset=utf-8";
constexpr std::string_view Css = "text/css; charset=utf-8";
constexpr std::string_view Script = "text/javascript; charset=utf-8";
constexpr std::string_view Svg = "image/svg+xml";

WebFile File(std::string_view path, std::string_view type, const char* begin, const char* end) {
    return {path, type, {begin, static_cast<std::size_t>(end - begin)}};
}

} // namespace

std::span<const WebFile> WebFiles() {
    static const std::vector<WebFile> files = {
        File("/", Html, web_index, web_index_end),
        File("/style.css", Css, web_style, web_style_end),
        File("/main.js", Script, web_main, web_main_end),
        File("/link.js", Script, web_link, web_link_end),
        File("/screen.js", Script, web_screen, web_screen_end),
        File("/pixels.js", Script, web_pixels, web_pixels_end),
        File("/touch.js", Script, web_touch, web_touch_end),
        File("/panels.js", Script, web_panels, web_panels_end),
        File("/settings.js", Script, web_settings, web_settings_end),
        File("/house.js", Script, web_house, web_house_end),
        File("/record.js", Script, web_record, web_record_end),
        File("/icon.svg", Svg, web_icon, web_icon_end),
    };
    return files;
}

const WebFile* FindWebFile(std::string_view path) {
    for (const WebFile& file : WebFiles())
        if (file.path == path)
            return &file;
    return nullptr;
}

} // namespace desktop
