// The codec against the standard command-line tools: gzip, xz and md5sum.
#include "../support/CodecTestData.hpp"
#include "TemporaryDirectory.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/digest.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

namespace tavrin {
namespace {

using namespace testdata;
using testing_support::TemporaryDirectory;

// Files of one test, in a directory of their own, and shell commands run there.
class Scratch {
 public:
  void write(const std::string& name, const Bytes& bytes) const {
    std::ofstream(_directory / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }
  Bytes read(const std::string& name) const {
    const std::string text = testing_support::readFile(_directory / name);
    return Bytes(text.begin(), text.end());
  }
  // True if the command succeeds.
  bool run(const std::string& command) const {
    return std::system(("cd '" + _directory.path().string() + "' && " + command).c_str()) == 0;
  }

 private:
  TemporaryDirectory _directory;
};

class ToolInput : public ::testing::TestWithParam<Bytes> {};

TEST_P(ToolInput, TheToolsAndWeReadEachOthersStreams) {
  const Scratch scratch;
  const Bytes& input = GetParam();
  scratch.write("r\xC3\xA9sum\xC3\xA9", input);
  scratch.write("ours.gz", *gzip(input));
  scratch.write("ours.xz", *compress(input, CompressionAlgorithm::lzma));
  ASSERT_TRUE(scratch.run("gzip -dc ours.gz > from-gzip && xz -dc ours.xz > from-xz"));
  EXPECT_EQ(scratch.read("from-gzip"), input);
  EXPECT_EQ(scratch.read("from-xz"), input);

  ASSERT_TRUE(scratch.run("gzip -c r\xC3\xA9sum\xC3\xA9 > theirs.gz"));
  ASSERT_TRUE(scratch.run("xz -c r\xC3\xA9sum\xC3\xA9 > theirs.xz"));
  EXPECT_EQ(decompress(scratch.read("theirs.xz"), CompressionAlgorithm::lzma), input);
  const Bytes member = scratch.read("theirs.gz");
  ASSERT_TRUE(member.size() > 18 && (member[3] & 0x08)) << "gzip stores the file name";
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

TEST(CodecTools, Md5AgreesWithMd5sumAcrossBlockBoundsAndOnUtf8Text) {
  // Every length to 200 bytes crosses the 56-byte padding and 64-byte block bounds.
  const Scratch scratch;
  const Bytes pattern = randomBytes(200);
  std::vector<Bytes> messages;
  for (std::size_t length = 0; length <= 200; ++length) {
    messages.emplace_back(pattern.begin(), pattern.begin() + static_cast<std::ptrdiff_t>(length));
  }
  messages.push_back(
      bytesOf("Gr\xC3\xBC\xC3\x9F"
              "e aus K\xC3\xB6ln \xF0\x9F\x98\x80 \xE6\x97\xA5"));
  std::string command = "md5sum";
  for (std::size_t index = 0; index < messages.size(); ++index) {
    scratch.write(std::to_string(index), messages[index]);
    command += " " + std::to_string(index);
  }
  ASSERT_TRUE(scratch.run(command + " > sums"));
  const Bytes output = scratch.read("sums");
  std::istringstream lines(std::string(output.begin(), output.end()));
  std::size_t index = 0;
  for (std::string line; std::getline(lines, line) && index < messages.size(); ++index) {
    EXPECT_EQ(Digest(messages[index]).checksum(), line.substr(0, 32)) << "message " << index;
  }
  EXPECT_EQ(index, messages.size());
}

}  // namespace
}  // namespace tavrin
