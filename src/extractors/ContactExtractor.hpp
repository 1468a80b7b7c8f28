#pragma once

#include "dataset/ExtractorBase.hpp"
#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <variant>
#include <vector>

namespace tavrin {

// The "Contacts" source: one 27-value row per contact that records the shape
// of the contact, never its texts. Texts become presence flags, custom labels
// become category ids, social and messaging labels and services become MD5
// digests; only identifiers, countries and predefined labels stay text.
class ContactExtractor : public PlatformExtractor<ExtractorBase> {
 public:
  // Keeps `platform`, which must outlive the extractor; reads it only in extract().
  explicit ContactExtractor(platform::Platform& platform);

  // Never throws: a refused permission and a failed enumeration become entries.
  Element extract() override;

  // The property names asked of the address book. The keys that depend on the
  // system version join on the first extraction, when the platform is read.
  const std::vector<std::string>& contactKeys() const { return _contactKeys; }

  // What a label contributes to a row: its own text when the platform
  // predefined it, otherwise its category id (0 for no label).
  using LabelCode = std::variant<std::string_view, std::int64_t>;

 private:
  // The version gates of one extraction.
  struct VersionGates {
    bool phoneticOrganizationName = false;  // 10.0 and later
    bool postalSubAreas = false;            // 10.3 and later
    bool note = false;                      // before 13.0 only
  };

  // Transparent hashing so that a label is looked up without a copy.
  struct LabelHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>{}(text);
    }
  };

  void addVersionKeys(const VersionGates& gates);
  void makeContactRow(const platform::Contact& contact, Row& row);
  void makeLabeledValueRows(Row& row,
                            const std::vector<platform::LabeledValue<std::string>>& entries);
  void makePostalAddressRows(Row& row, const platform::Contact& contact);
  void makeSocialProfileRows(Row& row, const platform::Contact& contact);
  void makeInstantMessageRows(Row& row, const platform::Contact& contact);
  // The frame the five list builders share: null for a property without
  // entries, otherwise a list with one row per entry, in the platform's order.
  template <typename Value, typename MakeRow>
  void appendList(Row& row, const std::vector<platform::LabeledValue<Value>>& entries,
                  MakeRow makeRow);

  LabelCode labelCode(const std::optional<std::string>& label);
  void appendLabelCode(Row& row, const std::optional<std::string>& label);
  std::int64_t getCategoryId(const std::optional<std::string>& label);

  std::vector<std::string> _contactKeys;
  // Category ids of the custom labels met so far, keyed by the label in NFC so
  // that canonically equivalent labels share one id. Kept for the extractor's
  // lifetime: a label keeps its id from one extraction to the next.
  std::unordered_map<std::string, std::int64_t, LabelHash, std::equal_to<>> categoriesIds;
  std::int64_t currentId = 1;

  bool _versionKeysAdded = false;
  VersionGates _gates;
  // Buffers reused from row to row, so a contact costs no allocation once warm.
  Row _list, _entry;
  std::string _normalizedLabel;
};

}  // namespace tavrin
