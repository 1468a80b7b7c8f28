// The codec beside its references, in one binary so they share a machine and a moment:
// our MD5 and OpenSSL's, our base64 encoder and OpenSSL's EVP_EncodeBlock, and
// compress(zlib) against zlib's one-shot routines at the same level.
#include "codec/Base64.hpp"
#include "codec/ZlibStream.hpp"
#include "dataset/JsonWriter.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/digest.hpp>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#define ZLIB_CONST
#include <zlib.h>

#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavrin {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A dataset as a run writes it: contact rows (identifiers, flags, small
// category ids, nulls, MD5 digests of labels, nested rows) and photo rows
// (dates, rotated coordinates, sizes), written by the library's JSON writer.
const Bytes& datasetJson() {
  static const Bytes json = [] {
    std::mt19937_64 random(2024);
    const auto draw = [&](std::uint64_t bound) { return random() % bound; };
    const char* labels[] = {"_$!<Home>!$_", "_$!<Work>!$_", "_$!<Mobile>!$_", "whatsapp", "Skype"};
    Element contacts("Contacts");
    Element images("Images");
    for (int index = 0; index < 16000; ++index) {
      Row contact;
      contact.append(std::to_string(random()) + "-4F89-11D3-9A0C-0305E82C3301:ABPerson");
      for (int flag = 0; flag < 8; ++flag) contact.append(draw(3) != 0);
      contact.append(draw(4) == 0 ? std::optional<std::uint64_t>() : draw(6));
      contact.append(nullptr);
      Row phones;
      for (std::uint64_t phone = draw(3); phone > 0; --phone) {
        Row entry;
        entry.append(toMd5(labels[draw(5)]));
        entry.append(draw(2) == 0);
        phones.append(entry);
      }
      if (phones.empty()) {
        contact.append(nullptr);
      } else {
        contact.append(phones);
      }
      contact.append(1.5e9 + static_cast<double>(draw(200000000)) +
                     0.125 * static_cast<double>(draw(8)));
      contacts.append(contact);

      Row image;
      image.append(std::to_string(random()) + "/L0/001");
      image.append(1.4e9 + static_cast<double>(draw(300000000)) + 0.5);
      image.append(std::uniform_real_distribution<double>(-90, 90)(random));
      image.append(std::uniform_real_distribution<double>(-180, 180)(random));
      image.append(draw(2) == 0 ? 4032 : 3024);
      image.append(draw(2) == 0 ? 3024 : 4032);
      image.append(0);
      image.append(draw(10) == 0);
      image.append(nullptr);
      images.append(image);
    }
    DatasetDocument document;
    document.push_back(std::move(contacts));
    document.push_back(std::move(images));
    const std::string text = writeJson(document).str();
    return Bytes(text.begin(), text.end());
  }();
  return json;
}

std::span<const std::uint8_t> jsonPrefix(std::int64_t size) {
  const auto json = std::span(datasetJson());
  if (static_cast<std::size_t>(size) > json.size()) throw std::length_error("dataset too short");
  return json.first(static_cast<std::size_t>(size));
}

