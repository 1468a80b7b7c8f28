#include "platform/profile/ProfileJsonReader.hpp"

#include "platform/profile/printableExcerpt.hpp"

#include <tavrin/platform/Platform.hpp>

#include <nlohmann/json.hpp>

#include <iterator>

namespace tavrin::platform {

namespace {

// The pieces of a text as one run of bytes, counted against the size limit.
class Pieces {
 public:
  Pieces(const ProfileText& text, const std::string& file, const ProfileLimits& limits)
      : _text(text), _file(file), _limits(limits) {
    refill();
  }
  bool atEnd() const { return _at == _piece.size(); }
  char current() const { return _piece[_at]; }
  void advance() {
    if (++_at == _piece.size()) refill();
  }

 private:
  void refill() {
    _piece = _text();
    _at = 0;
    _total += _piece.size();
    if (_total > _limits.bytes) failTooLarge(_file, _limits);
  }

  const ProfileText& _text;
  const std::string& _file;
  const ProfileLimits& _limits;
  std::string_view _piece;
  std::size_t _at = 0, _total = 0;
};

// The bytes of the pieces as the parser reads them, one at a time.
class PieceIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  PieceIterator() = default;
  explicit PieceIterator(Pieces& pieces) : _pieces(&pieces) {}
  char operator*() const { return _pieces->current(); }
  PieceIterator& operator++() {
    _pieces->advance();
    return *this;
  }
  PieceIterator operator++(int) {
    PieceIterator before = *this;
    _pieces->advance();
    return before;
  }
  // Every iterator at the end equals the default one, the end.
  bool operator==(const PieceIterator& other) const { return atEnd() == other.atEnd(); }

 private:
  bool atEnd() const { return _pieces == nullptr || _pieces->atEnd(); }
  Pieces* _pieces = nullptr;
};

// The parser's events, handed to the reader. A failure throws from inside
// the parse, which ends it.
class Events {
 public:
  explicit Events(ProfileJsonReader& reader) : _reader(reader) {}

  // The names the parser calls.
  // NOLINTBEGIN(readability-identifier-naming)
  bool null() { return deliver(nullptr); }
  bool boolean(bool value) { return deliver(value); }
  bool number_integer(std::int64_t value) { return deliver(value); }
  bool number_unsigned(std::uint64_t value) { return deliver(value); }
  bool number_float(double value, const std::string&) { return deliver(value); }
  bool string(std::string& value) { return deliver(&value); }
  // Only binary formats have binary values; JSON text has none.
  bool binary(nlohmann::json::binary_t&) { _reader.fail("a binary value"); }
  bool start_object(std::size_t) {
    _reader.beginObject();
    return true;
  }
  bool key(std::string& name) {
    _reader.key(name);
    return true;
  }
  bool end_object() {
    _reader.end();
    return true;
  }
  bool start_array(std::size_t) {
    _reader.beginArray();
    return true;
  }
  bool end_array() {
    _reader.end();
    return true;
  }
  bool parse_error(std::size_t byte, const std::string&, const nlohmann::json::exception& error) {
    // 406: a number beyond a double's range; the value is known, not where it goes.
    _reader.syntaxError(byte, error.what(), error.id == 406);
  }
  // NOLINTEND(readability-identifier-naming)

 private:
  bool deliver(JsonScalar scalar) {
    _reader.scalar(scalar);
    return true;
  }
  ProfileJsonReader& _reader;
};

// The parser's message without its "[json.exception.parse_error.101] "
// prefix, and with the text it echoes cut to a short, printable excerpt:
// the echo can be a whole 100 KB token.
std::string parserMessage(std::string message) {
  if (const auto end = message.find("] ");
      message.starts_with("[json.exception") && end != std::string::npos) {
    message.erase(0, end + 2);
  }
  for (const std::string_view marker : {"last read: '", "parsing '"}) {
    const auto at = message.find(marker);
    if (at == std::string::npos) continue;
    const auto start = at + marker.size();
    const auto stop = message.ends_with('\'') ? message.size() - 1 : message.size();
    if (stop > start) {
      message.replace(start, stop - start,
                      printableExcerpt(std::string_view(message).substr(start, stop - start), 40));
    }
    break;
  }
  return message;
}

}  // namespace

void appendPointerToken(std::string& out, std::string_view name) {
  for (const char c : name) {
    if (c == '~') {
      out += "~0";
    } else if (c == '/') {
      out += "~1";
    } else {
      out += c;
    }
  }
}

void failTooLarge(const std::string& file, const ProfileLimits& limits) {
  throw DeviceProfileError(
      file, "", "larger than the " + std::to_string(limits.bytes) + " bytes a profile may have");
}

ProfileJsonReader::ProfileJsonReader(const std::string& file, const ProfileLimits& limits,
                                     std::string at)
    : _file(file), _limits(limits), _at(std::move(at)) {}

