// Parses the same house with our parser and with nlohmann-json's DOM, turn by turn in one run, and prints the
// ratio: figures of one machine at one moment say little, ratios hold. The goals: at least twice as fast, and
// the same speed for 1 MB and 16 MB within a fifth.
//
// Both build everything and destroy it again; the time of the destruction is counted.
#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "foundation/json.h"
#include "support/measure.h"

namespace {

// Groups of controls with what an installation sends for each: numbers, names, moods, details.
std::string MakeHouse(size_t bytes) {
    std::string text = "[";
    for (uint32_t group = 1; text.size() < bytes; group++) {
        text += "{\"U\":" + std::to_string(0xF0000000u + group) + ",\"N\":\"Room " + std::to_string(group) +
                "\",\"I\":12,\"sub\":[";
        for (uint32_t i = 0; i < 20; i++) {
            const uint32_t number = group * 100 + i;
            text += "{\"T\":484,\"U\":\"" + std::to_string(number) + "\",\"N\":\"Ceiling light " +
                    std::to_string(i) + "\",\"R\":" + std::to_string(group % 40) +
                    ",\"C\":" + std::to_string(i % 10) +
                    ",\"I\":0,\"actCtrl\":false,\"details\":{\"type\":2,\"ST\":0.5},\"moodList\":[" +
                    "{\"name\":\"Bright\",\"id\":1,\"defaultIcon\":14},{\"name\":\"Evening\",\"id\":2,"
                    "\"defaultIcon\":15}]},";
        }
        text.back() = ']';
        text += "},";
    }
    text.back() = ']';
    return text;
}

double MegabytesPerSecond(const std::string& text, double seconds) {
    return static_cast<double>(text.size()) / 1e6 / seconds;
}

struct Speeds {
    double ours; // MB/s
    double nlohmann;
};

Speeds Measure(size_t bytes, int rounds) {
    const std::string house = MakeHouse(bytes);
    CVrxStringU text;
    text.AssignBytes(house.data(), static_cast<uint32_t>(house.size()));
    const bench::Medians medians = bench::InTurns(
        rounds,
        [&] {
            CVrJsonParser parser;
            if (parser.Parse(text) < 0)
                abort();
        },
        [&] {
            const auto document = nlohmann::json::parse(house);
            if (document.size() == 0)
                abort();
        });
    return {MegabytesPerSecond(house, medians.work), MegabytesPerSecond(house, medians.floor)};
}

} // namespace

int main() {
    constexpr size_t kMegabyte = 1'000'000;
    printf("%8s %12s %12s %8s\n", "text", "ours MB/s", "DOM MB/s", "ratio");
    double slowest = 1e9;
    double fastest = 0;
    for (const size_t megabytes : {1, 4, 16}) {
        const Speeds speeds = Measure(megabytes * kMegabyte, static_cast<int>(320 / megabytes));
        printf("%5zu MB %12.1f %12.1f %8.2f\n", megabytes, speeds.ours, speeds.nlohmann,
               speeds.ours / speeds.nlohmann);
        slowest = std::min(slowest, speeds.ours);
        fastest = std::max(fastest, speeds.ours);
    }
    printf("json: slowest size has %.0f %% of the fastest one's speed\n", 100 * slowest / fastest);
    return 0;
}
