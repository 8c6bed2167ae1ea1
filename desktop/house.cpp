#include "desktop/house.h"

#include "desktop/fault.h"
#include "desktop/json_document.h"
#include "desktop/wire.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace desktop {

namespace {

constexpr const char* FileNames[] = {"categories.json", "rooms.json", "symbols.json", "structure.json"};

std::string ReadTextFile(const std::filesystem::path& path, std::size_t limit) {
    std::error_code error;
    const auto kind = std::filesystem::status(path, error).type();
    if (kind == std::filesystem::file_type::not_found)
        throw Fault(path.string() + ": no such file");
    if (kind != std::filesystem::file_type::regular)
        throw Fault(path.string() + ": is not a file");
    const auto size = std::filesystem::file_size(path, error);
    if (!error && size > limit)
        throw Fault(path.string() + ": too large: a house may have 64 MiB in all");
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in)
        throw Fault(path.string() + ": cannot be read: " + std::strerror(errno));
    return std::move(text).str();
}

} // namespace

const char* FileNameOf(HouseFile file) {
    return FileNames[static_cast<std::size_t>(file)];
}

std::string House::LoadPayload() const {
    std::string payload;
    for (const std::string& text : texts) {
        payload += text.c_str(); // up to a NUL: nothing behind it would be seen
        payload.push_back('\0');
    }
    return payload;
}

House ReadHouse(const std::filesystem::path& folder) {
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
        throw Fault(folder.string() + ": no such folder; a house is a folder with four JSON files");
    House house;
    house.folder = folder;
    house.fromDisk = true;
    std::size_t left = MaxCommandBytes - HouseFiles.size();
    for (const HouseFile file : HouseFiles) {
        house.Text(file) = ReadTextFile(folder / FileNameOf(file), left);
        left -= std::min(left, house.Text(file).size());
    }
    return house;
}

void RequireReadable(const House& house) {
    for (const HouseFile file : HouseFiles) {
        JsonDocument document;
        if (const auto problem = document.Parse(house.Text(file))) {
            const TextPosition at = document.PositionOf(problem->offset);
            throw Fault((house.folder / FileNameOf(file)).string() + ":" + std::to_string(at.line) + ":" +
                        std::to_string(at.column) + ": " + problem->text);
        }
    }
}

std::filesystem::path DemoHouseFolder() {
    const auto program = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::error_code error;
    const auto installed = program / "../share/wallslate/demo";
    if (std::filesystem::is_directory(installed, error))
        return installed.lexically_normal();
    return std::filesystem::path(WALLSLATE_PROJECT_DIR) / "demo";
}

} // namespace desktop
