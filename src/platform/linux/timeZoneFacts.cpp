#include "platform/linux/timeZoneFacts.hpp"

#include <unicode/fmtable.h>
#include <unicode/smpdtfmt.h>

#include <cmath>
#include <string>

namespace tavrin::platform {

TimeZoneFacts timeZoneFacts(const icu::TimeZone& zone, const icu::Locale& locale,
                            double secondsSince1970) {
  TimeZoneFacts facts;
  icu::UnicodeString identifier;
  zone.getID(identifier).toUTF8String(facts.identifier);

  const UDate milliseconds = secondsSince1970 * 1000.0;
  if (!std::isfinite(milliseconds)) return facts;
  UErrorCode status = U_ZERO_ERROR;
  icu::SimpleDateFormat format(icu::UnicodeString(u"z"), locale, status);
  if (U_FAILURE(status)) return facts;
  format.setTimeZone(zone);
  icu::UnicodeString text;
  format.format(icu::Formattable(milliseconds, icu::Formattable::kIsDate), text, status);
  if (U_FAILURE(status) || text.isEmpty()) return facts;
  facts.abbreviation.emplace();
  text.toUTF8String(*facts.abbreviation);
  return facts;
}

}  // namespace tavrin::platform
