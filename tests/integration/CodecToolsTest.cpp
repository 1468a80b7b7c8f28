// The codec against the standard command-line tools: gzip, xz, md5sum and base64.
#include "../support/CodecTestData.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/digest.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

namespace tavrin {
namespace {

using testdata::Bytes;
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

  // The path of `name` in the directory, as a shell word.
  std::string operator/(const std::string& name) const {
    return "'" + (_path / name).string() + "'";
  }

  void write(const std::string& name, const Bytes& bytes) const {
    std::ofstream out(_path / name, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
  }

  Bytes read(const std::string& name) const {
    std::ifstream in(_path / name, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

 private:
  fs::path _path;
};

// Runs `command` in a shell; true if it exits with status 0.
bool run(const std::string& command) { return std::system(command.c_str()) == 0; }

const Bytes text = testdata::jsonLikeBytes(150000);
const Bytes noise = testdata::randomBytes(70000);

class ToolInput : public ::testing::TestWithParam<Bytes> {};

TEST_P(ToolInput, GzipReadsOurMember) {
  const ScratchDirectory directory;
  directory.write("ours.gz", *gzip(GetParam()));
  ASSERT_TRUE(run("gzip -t " + (directory / "ours.gz")));
  ASSERT_TRUE(run("gzip -dc " + (directory / "ours.gz") + " > " + (directory / "out")));
  EXPECT_EQ(directory.read("out"), GetParam());
}

TEST_P(ToolInput, XzReadsOurLzmaStream) {
  const ScratchDirectory directory;
  directory.write("ours.xz", *compress(GetParam(), CompressionAlgorithm::lzma));
  ASSERT_TRUE(run("xz -dc " + (directory / "ours.xz") + " > " + (directory / "out")));
  EXPECT_EQ(directory.read("out"), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Codec, ToolInput,
                         ::testing::Values(Bytes{}, testdata::bytesOf("abc"), text, noise));

TEST(CodecTools, WeReadGzipMembersThatCarryAFileName) {
  const ScratchDirectory directory;
  directory.write("r\xC3\xA9sum\xC3\xA9.json", text);
  for (const std::string level : {"-1", "-6", "-9"}) {
    ASSERT_TRUE(run("gzip " + level + " -c " + (directory / "r\xC3\xA9sum\xC3\xA9.json") + " > " +
                    (directory / "theirs.gz")));
    const Bytes member = directory.read("theirs.gz");
    ASSERT_GT(member.size(), 18u);
    ASSERT_TRUE(member[3] & 0x08) << "gzip stores the file name";
    EXPECT_EQ(gunzip(member), text) << level;
  }
}

TEST(CodecTools, WeRejectAGzipMemberWhoseLengthOrCrcIsAltered) {
  const ScratchDirectory directory;
  directory.write("data", text);
  ASSERT_TRUE(run("gzip -c " + (directory / "data") + " > " + (directory / "theirs.gz")));
  const Bytes member = directory.read("theirs.gz");
  ASSERT_TRUE(gunzip(member).has_value());
  for (const std::size_t fromEnd : {1u, 4u, 5u, 8u}) {  // ISIZE, then CRC-32
    Bytes altered = member;
    altered[altered.size() - fromEnd] ^= 0x01;
    EXPECT_FALSE(gunzip(altered).has_value()) << fromEnd;
  }
}

TEST(CodecTools, WeReadXzStreams) {
  const ScratchDirectory directory;
  directory.write("data", text);
  for (const std::string options :
       {"", "-0 --check=none", "-3 --check=sha256", "-6e --check=crc32"}) {
    ASSERT_TRUE(
        run("xz -c " + options + " " + (directory / "data") + " > " + (directory / "theirs.xz")));
    EXPECT_EQ(decompress(directory.read("theirs.xz"), CompressionAlgorithm::lzma), text) << options;
  }
}

// md5sum's answer for each file, in the order given.
std::vector<std::string> md5sums(const ScratchDirectory& directory,
                                 const std::vector<std::string>& names) {
  std::string command = "md5sum";
  for (const auto& name : names) command += " " + (directory / name);
  if (!run(command + " > " + (directory / "sums"))) return {};
  const Bytes output = directory.read("sums");
  std::istringstream lines(std::string(output.begin(), output.end()));
  std::vector<std::string> sums;
  for (std::string line; std::getline(lines, line);) sums.push_back(line.substr(0, 32));
  return sums;
}

TEST(CodecTools, Md5AgreesWithMd5sumAcrossBlockBoundsAndOnUtf8Text) {
  const ScratchDirectory directory;
  const Bytes pattern = testdata::randomBytes(200);
  std::vector<std::string> names;
  std::vector<Bytes> messages;
  for (std::size_t length = 0; length <= 200; ++length) {
    messages.emplace_back(pattern.begin(), pattern.begin() + static_cast<std::ptrdiff_t>(length));
  }
  for (const char* utf8 : {"\xC3\xA9",
                           "Gr\xC3\xBC\xC3\x9F"
                           "e aus K\xC3\xB6ln \xF0\x9F\x98\x80",
                           "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E"}) {
    messages.push_back(testdata::bytesOf(utf8));
  }
  for (std::size_t index = 0; index < messages.size(); ++index) {
    names.push_back("m" + std::to_string(index));
    directory.write(names.back(), messages[index]);
  }
  const auto sums = md5sums(directory, names);
  ASSERT_EQ(sums.size(), messages.size());
  for (std::size_t index = 0; index < messages.size(); ++index) {
    EXPECT_EQ(Digest(messages[index]).checksum(), sums[index]) << "message " << index;
  }
  EXPECT_EQ(toMd5("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E"), sums.back());
}

TEST(CodecTools, Base64AgreesWithTheBase64Tool) {
  const ScratchDirectory directory;
  for (const Bytes& bytes : {noise, Bytes(noise.begin(), noise.begin() + 1000),
                             Bytes(noise.begin(), noise.begin() + 1001)}) {
    directory.write("data", bytes);
    ASSERT_TRUE(run("base64 -w0 " + (directory / "data") + " > " + (directory / "text")));
    const Bytes theirs = directory.read("text");
    EXPECT_EQ(base64Encode(bytes), std::string(theirs.begin(), theirs.end()));
    EXPECT_EQ(base64Decode(std::string(theirs.begin(), theirs.end())), bytes);
  }
}

}  // namespace
}  // namespace tavrin
