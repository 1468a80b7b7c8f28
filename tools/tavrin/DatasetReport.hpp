#pragma once

#include "DatasetValidator.hpp"

namespace tavrin::tool {

// Prints what the sandbox learned of an upload on standard output: the sizes
// of its base64, DEFLATE and JSON forms, a table of its sections with their
// entry counts, and the verdict.
void printDatasetReport(const sandbox::DecodedPayload& decoded);

}  // namespace tavrin::tool
