// Any four texts as a house: every finding has a place inside the text and a reason. The bytes 0x01 part the
// texts.
#include "desktop/house_check.h"

#include <algorithm>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    desktop::House house;
    for (const desktop::HouseFile file : desktop::HouseFiles) {
        const std::size_t end = std::min(rest.find('\x01'), rest.size());
        house.Text(file) = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    const desktop::CheckResult result = desktop::CheckHouse(house);
    for (const desktop::Finding& finding : result.findings) {
        const std::string& text = house.Text(finding.file);
        const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
        if (finding.text.empty() || finding.line > lines || finding.column > text.size() + 1)
            __builtin_trap();
    }
    return 0;
}
