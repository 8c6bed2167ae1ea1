#include "desktop/symbol_files.h"

#include <algorithm>
#include <unordered_set>

// The listings of both archives, one after the other: a line begins with a name.
extern "C" const char symbol_listing[], symbol_listing_end[];

namespace desktop {

namespace {

std::unordered_set<std::string_view> ReadListing() {
    std::unordered_set<std::string_view> names;
    std::string_view rest(symbol_listing, static_cast<std::size_t>(symbol_listing_end - symbol_listing));
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        names.insert(line.substr(0, line.find(' ')));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
    return names;
}

} // namespace

bool IsSymbolFile(std::string_view name) {
    static const std::unordered_set<std::string_view> names = ReadListing();
    return names.contains(name);
}

} // namespace desktop
