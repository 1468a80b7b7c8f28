// The codec against the standard command-line tools: gzip, xz and md5sum.
#include "../support/CodecTestData.hpp"
#include "TemporaryDirectory.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/digest.hpp>

#include <gtest/gtest.h>

#include <cstdlib>

namespace tavrin {
namespace {

using namespace testdata;

// Files of one test, in a directory of their own, and shell commands run there.
class Scratch : public testing_support::TemporaryDirectory {
 public:
  void write(const std::string& name, const Bytes& bytes) const {
    std::ofstream(*this / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
  Bytes read(const std::string& name) const {
    return bytesOf(testing_support::readFile(*this / name));
  }
  // True if the command succeeds.
  bool run(const std::string& command) const {
    return std::system(("cd '" + path().string() + "' && " + command).c_str()) == 0;
  }
};

class ToolInput : public ::testing::TestWithParam<Bytes> {};

TEST_P(ToolInput, TheToolsAndWeReadEachOthersStreams) {
  const Scratch scratch;
  const Bytes& input = GetParam();
  const std::string name = "r\xC3\xA9sum\xC3\xA9";  // gzip stores the name of a file
  scratch.write(name, input);
  scratch.write("ours.gz", *gzip(input));
  scratch.write("ours.xz", *compress(input, CompressionAlgorithm::lzma));
  ASSERT_TRUE(scratch.run("gzip -dc ours.gz > from-gzip && xz -dc ours.xz > from-xz"));
  EXPECT_EQ(scratch.read("from-gzip"), input);
  EXPECT_EQ(scratch.read("from-xz"), input);

  ASSERT_TRUE(scratch.run("gzip -c " + name + " > theirs.gz && xz -c " + name + " > theirs.xz"));
  EXPECT_EQ(decompress(scratch.read("theirs.xz"), CompressionAlgorithm::lzma), input);
  const Bytes member = scratch.read("theirs.gz");
  ASSERT_TRUE(member.size() > 18 && (member[3] & 0x08)) << "the name is not stored";
  EXPECT_EQ(gunzip(member), input);
  for (const std::size_t fromEnd : {1u, 8u}) {  // in ISIZE, in the CRC-32
    Bytes altered = member;
    altered[altered.size() - fromEnd] ^= 0x01;
    EXPECT_FALSE(gunzip(altered).has_value()) << fromEnd;
  }
}

INSTANTIATE_TEST_SUITE_P(Codec, ToolInput,
                         ::testing::Values(Bytes{}, bytesOf("abc"), jsonLikeBytes(150000),
                                           randomBytes(70000)));

TEST(CodecTools, Md5AgreesWithMd5sumAcrossBlockBounds) {
  // Every length to 200 bytes crosses the 56-byte padding and 64-byte block bounds.
  const Scratch scratch;
  const Bytes pattern = randomBytes(200);
  std::string command = "md5sum", expected;
  for (std::size_t length = 0; length <= 200; ++length) {
    const Bytes message(pattern.begin(), pattern.begin() + static_cast<std::ptrdiff_t>(length));
    scratch.write(std::to_string(length), message);
    command += " " + std::to_string(length);
    expected += Digest(message).checksum() + "  " + std::to_string(length) + "\n";
  }
  ASSERT_TRUE(scratch.run(command + " > sums"));
  EXPECT_EQ(testing_support::readFile(scratch / "sums"), expected);
}

}  // namespace
}  // namespace tavrin
