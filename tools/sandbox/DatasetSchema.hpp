#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace tavrin::sandbox {

// What one position of a row may hold. Every kind except `rows` may also be
// declared nullable; `rows` is always nullable (an absent list is null).
enum class Kind : std::uint8_t {
  text,             // a JSON string
  boolean,          // true or false, never 1/0
  integer,          // a JSON number without fraction within the signed 64-bit range
  unsignedInteger,  // a JSON number without fraction or sign within the unsigned 64-bit range
  number,           // any JSON number (a double; an integral one is written without fraction)
  labelCode,        // a predefined label as text, or a category id
  digest,           // an MD5 digest: 32 lower-case hexadecimal digits
  flag,             // the integer 0 or 1
  rows,             // null, or a non-empty list of rows of one shape
};

struct RowShape;

// One position of a row.
struct Slot {
  Kind kind;
  bool nullable = false;
  const RowShape* rows = nullptr;  // the shape of the nested rows, for Kind::rows
};

// The positions of one kind of row, in order.
struct RowShape {
  std::span<const Slot> slots;
};

// How a source may report a failure besides its rows.
enum class Failure : std::uint8_t {
  none,       // never: the section only ever holds rows (or values)
  alone,      // one error entry as the only entry
  afterRows,  // one error entry as the last entry, after the rows read before the failure
};

// One section of the dataset, in document order.
struct SectionShape {
  std::string_view name;
  // True when the section holds the shape's values directly (the header,
  // "GeneralData", "GeoInfo"); false when it holds one row per record.
  bool flat;
  const RowShape* shape;
  // The name that ends the section's access-denied entry; empty when the
  // source never checks a permission.
  std::string_view deniedName;
  Failure failure;
  // Rows whose first value is fixed, in this order ("Permissions"); empty for
  // sections with any number of rows.
  std::span<const std::string_view> fixedKeys;
};

// The 14 sections of a dataset, "GeneralInfo" first and "Permissions" last.
std::span<const SectionShape> datasetSections();

}  // namespace tavrin::sandbox
