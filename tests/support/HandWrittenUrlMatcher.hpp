#pragma once

// A second matcher of the service URL language, written by hand from its
// definition rather than with a regular-expression engine, so that fuzzing
// can hold the two against each other. A URL is accepted when some position of
// it starts: "https://", one or more characters that are word characters or
// hyphens, ".", the service domain, ".com", a run of colons and decimal
// digits, and then the end of the text, or one line terminator that ends it.
// Word characters and decimal digits are Unicode's, as a regular-expression
// engine's \w and \d are: letters (Alphabetic), marks, decimal numbers,
// connector punctuation, and the two zero-width joiners.

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <string>
#include <string_view>

namespace tavrin::testing {

class HandWrittenUrlMatcher {
 public:
  explicit HandWrittenUrlMatcher(std::string_view serviceDomain)
      : _domain(icu::UnicodeString::fromUTF8(std::string(serviceDomain))) {}

  bool accepts(std::string_view url) const {
    // Invalid UTF-8 reads as replacement characters, as it does for the engine.
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(std::string(url));
    for (int32_t start = text.indexOf(scheme()); start >= 0;
         start = text.indexOf(scheme(), start + 1)) {
      if (acceptsFrom(text, start + scheme().length())) return true;
    }
    return false;
  }

 private:
  static const icu::UnicodeString& scheme() {
    static const icu::UnicodeString text(u"https://");
    return text;
  }

  static bool isWord(UChar32 c) {
    if (c == 0x200C || c == 0x200D || u_hasBinaryProperty(c, UCHAR_ALPHABETIC)) return true;
    const auto mask = U_MASK(u_charType(c));
    return (mask & (U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK)) != 0;
  }
  static bool isDigit(UChar32 c) { return u_charType(c) == U_DECIMAL_DIGIT_NUMBER; }

  // The end of the text, or one line terminator (CR LF counting as one) there.
  static bool atEnd(const icu::UnicodeString& text, int32_t i) {
    const int32_t rest = text.length() - i;
    if (rest == 0) return true;
    if (rest == 2) return text[i] == u'\r' && text[i + 1] == u'\n';
    if (rest != 1) return false;
    const char16_t c = text[i];
    return c == u'\n' || c == u'\v' || c == u'\f' || c == u'\r' || c == u'\u0085' ||
           c == u'\u2028' || c == u'\u2029';
  }

  bool acceptsFrom(const icu::UnicodeString& text, int32_t i) const {
    // The host label: no dot can be in it, so it ends at the first one.
    const int32_t labelStart = i;
    while (i < text.length()) {
      const UChar32 c = text.char32At(i);
      if (c != u'-' && !isWord(c)) break;
      i += U16_LENGTH(c);
    }
    if (i == labelStart) return false;
    const icu::UnicodeString tail = u"." + _domain + u".com";
    if (text.compare(i, tail.length(), tail) != 0) return false;
    i += tail.length();
    while (i < text.length()) {
      const UChar32 c = text.char32At(i);
      if (c != u':' && !isDigit(c)) break;
      i += U16_LENGTH(c);
    }
    return atEnd(text, i);
  }

  icu::UnicodeString _domain;
};

}  // namespace tavrin::testing
