#pragma once

#include <tavrin/platform/DeviceInfo.hpp>

#include <unicode/locid.h>

namespace tavrin::platform {

// The nine locale facts as ICU knows them for `locale`:
// - language, region: the locale's own subtags, absent when it has none;
// - currency code and its symbol in that locale, absent when the region has no currency;
// - identifier: ICU's name ("en_US", "de_DE@collation=phonebook");
// - collator identifier: the BCP 47 tag ("en-US"), absent for the root locale;
// - collation identifier: the locale's "collation" keyword, else the default
//   collation ICU uses for it ("standard", "stroke" for zh_TW);
// - script: the locale's script subtag, else its likely script ("Latn" for en_US),
//   absent for the root locale;
// - metric system: true unless the region measures in US units (the United
//   Kingdom's mixed system counts as metric).
LocaleFacts localeFacts(const icu::Locale& locale);

}  // namespace tavrin::platform
