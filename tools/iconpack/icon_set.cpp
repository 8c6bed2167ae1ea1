#include "icon_set.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <stdexcept>

#include "svg_text.h"

namespace iconpack {
namespace {

namespace fs = std::filesystem;

std::set<std::string> AllNames(const std::vector<fs::path>& folders) {
    std::set<std::string> names;
    for (const fs::path& folder : folders) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".svg")
                names.insert(entry.path().filename());
        }
    }
    return names;
}

// One name a line; blank lines and lines that begin with # are left out.
std::set<std::string> ReadNames(const fs::path& path) {
    std::set<std::string> names;
    std::istringstream lines(ReadFile(path));
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.front() != '#' && !names.insert(line).second)
            throw std::runtime_error(path.string() + ": " + line + " stands there twice");
    }
    return names;
}

std::map<std::string, std::string> ReadAliases(const fs::path& path) {
    try {
        return nlohmann::json::parse(ReadFile(path)).get<std::map<std::string, std::string>>();
    } catch (const nlohmann::json::exception& fault) {
        throw std::runtime_error(path.string() + ": " + fault.what());
    }
}

fs::path FindFile(const std::vector<fs::path>& folders, const std::string& name) {
    for (const fs::path& folder : folders) {
        if (fs::exists(folder / name))
            return folder / name;
    }
    throw std::runtime_error(name + ": no such file in the given folders");
}

std::string ReadText(const IconSet& set, const std::string& name) {
    fs::path path = FindFile(set.folders, name);
    try {
        return set.keepsTexts ? ReadFile(path) : NormalizeSvg(ReadFile(path));
    } catch (const std::runtime_error& fault) {
        throw std::runtime_error(path.string() + ": " + fault.what());
    }
}

} // namespace

Texts GatherTexts(const IconSet& set) {
    Texts texts;
    for (const std::string& name : set.names.empty() ? AllNames(set.folders) : ReadNames(set.names))
        texts[name] = ReadText(set, name);
    if (set.aliases.empty())
        return texts;
    for (const auto& [alias, name] : ReadAliases(set.aliases)) {
        if (!texts.try_emplace(alias, ReadText(set, name)).second)
            throw std::runtime_error(set.aliases.string() + ": " + alias +
                                     " is the name of a file of the set");
    }
    return texts;
}

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file)
        throw std::runtime_error(path.string() + ": cannot be read");
    return text.str();
}

void WriteFile(const fs::path& path, const void* bytes, size_t size) {
    fs::path temporary = path;
    temporary += ".new";
    std::ofstream file(temporary, std::ios::binary);
    file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
    file.close();
    if (!file)
        throw std::runtime_error(temporary.string() + ": cannot be written");
    fs::rename(temporary, path);
}

} // namespace iconpack
