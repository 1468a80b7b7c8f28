#include "dataset/ExtractorBase.hpp"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace tavrin {

namespace {
bool isTrimmedWhitespace(UChar32 c) { return c == 0x09 || u_charType(c) == U_SPACE_SEPARATOR; }
}  // namespace

bool ExtractorBase::hasText(std::string_view text) {
  // Walk code points from the front: the text has content as soon as one of
  // them is not whitespace. Only leading whitespace needs to be skipped, since
  // trailing whitespace cannot make a text with content empty. Bytes that are
  // not UTF-8 count as content.
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  std::int32_t offset = 0;
  while (offset < length) {
    UChar32 c = 0;
    U8_NEXT(bytes, offset, length, c);
    if (c < 0 || !isTrimmedWhitespace(c)) return true;
  }
  return false;
}

}  // namespace tavrin
