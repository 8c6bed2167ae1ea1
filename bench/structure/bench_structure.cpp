// Loads houses of 12 groups and sets the time beside that of the JSON parser alone on the same text: building
// the tree of items should cost no more than reading its text, and grow in step with it.
#include <cstdio>
#include <string>

#include "foundation/json.h"
#include "structure/structure.h"
#include "support/measure.h"

namespace {

constexpr int kGroups = 12;
constexpr int kRounds = 51;

std::string MakeHouse(int items) {
    static constexpr int kTypes[] = {342, 493, 484, 476, 469, 110, 501, 507};
    std::string text = "[";
    for (int group = 0; group < kGroups; group++) {
        text += "{\"N\":\"Group " + std::to_string(group) + "\",\"sub\":[";
        for (int i = group; i < items; i += kGroups) {
            const int type = kTypes[i % static_cast<int>(std::size(kTypes))];
            text += "{\"T\":" + std::to_string(type) + ",\"U\":" + std::to_string(i + 1) + ",\"N\":\"Item " +
                    std::to_string(i) + "\",\"R\":3,\"C\":4,\"I\":5,\"details\":{\"type\":2,\"T\":1}";
            if (type == 484)
                text += ",\"moodList\":[{\"name\":\"Bright\",\"id\":1},{\"name\":\"Evening\",\"id\":2}]";
            text += "},";
        }
        text.back() = ']';
        text += "},";
    }
    text.back() = ']';
    return text;
}

} // namespace

int main() {
    printf("%8s %10s %10s %8s\n", "items", "JSON ms", "load ms", "ratio");
    for (const int items : {500, 5000, 50000}) {
        const std::string house = MakeHouse(items);
        const CVrxStringU text(house.c_str());
        const bench::Medians medians = bench::InTurns(
            kRounds,
            [&] {
                CVrStructure structure;
                structure.LoadJsonConfig(text, "[]", "[]", "[]");
            },
            [&] {
                CVrJsonParser parser;
                parser.Parse(text);
            });
        printf("%8d %10.2f %10.2f %8.2f\n", items, medians.floor * 1e3, medians.work * 1e3, medians.Ratio());
    }
    return 0;
}