void ProfileJsonReader::read(const ProfileText& text, Slot root) {
  _root = root;
  Pieces pieces(text, _file, _limits);
  Events events(*this);
  nlohmann::json::sax_parse(PieceIterator(pieces), PieceIterator(), &events);
}

Slot ProfileJsonReader::next() {
  if (_depth == 0) return _root;
  Frame& frame = innermost();
  if (frame.isArray) ++frame.elements;
  return frame.rules->next(*this, frame);
}

void ProfileJsonReader::count(bool container) {
  if (++_values > _limits.values) {
    fail("more than the " + std::to_string(_limits.values) + " values a profile may have");
  }
  if (container && ++_containers > _limits.containers) {
    fail("more than the " + std::to_string(_limits.containers) +
         " objects and lists a profile may have");
  }
}

void ProfileJsonReader::scalar(JsonScalar& value) {
  const Slot slot = next();
  count(false);
  slot.rules->scalar(*this, slot.field, value, false);
}

void ProfileJsonReader::beginObject() {
  const Slot slot = next();
  count(true);
  slot.rules->object(*this, slot.field, false);
}

void ProfileJsonReader::beginArray() {
  const Slot slot = next();
  count(true);
  slot.rules->array(*this, slot.field, false);
}

void ProfileJsonReader::key(std::string& name) { innermost().key.assign(name); }

void ProfileJsonReader::end() {
  Frame& frame = innermost();
  frame.rules->close(*this, frame);
  --_depth;
}

void ProfileJsonReader::open(void* target, const ContainerRules& rules, bool isArray,
                             std::size_t members) {
  if (_depth >= _limits.depth) {
    fail("nested deeper than the " + std::to_string(_limits.depth) + " levels a profile may have");
  }
  if (_frames.size() == _depth) _frames.emplace_back();
  Frame& frame = _frames[_depth++];
  frame.rules = &rules;
  frame.target = target;
  frame.isArray = isArray;
  frame.elements = 0;
  frame.key.clear();
  frame.given.assign(members, false);
  frame.names.clear();
}

std::string ProfileJsonReader::pointer(std::size_t frames) const {
  std::string out = _at;
  for (std::size_t i = 0; i < frames; ++i) {
    const Frame& frame = _frames[i];
    // A list before its first element: the pointer names the list.
    if (frame.isArray && frame.elements == 0) break;
    out += '/';
    if (frame.isArray) {
      out += std::to_string(frame.elements - 1);
    } else {
      appendPointerToken(out, frame.key);
    }
  }
  return out;
}

void ProfileJsonReader::fail(const std::string& reason) const {
  throw DeviceProfileError(_file, pointer(_depth), reason);
}

void ProfileJsonReader::expected(std::string_view what, bool orNull) const {
  std::string reason = "expected ";
  reason += what;
  if (orNull) reason += " or null";
  fail(reason);
}

void ProfileJsonReader::failAtMember(std::string_view name, const std::string& reason) {
  innermost().key.assign(name);
  fail(reason);
}

void ProfileJsonReader::syntaxError(std::size_t byte, const std::string& message, bool inValue) {
  std::string reason = parserMessage(message);
  if (!reason.starts_with("parse error at line")) reason += " at byte " + std::to_string(byte);
  // The value is known only inside an object, by its member's name; else the
  // error names the object or list the parser was in.
  const bool atMember = inValue && _depth > 0 && !innermost().isArray;
  throw DeviceProfileError(_file, pointer(atMember || _depth == 0 ? _depth : _depth - 1), reason);
}

std::optional<double> numberOf(const JsonScalar& value) {
  if (const auto* integer = std::get_if<std::int64_t>(&value)) return static_cast<double>(*integer);
  if (const auto* integer = std::get_if<std::uint64_t>(&value))
    return static_cast<double>(*integer);
  if (const auto* number = std::get_if<double>(&value)) return *number;
  return {};
}

void Rules<std::string>::scalar(ProfileJsonReader& reader, std::string& field, JsonScalar& value,
                                bool orNull) {
  std::string* const text = textOf(value);
  if (!text) reader.expected(expected, orNull);
  field = std::move(*text);
}

void Rules<bool>::scalar(ProfileJsonReader& reader, bool& field, JsonScalar& value, bool orNull) {
  const bool* const boolean = std::get_if<bool>(&value);
  if (!boolean) reader.expected(expected, orNull);
  field = *boolean;
}

void Rules<double>::scalar(ProfileJsonReader& reader, double& field, JsonScalar& value,
                           bool orNull) {
  const auto number = numberOf(value);
  if (!number) reader.expected(expected, orNull);
  field = *number;
}

void Rules<float>::scalar(ProfileJsonReader& reader, float& field, JsonScalar& value, bool orNull) {
  double wide = 0;
  Rules<double>::scalar(reader, wide, value, orNull);
  if (std::fabs(wide) > std::numeric_limits<float>::max()) {
    reader.expected("a number within the range of a 32-bit float", orNull);
  }
  field = static_cast<float>(wide);
}

}  // namespace tavrin::platform
