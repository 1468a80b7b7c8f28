#include "../support/CodecTestData.hpp"

#include "codec/CompressionDriver.hpp"
#include "codec/ZlibStream.hpp"

#include <gtest/gtest.h>

#include <numeric>

namespace tavrin {
namespace {

using namespace testdata;

// A stream that plays back a script: on each call it writes `produce` bytes
// 0, 1, 2, ... (or fills the room when `produce` is `fill`) and returns
// `status`, recording the room it was offered. Called past its script it
// ends quietly, so only the driver itself can turn a script into a failure.
constexpr std::size_t fill = ~std::size_t{0};
using Script = std::vector<std::pair<std::size_t, StreamStatus>>;  // produce, status

struct ScriptedStream final : CodecStream {
  explicit ScriptedStream(Script calls) : script(std::move(calls)) {}

  StreamStatus process(std::span<const std::uint8_t>& source,
                       std::span<std::uint8_t>& destination) override {
    offered.push_back(destination.size());
    source = {};
    if (next == script.size()) return StreamStatus::end;
    const auto [produce, status] = script[next++];
    const std::size_t count = produce == fill ? destination.size() : produce;
    for (auto& byte : destination.first(count)) byte = static_cast<std::uint8_t>(written++);
    destination = destination.subspan(count);
    return status;
  }

  Script script;
  std::vector<std::size_t> offered;
  std::size_t next = 0, written = 0;
};

TEST(Driver, BufferIsTheSourceLengthClampedTo64Through65536AndReused) {
  using Sizes = std::pair<std::size_t, std::size_t>;  // source length, buffer size
  for (const auto& [sourceLength, size] :
       {Sizes{0, 64}, Sizes{64, 64}, Sizes{65, 65}, Sizes{65536, 65536}, Sizes{300000, 65536}}) {
    ScriptedStream stream(
        {{fill, StreamStatus::ok}, {fill, StreamStatus::ok}, {5, StreamStatus::end}});
    const auto result = CompressionDriver::drive(stream, Bytes(sourceLength, 0), Bytes{0xAA});
    EXPECT_EQ(stream.offered, (std::vector<std::size_t>{size, size, size})) << sourceLength;
    Bytes written(2 * size + 5);
    std::iota(written.begin(), written.end(), std::uint8_t{0});
    EXPECT_EQ(result, Bytes{0xAA} + written) << sourceLength;
  }
}

TEST(Driver, GivesAllOutputOrNone) {
  for (const auto& [script, succeeds] : std::vector<std::pair<Script, bool>>{
           {{{fill, StreamStatus::end}}, true},  // ends with a full buffer
           {{{99, StreamStatus::ok}}, false},    // room left: input ran out
           {{{0, StreamStatus::ok}}, false},     // nothing written
           {{{fill, StreamStatus::ok}, {3, StreamStatus::error}}, false}}) {  // error after output
    ScriptedStream stream(script);
    EXPECT_EQ(CompressionDriver::drive(stream, Bytes(100, 0), {}).has_value(), succeeds)
        << script.size() << " calls, the first producing " << script[0].first;
  }
}

class DecoderLimit : public ::testing::TestWithParam<CompressionAlgorithm> {};

TEST_P(DecoderLimit, StopsAStreamThatDecodesPastTheLimit) {
  const Bytes input(200000, 'x');
  const Bytes compressed = *compress(input, GetParam());
  for (const std::size_t limit : {input.size(), input.size() - 1, std::size_t{70000}}) {
    const auto stream =
        CompressionDriver::openStream(CodecOperation::decode, GetParam(), compressed.size());
    const auto decoded = CompressionDriver::drive(*stream, compressed, {}, limit);
    EXPECT_EQ(decoded.has_value(), limit >= input.size()) << limit;
  }
}

INSTANTIATE_TEST_SUITE_P(Driver, DecoderLimit,
                         ::testing::Values(CompressionAlgorithm::zlib, CompressionAlgorithm::lzma,
                                           CompressionAlgorithm::lz4));

TEST(ZlibStream, HandsLongInputToZlibInSlices) {
  // Slices of a few bytes stand in for the 1 GiB slices of inputs past 4 GiB.
  const Bytes input = jsonLikeBytes(20000);
  const auto encoded =
      CompressionDriver::drive(*ZlibStream::open(CodecOperation::encode, 7), input, {});
  ASSERT_TRUE(encoded.has_value());
  EXPECT_EQ(inflate(*encoded), input);
  EXPECT_EQ(
      CompressionDriver::drive(*ZlibStream::open(CodecOperation::decode, 5), *deflate(input), {}),
      input);
}

}  // namespace
}  // namespace tavrin
