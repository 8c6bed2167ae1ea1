// housegen: writes large houses for tests and benches. The same arguments give the same house everywhere.
//
//   housegen --items 5000 --groups 12 FOLDER      12 top-level groups with 5,000 controls of all kinds in all
//   housegen --depth 10000 FOLDER                 one chain of groups, one in another, a switch at its end
//   housegen --items 1 --name-bytes 4000000 ...   names of megabytes
#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

namespace {

constexpr int Rooms = 40;
constexpr int Categories = 12;
constexpr int Symbols = 30;
constexpr int FirstUuid = 1000;

struct Wishes {
    std::filesystem::path folder;
    int items = 100;
    int groups = 12; // 0: all items at the top
    int depth = 0;   // groups one in another around a single switch; replaces the rest
    int nameBytes = 0;
};

const char* const SymbolFiles[] = {"lightbulb.svg", "thermometer.svg", "blinds.svg", "music.svg", "flame.svg",
                                   "zap.svg",       "plug.svg",        "gauge.svg",  "sofa.svg",  "car.svg"};

std::string Entry(const char* numberKey, int number, const std::string& name, int icon) {
    return std::string("{\"") + numberKey + "\": " + std::to_string(number) + ", \"N\": \"" + name + "\"" +
           (icon ? ", \"I\": " + std::to_string(icon) : "") + "}";
}

// What each kind adds behind the keys that all have. The order is the order in the house.
std::string ControlOf(int index, const Wishes& wishes) {
    static const char* const kinds[] = {
        "\"T\": 342",
        "\"T\": 493",
        "\"T\": 484, \"moodList\": [{\"id\": 1, \"name\": \"Bright\", \"defaultIcon\": 1},"
        " {\"id\": 2, \"name\": \"Evening\", \"defaultIcon\": 5}]",
        "\"T\": 469",
        "\"T\": 476, \"details\": {\"type\": 0}",
        "\"T\": 110, \"details\": {\"T\": 1, \"DU\": \"%.1f kW\"}",
        "\"T\": 110, \"details\": {\"T\": 1, \"DU\": \"%.0f %%\", \"WA\": true, \"ST\": 1, \"MIN\": 0, "
        "\"MAX\": 100}",
        "\"T\": 482, \"windows\": [{\"id\": 0, \"name\": \"South\"}, {\"id\": 1, \"name\": \"West\", \"R\": "
        "2}]",
        "\"T\": 501, \"details\": {\"type\": 0}",
        "\"T\": 352, \"details\": {\"type\": 1}",
    };
    const std::string name =
        "Item " + std::to_string(index) + std::string(static_cast<std::size_t>(wishes.nameBytes), 'x');
    return std::string("{") + kinds[static_cast<std::size_t>(index) % std::size(kinds)] +
           ", \"U\": " + std::to_string(FirstUuid + index) + ", \"N\": \"" + name +
           "\", \"R\": " + std::to_string(index % Rooms + 1) +
           ", \"C\": " + std::to_string(index % Categories + 1) +
           ", \"I\": " + std::to_string(index % Symbols + 1) + "}";
}

void WriteTables(const Wishes& wishes) {
    const auto write = [&](const char* file, const char* key, const char* word, int count) {
        std::ofstream out(wishes.folder / file);
        out << "[";
        for (int i = 1; i <= count; ++i)
            out << (i > 1 ? ",\n" : "\n") << Entry(key, i, word + std::to_string(i), (i - 1) % Symbols + 1);
        out << "\n]\n";
    };
    write("rooms.json", "U", "Room ", Rooms);
    write("categories.json", "U", "Category ", Categories);
    std::ofstream out(wishes.folder / "symbols.json");
    out << "[";
    for (int i = 1; i <= Symbols; ++i)
        out << (i > 1 ? ",\n" : "\n")
            << Entry("I", i, SymbolFiles[static_cast<std::size_t>(i) % std::size(SymbolFiles)], 0);
    out << "\n]\n";
}

void WriteFlat(std::ostream& out, const Wishes& wishes) {
    out << "[";
    const int groups = std::max(wishes.groups, 1);
    int index = 0;
    for (int group = 0; group < groups; ++group) {
        const int until = static_cast<int>(std::int64_t{wishes.items} * (group + 1) / groups);
        if (wishes.groups > 0)
            out << (group > 0 ? ",\n" : "\n") << "{\"N\": \"Group " << group + 1
                << "\", \"I\": " << group % Symbols + 1 << ", \"sub\": [";
        for (bool first = true; index < until; ++index, first = false)
            out << (first ? "\n" : ",\n") << ControlOf(index, wishes);
        if (wishes.groups > 0)
            out << "]}";
    }
    out << "\n]\n";
}

void WriteChain(std::ostream& out, const Wishes& wishes) {
    out << "[";
    for (int i = 0; i < wishes.depth; ++i)
        out << "{\"N\": \"Level " << i + 1 << "\", \"sub\": [";
    out << ControlOf(0, wishes);
    for (int i = 0; i < wishes.depth; ++i)
        out << "]}";
    out << "]\n";
}

} // namespace

int main(int count, char** arguments) {
    Wishes wishes;
    CLI::App app("Writes a large house", "housegen");
    app.add_option("FOLDER", wishes.folder, "made if missing")->required();
    app.add_option("--items", wishes.items, "controls in all")->check(CLI::Range(0, 1'000'000));
    app.add_option("--groups", wishes.groups, "top-level groups; 0: none")->check(CLI::Range(0, 100'000));
    app.add_option("--depth", wishes.depth, "a chain of that many groups instead")
        ->check(CLI::Range(0, 1'000'000));
    app.add_option("--name-bytes", wishes.nameBytes, "added to each name")->check(CLI::Range(0, 32'000'000));
    CLI11_PARSE(app, count, arguments);
    std::error_code error;
    std::filesystem::create_directories(wishes.folder, error);
    WriteTables(wishes);
    std::ofstream out(wishes.folder / "structure.json");
    if (wishes.depth > 0)
        WriteChain(out, wishes);
    else
        WriteFlat(out, wishes);
    out.close();
    if (!out) {
        std::cerr << "housegen: " << wishes.folder.string() << " cannot be written\n";
        return 1;
    }
    return 0;
}
