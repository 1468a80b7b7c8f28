#include "../support/CodecTestData.hpp"

#include "codec/CompressionDriver.hpp"
#include "codec/ZlibStream.hpp"

#include <gtest/gtest.h>

#include <numeric>

namespace tavrin {
namespace {

using testdata::Bytes;

// A stream that plays back a script: on each call it writes `produce` bytes
// (or fills the room when `produce` is `fill`) and returns `status`. It
// records the room each call was offered. Called past its script it ends
// quietly, so only the driver itself can turn a script into a failure.
class ScriptedStream final : public CodecStream {
 public:
  static constexpr std::size_t fill = ~std::size_t{0};
  struct Call {
    std::size_t produce;
    StreamStatus status;
  };

  explicit ScriptedStream(std::vector<Call> script) : _script(std::move(script)) {}

  StreamStatus process(std::span<const std::uint8_t>& source,
                       std::span<std::uint8_t>& destination) override {
    offered.push_back(destination.size());
    source = {};
    if (_next == _script.size()) return StreamStatus::end;
    const Call call = _script[_next++];
    const std::size_t count = call.produce == fill ? destination.size() : call.produce;
    for (std::size_t index = 0; index < count; ++index) {
      destination[index] = static_cast<std::uint8_t>(_written++);
    }
    destination = destination.subspan(count);
    return call.status;
  }

  std::vector<std::size_t> offered;

 private:
  std::vector<Call> _script;
  std::size_t _next = 0;
  std::size_t _written = 0;
};

// The bytes 0, 1, 2, ... that a ScriptedStream writes, after `prefix`.
Bytes countingBytes(const Bytes& prefix, std::size_t count) {
  Bytes bytes = prefix;
  for (std::size_t index = 0; index < count; ++index) {
    bytes.push_back(static_cast<std::uint8_t>(index));
  }
  return bytes;
}

struct BufferCase {
  std::size_t sourceLength;
  std::size_t bufferSize;
};

class DriverBuffer : public ::testing::TestWithParam<BufferCase> {};

TEST_P(DriverBuffer, IsTheSourceLengthClampedTo64Through65536AndReused) {
  ScriptedStream stream({{ScriptedStream::fill, StreamStatus::ok},
                         {ScriptedStream::fill, StreamStatus::ok},
                         {5, StreamStatus::end}});
  const Bytes source(GetParam().sourceLength, 0);
  const Bytes prefix = {0xAA, 0xBB};
  const auto result = CompressionDriver::drive(stream, source, prefix);
  const std::size_t size = GetParam().bufferSize;
  EXPECT_EQ(stream.offered, (std::vector<std::size_t>{size, size, size}));
  EXPECT_EQ(result, countingBytes(prefix, 2 * size + 5));
}

INSTANTIATE_TEST_SUITE_P(Driver, DriverBuffer,
                         ::testing::Values(BufferCase{0, 64}, BufferCase{1, 64}, BufferCase{64, 64},
                                           BufferCase{65, 65}, BufferCase{1000, 1000},
                                           BufferCase{65536, 65536}, BufferCase{65537, 65536},
                                           BufferCase{300000, 65536}));

struct ScriptCase {
  const char* name;
  std::vector<ScriptedStream::Call> script;
  bool succeeds;
};

class DriverScript : public ::testing::TestWithParam<ScriptCase> {};

TEST_P(DriverScript, GivesAllOutputOrNone) {
  ScriptedStream stream(GetParam().script);
  const auto result = CompressionDriver::drive(stream, Bytes(100, 0), Bytes{});
  EXPECT_EQ(result.has_value(), GetParam().succeeds);
}

constexpr auto fill = ScriptedStream::fill;
INSTANTIATE_TEST_SUITE_P(
    Driver, DriverScript,
    ::testing::Values(
        ScriptCase{"EndAtOnce", {{0, StreamStatus::end}}, true},
        ScriptCase{"EndWithAFullBuffer", {{fill, StreamStatus::end}}, true},
        ScriptCase{"OkWithRoomLeftIsInputRunOut", {{99, StreamStatus::ok}}, false},
        ScriptCase{"OkWithNothingWritten", {{0, StreamStatus::ok}}, false},
        ScriptCase{"ErrorAfterOutput",
                   {{fill, StreamStatus::ok}, {fill, StreamStatus::ok}, {3, StreamStatus::error}},
                   false},
        ScriptCase{"ErrorAtOnce", {{0, StreamStatus::error}}, false}),
    testdata::caseName);

TEST(Driver, OutputLimitCountsOnlyWhatTheStreamProduces) {
  const Bytes prefix = {1, 2, 3};
  const std::vector<ScriptedStream::Call> script = {{fill, StreamStatus::ok},
                                                    {10, StreamStatus::end}};
  ScriptedStream atLimit(script);
  EXPECT_EQ(CompressionDriver::drive(atLimit, Bytes(100, 0), prefix, 110),
            countingBytes(prefix, 110));
  ScriptedStream overLimit(script);
  EXPECT_FALSE(CompressionDriver::drive(overLimit, Bytes(100, 0), prefix, 109).has_value());
}

class DecoderLimit : public ::testing::TestWithParam<CompressionAlgorithm> {};

TEST_P(DecoderLimit, StopsAStreamThatDecodesPastTheLimit) {
  const Bytes input(200000, 'x');
  const auto compressed = compress(input, GetParam());
  ASSERT_TRUE(compressed.has_value());
  for (const std::size_t limit : {input.size(), input.size() - 1, std::size_t{70000}}) {
    const auto stream =
        CompressionDriver::openStream(CodecOperation::decode, GetParam(), compressed->size());
    ASSERT_NE(stream, nullptr);
    const auto decoded = CompressionDriver::drive(*stream, *compressed, {}, limit);
    EXPECT_EQ(decoded.has_value(), limit >= input.size()) << limit;
  }
}

INSTANTIATE_TEST_SUITE_P(Driver, DecoderLimit,
                         ::testing::Values(CompressionAlgorithm::zlib, CompressionAlgorithm::lzma,
                                           CompressionAlgorithm::lz4));

TEST(ZlibStream, HandsLongInputToZlibInSlices) {
  // Slices of a few bytes stand in for the 1 GiB slices of inputs past 4 GiB.
  const Bytes input = testdata::jsonLikeBytes(20000);
  const auto encoder = ZlibStream::open(CodecOperation::encode, 7);
  ASSERT_NE(encoder, nullptr);
  const auto encoded = CompressionDriver::drive(*encoder, input, {});
  ASSERT_TRUE(encoded.has_value());
  EXPECT_EQ(inflate(*encoded), input);

  const auto decoder = ZlibStream::open(CodecOperation::decode, 5);
  ASSERT_NE(decoder, nullptr);
  EXPECT_EQ(CompressionDriver::drive(*decoder, *deflate(input), {}), input);
}

}  // namespace
}  // namespace tavrin
