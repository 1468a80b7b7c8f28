#include "BoundedJson.hpp"

#include "StopSignal.hpp"
#include "platform/profile/printableExcerpt.hpp"

#include <nlohmann/json.hpp>

#include <vector>

namespace tavrin::sandbox {

namespace {

using nlohmann::json;

// An excerpt of a token shown in a message: enough to recognise it.
constexpr std::size_t tokenExcerpt = 40;
// A parser message with its excerpts stays below this.
constexpr std::size_t messageLimit = 240;
// How many values are parsed between two looks at the stop flag.
constexpr std::size_t stopCheckInterval = 1 << 16;

// Builds the document from the parser's events, keeping the containers being
// filled on a stack: each event costs constant time (an object's member, the
// logarithm of its member count), unlike nlohmann's callback parser.
class BoundedBuilder final : public nlohmann::json_sax<json> {
 public:
  BoundedBuilder(const JsonLimits& limits, json& root) : _limits(limits), _root(root) {}

  const std::optional<std::string>& problem() const { return _problem; }

  bool null() override { return add(json(nullptr)) != nullptr; }
  bool boolean(bool value) override { return add(json(value)) != nullptr; }
  bool number_integer(number_integer_t value) override { return add(json(value)) != nullptr; }
  bool number_unsigned(number_unsigned_t value) override { return add(json(value)) != nullptr; }
  bool number_float(number_float_t value, const string_t&) override {
    return add(json(value)) != nullptr;
  }
  bool string(string_t& value) override { return add(json(std::move(value))) != nullptr; }
  bool binary(binary_t&) override { return refuse("binary values are not JSON"); }

  bool start_object(std::size_t) override { return open(json::object()); }
  bool key(string_t& name) override {
    if (_open.back()->contains(name)) {
      return refuse("the JSON names the member " + quoted(name) + " twice in one object");
    }
    _key = std::move(name);
    return true;
  }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override { return open(json::array()); }
  bool end_array() override { return close(); }

  bool parse_error(std::size_t, const std::string& token,
                   const nlohmann::detail::exception& error) override {
    // The library's message echoes the token whole and raw; show an excerpt
    // instead, and drop the tag ("[json.exception.parse_error.101] ").
    std::string message = error.what();
    if (const auto tag = message.find("] "); tag != std::string::npos) message.erase(0, tag + 2);
    const std::string echoed = "'" + token + "'";
    if (const auto at = message.find(echoed); at != std::string::npos) {
      message.replace(at, echoed.size(), quoted(token));
    }
    return refuse("not JSON: " + platform::printableExcerpt(message, messageLimit));
  }

 private:
  static std::string quoted(std::string_view text) {
    return "\"" + platform::printableExcerpt(text, tokenExcerpt) + "\"";
  }

  bool refuse(std::string problem) {
    if (!_problem) _problem = std::move(problem);
    return false;
  }

  // Puts the value in its place: the root, the open array's end, or the open
  // object's member named by the last key. Null once a limit is passed.
  json* add(json value) {
    if (++_values % stopCheckInterval == 0 && _limits.stop != nullptr && *_limits.stop) {
      throw WorkStopped();
    }
    if (_values > _limits.maxValues) {
      refuse("the JSON holds more than " + std::to_string(_limits.maxValues) + " values");
      return nullptr;
    }
    if (_open.empty()) {
      _root = std::move(value);
      return &_root;
    }
    json& container = *_open.back();
    if (container.is_array()) {
      container.push_back(std::move(value));
      return &container.back();
    }
    return &(container[std::move(_key)] = std::move(value));
  }

  bool open(json container) {
    if (_open.size() >= _limits.maxDepth) {
      return refuse("the JSON nests deeper than " + std::to_string(_limits.maxDepth) + " levels");
    }
    json* placed = add(std::move(container));
    if (placed == nullptr) return false;
    _open.push_back(placed);
    return true;
  }

  bool close() {
    _open.pop_back();
    return true;
  }

  const JsonLimits& _limits;
  json& _root;
  std::vector<json*> _open;  // the arrays and objects being filled, innermost last
  std::string _key;
  std::size_t _values = 0;
  std::optional<std::string> _problem;
};

}  // namespace

std::optional<std::string> parseBoundedJson(std::string_view text, const JsonLimits& limits,
                                            json& document) {
  document = json();
  BoundedBuilder builder(limits, document);
  if (!json::sax_parse(text, &builder)) {
    document = json();
    return builder.problem().value_or("not JSON");
  }
  return std::nullopt;
}

}  // namespace tavrin::sandbox
