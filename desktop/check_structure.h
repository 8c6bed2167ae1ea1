// The structure of a house: its items, from the top level down.
#pragma once

#include "desktop/check_tables.h"

namespace desktop {

void CheckStructure(const JsonDocument& doc, Report& report, const Tables& tables);

} // namespace desktop
