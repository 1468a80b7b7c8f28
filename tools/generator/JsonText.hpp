#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace tavrin::tool {

// Writes JSON text to a stream as it is produced, so that a profile of a
// hundred thousand photos never exists twice in memory. Commas are placed by
// the writer; the caller only opens, names and closes. Items of the outer two
// levels start on their own line, which keeps large files greppable.
class JsonText {
 public:
  explicit JsonText(std::ostream& out) : _out(out) {}
  JsonText(const JsonText&) = delete;
  JsonText& operator=(const JsonText&) = delete;
  ~JsonText() { flush(); }

  void beginObject() { open('{'); }
  void endObject() { close('}'); }
  void beginArray() { open('['); }
  void endArray() { close(']'); }
  // The name of the next member of the open object.
  void key(std::string_view name);

  // Text as a JSON string: quotation mark, reverse solidus and control
  // characters escaped, everything else copied as it is (UTF-8 in, UTF-8 out).
  void string(std::string_view text);
  void boolean(bool value);
  void null();
  void number(std::int64_t value);
  void number(std::uint64_t value);
  // The shortest text that reads back as the same value. Only finite values.
  void number(double value);
  void number(float value);

  // Hands what is buffered to the stream.
  void flush();

 private:
  void open(char bracket);
  void close(char bracket);
  // Writes the separator a new item needs at this point.
  void item();
  void quoted(std::string_view text);

  std::ostream& _out;
  std::string _buffer;
  int _depth = 0;
  bool _needComma = false;
  bool _afterKey = false;
};

}  // namespace tavrin::tool
