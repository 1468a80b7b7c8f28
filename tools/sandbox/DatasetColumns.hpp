#pragma once

#include <span>
#include <string_view>

namespace tavrin::sandbox {

// The field names of a section's row layout, one per position, for showing
// rows as tables; empty for a name that is not a section. A position holding
// a list of nested rows is named after the list.
std::span<const std::string_view> datasetColumns(std::string_view section);

}  // namespace tavrin::sandbox
