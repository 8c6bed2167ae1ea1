// A folder of our own for as long as the object lives.
#pragma once

#include <filesystem>

namespace desktop {

class TempFolder {
public:
    TempFolder(); // throws Fault
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return path; }

private:
    std::filesystem::path path;
};

} // namespace desktop