// Raw DEFLATE of `input` at `level` in one deflate call into `output`, which
// is large enough; the compressed size. The least any driver around zlib can do.
std::size_t rawDeflateOneShot(std::span<const std::uint8_t> input, Bytes& output, int level) {
  z_stream stream{};
  deflateInit2(&stream, level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
  const std::unique_ptr<z_stream, decltype(&deflateEnd)> end(&stream, &deflateEnd);
  stream.next_in = input.data();
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = output.data();
  stream.avail_out = static_cast<uInt>(output.size());
  deflate(&stream, Z_FINISH);
  return stream.total_out;
}

Bytes outputFor(std::span<const std::uint8_t> input) {
  return Bytes(deflateBound(nullptr, static_cast<uLong>(input.size())) + 64);
}

// ---- compress(zlib) against zlib's one-shot routines at the same level.

void Compress_Ours(benchmark::State& state) {
  const auto input = jsonPrefix(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(compress(input, CompressionAlgorithm::zlib));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

// compress2 writes the zlib container (2-byte header, Adler-32 trailer) into
// one buffer sized by compressBound.
void Compress_ZlibCompress2(benchmark::State& state) {
  const auto input = jsonPrefix(state.range(0));
  Bytes output(compressBound(static_cast<uLong>(input.size())));
  for (auto _ : state) {
    uLongf size = output.size();
    compress2(output.data(), &size, input.data(), static_cast<uLong>(input.size()),
              ZlibStream::compressionLevel);
    benchmark::DoNotOptimize(size);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

// The same raw DEFLATE as ours, with no container and no output copying.
void Compress_ZlibRawOneShot(benchmark::State& state) {
  const auto input = jsonPrefix(state.range(0));
  Bytes output = outputFor(input);
  for (auto _ : state) {
    benchmark::DoNotOptimize(rawDeflateOneShot(input, output, ZlibStream::compressionLevel));
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void compressSizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(16 << 10)->Arg(256 << 10)->Arg(4 << 20)->Unit(benchmark::kMicrosecond);
}
BENCHMARK(Compress_Ours)->Apply(compressSizes);
BENCHMARK(Compress_ZlibCompress2)->Apply(compressSizes);
BENCHMARK(Compress_ZlibRawOneShot)->Apply(compressSizes);

// ---- MD5: ours against OpenSSL's one-shot EVP_Digest.

// 16 MiB of random bytes; every MD5 and base64 benchmark reads a prefix.
const Bytes& randomBytes() {
  static const Bytes bytes = [] {
    Bytes message(16 << 20);
    std::mt19937 random(7);
    for (auto& byte : message) byte = static_cast<std::uint8_t>(random());
    return message;
  }();
  return bytes;
}

void Md5_Ours(benchmark::State& state) {
  const auto message = std::span(randomBytes()).first(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(Digest(message).digest());
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Md5_OpenSSL(benchmark::State& state) {
  const auto message = std::span(randomBytes()).first(static_cast<std::size_t>(state.range(0)));
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  for (auto _ : state) {
    EVP_Digest(message.data(), message.size(), digest, &length, EVP_md5(), nullptr);
    benchmark::DoNotOptimize(digest);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

// EVP_Digest again with the algorithm fetched once, which spares OpenSSL its
// lookup per call: the fastest way to use its one-shot interface.
void Md5_OpenSSLFetched(benchmark::State& state) {
  const auto message = std::span(randomBytes()).first(static_cast<std::size_t>(state.range(0)));
  const std::unique_ptr<EVP_MD, decltype(&EVP_MD_free)> md5(EVP_MD_fetch(nullptr, "MD5", nullptr),
                                                            &EVP_MD_free);
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  for (auto _ : state) {
    EVP_Digest(message.data(), message.size(), digest, &length, md5.get(), nullptr);
    benchmark::DoNotOptimize(digest);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

// Short labels (at most 64 bytes) are what a run hashes most.
void md5Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(16)->Arg(55)->Arg(64)->Arg(1024)->Arg(16 << 20);
}
BENCHMARK(Md5_Ours)->Apply(md5Sizes);
BENCHMARK(Md5_OpenSSL)->Apply(md5Sizes);
BENCHMARK(Md5_OpenSSLFetched)->Apply(md5Sizes);

// ---- Base64: our encoder and OpenSSL's EVP_EncodeBlock, each writing into a
// buffer allocated once outside the loop; and our public base64Encode, which
// allocates the string it returns on every call.

void Base64_Ours(benchmark::State& state) {
  const auto bytes = std::span(randomBytes()).first(static_cast<std::size_t>(state.range(0)));
  std::string text(base64EncodedSize(bytes.size()), '\0');
  for (auto _ : state) {
    base64EncodeTo(text.data(), bytes);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Base64_OpenSSL(benchmark::State& state) {
  const auto bytes = std::span(randomBytes()).first(static_cast<std::size_t>(state.range(0)));
  std::vector<unsigned char> text(base64EncodedSize(bytes.size()) + 1);  // and a NUL
  for (auto _ : state) {
    EVP_EncodeBlock(text.data(), bytes.data(), static_cast<int>(bytes.size()));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Base64_OursAllocating(benchmark::State& state) {
  const auto bytes = std::span(randomBytes()).first(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(base64Encode(bytes));
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void base64Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(48)->Arg(4 << 10)->Arg(1 << 20);
}
BENCHMARK(Base64_Ours)->Apply(base64Sizes);
BENCHMARK(Base64_OpenSSL)->Apply(base64Sizes);
BENCHMARK(Base64_OursAllocating)->Apply(base64Sizes);

}  // namespace
}  // namespace tavrin
