// iconpack: lists, extracts and packs icon archives.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <stdexcept>

#include "archive_writer.h"
#include "foundation/archive.h"
#include "foundation/log.h"
#include "icon_set.h"

namespace {

using namespace iconpack;
namespace fs = std::filesystem;

class Archive {
public:
    explicit Archive(const fs::path& path) {
        std::string bytes = ReadFile(path);
        if (!m_archive.Open(reinterpret_cast<const uint8_t*>(bytes.data()),
                            static_cast<uint32_t>(bytes.size())))
            throw std::runtime_error(path.string() + ": this is no icon archive");
    }

    std::string GetText(const std::string& name) {
        CVrArchiveFile file = m_archive.GetFile(name.c_str());
        if (!file.data)
            throw std::runtime_error(name + ": not in the archive, or damaged");
        std::string text(reinterpret_cast<const char*>(file.data), file.size);
        m_archive.ReleaseFile(file);
        return text;
    }

    uint32_t GetCount() const { return m_archive.GetCount(); }
    const CVrArchiveRecord& GetRecord(uint32_t index) const { return m_archive.GetRecord(index); }
    std::string GetName(uint32_t index) const {
        const char* name = GetRecord(index).name;
        return {name, strnlen(name, kArchiveNameSize)};
    }

private:
    CVrArchive m_archive;
};

double Percent(uint64_t part, uint64_t whole) {
    return whole ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 0;
}

void List(const fs::path& path) {
    Archive archive(path);
    uint64_t original = 0;
    uint64_t stored = 0;
    for (uint32_t i = 0; i < archive.GetCount(); i++) {
        const CVrArchiveRecord& record = archive.GetRecord(i);
        original += record.originalSize;
        stored += record.storedSize;
        printf("%-40s %6u bytes, stored %6u at %u\n", archive.GetName(i).c_str(), record.originalSize,
               record.storedSize, record.offset);
    }
    printf("names %u original %llu stored %llu percent %.1f\n", archive.GetCount(),
           static_cast<unsigned long long>(original), static_cast<unsigned long long>(stored),
           Percent(stored, original));
}

void GetOne(const fs::path& path, const std::string& name, const fs::path& out) {
    std::string text = Archive(path).GetText(name);
    if (out.empty())
        std::cout << text << std::flush;
    else
        WriteFile(out, text.data(), text.size());
}

void GetAll(const fs::path& path, const fs::path& folder) {
    Archive archive(path);
    fs::create_directories(folder);
    for (uint32_t i = 0; i < archive.GetCount(); i++) {
        std::string name = archive.GetName(i);
        if (name.empty() || name.front() == '.' || name.find('/') != std::string::npos)
            throw std::runtime_error(name + ": this name is refused");
        std::string text = archive.GetText(name);
        WriteFile(folder / name, text.data(), text.size());
    }
}

void Pack(const IconSet& set, const fs::path& out, size_t limit) {
    PackReport report;
    std::vector<uint8_t> bytes = WriteArchive(GatherTexts(set), report);
    printf("%s: %zu names, %zu blocks, %zu bytes stored in %zu (%.1f %%), archive %zu bytes\n",
           out.filename().c_str(), report.names, report.blocks, report.original, report.stored,
           report.Percent(), report.archive);
    if (limit && bytes.size() > limit)
        throw std::runtime_error(out.string() + ": the archive is larger than " + std::to_string(limit) +
                                 " bytes");
    WriteFile(out, bytes.data(), bytes.size());
}

int Run(int argc, char** argv) {
    CLI::App app("Lists, extracts and packs icon archives.", "iconpack");
    app.require_subcommand(1);
    fs::path archive;
    fs::path out;

    CLI::App* list = app.add_subcommand("list", "print every name with its sizes, and the sums");
    list->add_option("ARCHIVE", archive)->required();

    std::string name;
    CLI::App* get =
        app.add_subcommand("get", "extract one text to standard output or a file, or all to a folder");
    get->add_option("ARCHIVE", archive)->required();
    CLI::Option* nameOption = get->add_option("NAME", name);
    CLI::Option* outOption = get->add_option("-o,--out", out, "the file; with --all the folder");
    bool wantsAll = false;
    get->add_flag("--all", wantsAll, "all texts")->excludes(nameOption)->needs(outOption);

    IconSet set;
    size_t limit = 0;
    CLI::App* pack =
        app.add_subcommand("pack", "pack the SVG files of folders; the first folder that has a file wins");
    pack->add_option("ARCHIVE", archive)->required();
    pack->add_option("FOLDER", set.folders)->required();
    pack->add_option("--names", set.names, "text file of the names to pack, one a line; without it all");
    pack->add_option("--aliases", set.aliases, "JSON object of further names: {\"alias.svg\": \"file.svg\"}");
    pack->add_option("--limit", limit, "refuse to make a larger archive; bytes");
    pack->add_flag("--raw", set.keepsTexts, "pack the files as they are");

    CLI11_PARSE(app, argc, argv);
    if (*list)
        List(archive);
    else if (*pack)
        Pack(set, archive, limit);
    else if (wantsAll)
        GetAll(archive, out);
    else if (*nameOption)
        GetOne(archive, name, out);
    else
        throw std::runtime_error("get: give a NAME, or --all with --out FOLDER");
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    SetLogSlot([](const char* line) { fprintf(stderr, "iconpack: %s\n", line); });
    try {
        return Run(argc, argv);
    } catch (const std::exception& fault) {
        fprintf(stderr, "iconpack: %s\n", fault.what());
        return 1;
    }
}
