// Our JSON writer against RapidJSON's Writer<StringBuffer> and nlohmann's dump()
// on the same synthetic dataset, plus the dataset's memory against its JSON size.
#include "SyntheticDataset.hpp"

#include "dataset/JsonWriter.hpp"
#include "dataset/Tape.hpp"

#include <benchmark/benchmark.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <nlohmann/json.hpp>

namespace tavrin::bench {
namespace {

const DatasetDocument& dataset() {
  static const DatasetDocument document = makeSyntheticDataset();
  return document;
}

// Decodes the encoded values straight into a SAX-style handler, the same way
// our writer reads them, so that every writer pays the same decoding cost.
template <typename Handler>
void walkValues(const std::uint8_t* position, const std::uint8_t* end, Handler& handler) {
  handler.StartArray();
  while (position < end) {
    const std::uint8_t tag = *position++;
    switch (tape::kindOf(tag)) {
      case tape::signedInteger:
        handler.Int64(tape::readSigned(position, tape::payloadSize(tag)));
        position += tape::payloadSize(tag);
        continue;
      case tape::unsignedInteger:
        handler.Uint64(tape::readUnsigned(position, tape::payloadSize(tag)));
        position += tape::payloadSize(tag);
        continue;
      case tape::string: {
        const std::size_t length = tape::readLength(position);
        handler.String(reinterpret_cast<const char*>(position),
                       static_cast<rapidjson::SizeType>(length));
        position += length;
        continue;
      }
      case tape::row: {
        const std::size_t length = tape::readLength(position);
        walkValues(position, position + length, handler);
        position += length;
        continue;
      }
      default: break;
    }
    if (tag == tape::floatingPoint) {
      handler.Double(tape::readDouble(position));
      position += sizeof(double);
    } else if (tag == tape::null) {
      handler.Null();
    } else {
      handler.Bool(tag == tape::trueValue);
    }
  }
  handler.EndArray();
}

template <typename Handler>
void walkDocument(const DatasetDocument& document, Handler& handler) {
  handler.StartArray();
  for (const Element& section : document) {
    handler.StartObject();
    handler.Key(section.Name().data(), static_cast<rapidjson::SizeType>(section.Name().size()));
    const auto bytes = section.ChildElements().view().bytes();
    walkValues(bytes.data(), bytes.data() + bytes.size(), handler);
    handler.EndObject();
  }
  handler.EndArray();
}

// Builds an nlohmann value from the same walk.
class NlohmannBuilder {
 public:
  void StartArray() { push(nlohmann::json::array()); }
  void StartObject() { push(nlohmann::json::object()); }
  void EndArray() { pop(); }
  void EndObject() { pop(); }
  void Key(const char* text, rapidjson::SizeType length) { _key.assign(text, length); }
  void Int64(std::int64_t v) { add(v); }
  void Uint64(std::uint64_t v) { add(v); }
  void Double(double v) { add(v); }
  void String(const char* text, rapidjson::SizeType length) { add(std::string(text, length)); }
  void Null() { add(nullptr); }
  void Bool(bool v) { add(v); }
  nlohmann::json result;

 private:
  void push(nlohmann::json value) {
    add(std::move(value));
    _stack.push_back(_last);
  }
  void pop() { _stack.pop_back(); }
  void add(nlohmann::json value) {
    if (_stack.empty()) {
      result = std::move(value);
      _last = &result;
    } else if (_stack.back()->is_object()) {
      _last = &((*_stack.back())[_key] = std::move(value));
    } else {
      _stack.back()->push_back(std::move(value));
      _last = &_stack.back()->back();
    }
  }
  std::vector<nlohmann::json*> _stack;
  nlohmann::json* _last = nullptr;
  std::string _key;
};

void reportSize(benchmark::State& state, std::size_t jsonBytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * jsonBytes));
  state.counters["json_MB"] = static_cast<double>(jsonBytes) / 1e6;
}

void JsonWriter_Tavrin(benchmark::State& state) {
  const DatasetDocument& document = dataset();
  std::size_t bytes = 0;
  for (auto _ : state) {
    MappedBuffer json = writeJson(document);
    bytes = json.size();
    benchmark::DoNotOptimize(json.data());
  }
  reportSize(state, bytes);
  state.counters["memory_MB"] = static_cast<double>(datasetMemoryBytes(document)) / 1e6;
  state.counters["memory_per_json"] =
      static_cast<double>(datasetMemoryBytes(document)) / static_cast<double>(bytes);
}
BENCHMARK(JsonWriter_Tavrin)->Unit(benchmark::kMillisecond);

void JsonWriter_RapidJson(benchmark::State& state) {
  const DatasetDocument& document = dataset();
  std::size_t bytes = 0;
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    walkDocument(document, writer);
    bytes = buffer.GetSize();
    benchmark::DoNotOptimize(buffer.GetString());
  }
  reportSize(state, bytes);
}
BENCHMARK(JsonWriter_RapidJson)->Unit(benchmark::kMillisecond);

void JsonWriter_NlohmannDump(benchmark::State& state) {
  NlohmannBuilder builder;
  walkDocument(dataset(), builder);
  std::size_t bytes = 0;
  for (auto _ : state) {
    std::string json = builder.result.dump();
    bytes = json.size();
    benchmark::DoNotOptimize(json.data());
  }
  reportSize(state, bytes);
}
BENCHMARK(JsonWriter_NlohmannDump)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tavrin::bench
