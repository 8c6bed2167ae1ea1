// What the live page needs to know about a house: its items as a list with depths, and words for text
// commands.
#pragma once

#include "desktop/house.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace desktop {

struct HouseItem {
    std::uint32_t uuid = 0; // 0: a group without number
    int type = 0;           // item_types.h; 0: a group
    int depth = 0;          // 0 at the top
    std::string name;
    std::string room;                               // name; empty if none
    std::string category;                           // name; empty if none
    std::vector<std::pair<int, std::string>> moods; // of a light: id and name
};

class HouseIndex {
public:
    HouseIndex() = default;
    explicit HouseIndex(const House& house); // what cannot be read is left out

    const std::vector<HouseItem>& Items() const { return items; } // in the order of the text
    const HouseItem* Find(std::uint32_t uuid) const;

    // "Küche, Küchenlicht: mood Kochen" for {"U":2001,"E":1,"T":2,"V":1.0}; the text itself when it says
    // nothing to us.
    std::string Describe(const std::string& command) const;

private:
    std::vector<HouseItem> items;
    std::unordered_map<std::uint32_t, std::size_t> byUuid; // the later one wins, as in the display
};

} // namespace desktop
