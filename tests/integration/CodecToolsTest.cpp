// The codec against the standard command-line tools: gzip, xz and md5sum.
#include "../support/CodecTestData.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/digest.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace tavrin {
namespace {

using namespace testdata;
namespace fs = std::filesystem;

// A fresh directory for one test's files, removed with everything in it.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    std::string pattern = (fs::temp_directory_path() / "tavrin-codec-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    _path = pattern;
  }
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  ~ScratchDirectory() {
    std::error_code ignored;
    fs::remove_all(_path, ignored);
  }

  // The path of `name` in the directory, quoted for the shell.
  std::string operator/(const std::string& name) const {
    return "'" + (_path / name).string() + "'";
  }

  void write(const std::string& name, const Bytes& bytes) const {
    std::ofstream(_path / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
  }

  Bytes read(const std::string& name) const {
    std::ifstream in(_path / name, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  // Runs a shell command in which {name} stands for the path of `name`; true if it succeeds.
  bool run(std::string command) const {
    for (std::size_t open; (open = command.find('{')) != std::string::npos;) {
      const std::size_t close = command.find('}', open);
      command.replace(open, close - open + 1, *this / command.substr(open + 1, close - open - 1));
    }
    return std::system(command.c_str()) == 0;
  }

 private:
  fs::path _path;
};

class ToolInput : public ::testing::TestWithParam<Bytes> {};

TEST_P(ToolInput, TheToolsAndWeReadEachOthersStreams) {
  const ScratchDirectory directory;
  const Bytes& input = GetParam();
  directory.write("r\xC3\xA9sum\xC3\xA9", input);
  directory.write("ours.gz", *gzip(input));
  directory.write("ours.xz", *compress(input, CompressionAlgorithm::lzma));
  ASSERT_TRUE(directory.run("gzip -dc {ours.gz} > {from-gzip} && xz -dc {ours.xz} > {from-xz}"));
  EXPECT_EQ(directory.read("from-gzip"), input);
  EXPECT_EQ(directory.read("from-xz"), input);

  ASSERT_TRUE(directory.run("gzip -c {r\xC3\xA9sum\xC3\xA9} > {theirs.gz}"));
  ASSERT_TRUE(directory.run("xz -c {r\xC3\xA9sum\xC3\xA9} > {theirs.xz}"));
  EXPECT_EQ(decompress(directory.read("theirs.xz"), CompressionAlgorithm::lzma), input);
  const Bytes member = directory.read("theirs.gz");
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
  const ScratchDirectory directory;
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
    directory.write(std::to_string(index), messages[index]);
    command += " {" + std::to_string(index) + "}";
  }
  ASSERT_TRUE(directory.run(command + " > {sums}"));
  const Bytes output = directory.read("sums");
  std::istringstream lines(std::string(output.begin(), output.end()));
  std::size_t index = 0;
  for (std::string line; std::getline(lines, line) && index < messages.size(); ++index) {
    EXPECT_EQ(Digest(messages[index]).checksum(), line.substr(0, 32)) << "message " << index;
  }
  EXPECT_EQ(index, messages.size());
}

}  // namespace
}  // namespace tavrin
