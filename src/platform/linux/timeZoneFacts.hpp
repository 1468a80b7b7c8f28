#pragma once

#include <tavrin/platform/DeviceInfo.hpp>

#include <unicode/locid.h>
#include <unicode/timezone.h>

namespace tavrin::platform {

// The zone's identifier as ICU names it, and its short name at the given
// moment as written in `locale` (the "z" date-format field: "MEZ" in German,
// "GMT+1" in American English for Europe/Berlin). The abbreviation is absent
// when the moment is not a finite time or ICU cannot format it.
TimeZoneFacts timeZoneFacts(const icu::TimeZone& zone, const icu::Locale& locale,
                            double secondsSince1970);

}  // namespace tavrin::platform
