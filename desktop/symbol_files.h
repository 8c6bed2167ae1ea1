// Names of the symbol files that the display carries in its archives.
#pragma once

#include <string_view>

namespace desktop {

bool IsSymbolFile(std::string_view name);

} // namespace desktop
