#include "DatasetReport.hpp"

#include "platform/profile/printableExcerpt.hpp"

#include <cstdio>

namespace tavrin::tool {

void printDatasetReport(const sandbox::DecodedPayload& decoded) {
  std::printf("payload: %zu bytes of base64, %zu bytes of DEFLATE, %zu bytes of JSON\n",
              decoded.base64Size, decoded.deflateSize, decoded.jsonSize);
  if (!decoded.sections.empty()) {
    std::printf("%-20s %9s  %s\n", "section", "entries", "note");
    for (const auto& section : decoded.sections) {
      std::printf("%-20s %9zu  %s\n", platform::printableExcerpt(section.name, 40).c_str(),
                  section.entries, section.note.c_str());
    }
  }
  std::printf("verdict: %s\n",
              decoded.valid()
                  ? "valid"
                  : ("invalid: " + platform::printableExcerpt(*decoded.problem, 1024)).c_str());
}

}  // namespace tavrin::tool
