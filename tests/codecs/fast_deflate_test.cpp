#include "fast_deflate.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>

namespace nerova_zel::test {
namespace {

Bytes inflated(const Bytes& stream, std::size_t size) {
  Bytes bytes(size + 1);
  uLongf length = bytes.size();
  EXPECT_EQ(uncompress(bytes.data(), &length, stream.data(), stream.size()), Z_OK);
  bytes.resize(length);
  return bytes;
}

/** Bytes as images may give them: noise, nothing, runs of all lengths, few values, and the deepest codes there are. */
Bytes block_of(std::mt19937& random, std::size_t size) {
  const auto kind = static_cast<unsigned>(random() % 6);
  const unsigned sparse = 1U << random() % 12;
  Bytes bytes(size);
  for (unsigned char& byte : bytes) {
    const auto number = static_cast<unsigned>(random());
    switch (kind) {
      case 0:
        byte = static_cast<unsigned char>(number);
        break;
      case 1:
        byte = static_cast<unsigned char>(number % 3);
        break;
      case 2: {  // each next value half as often
        unsigned zeros = 0;
        while (zeros < 31 && (number >> zeros & 1U) == 0) {
          ++zeros;
        }
        byte = static_cast<unsigned char>(zeros);
        break;
      }
      case 3:
        break;
      default:
        byte = number % sparse == 0 ? static_cast<unsigned char>(number >> 8U) : 0;
    }
  }
  return bytes;
}

TEST(FastDeflate, AnInflaterGivesBackEveryBlock) {
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    Bytes all;
    Bytes stream;
    FastDeflate deflate(stream);
    for (auto blocks = static_cast<unsigned>(random() % 4); blocks > 0; --blocks) {
      const Bytes block = block_of(random, random() % (round % 50 == 0 ? 200000 : 3000));
      deflate.add(block.data(), block.size());
      all.insert(all.end(), block.begin(), block.end());
    }
    deflate.finish();
    ASSERT_EQ(inflated(stream, all.size()), all) << "round " << round;
    ASSERT_LT(stream.size(), all.size() + all.size() / 1000 + 40) << "noise does not grow";
  }
}

TEST(FastDeflate, CompressesRunsAndDifferences) {
  const Bytes nothing(1 << 20U);
  Bytes stream;
  FastDeflate deflate(stream);
  deflate.add(nothing.data(), nothing.size());
  deflate.finish();
  EXPECT_LT(stream.size(), 2500U);
}

}  // namespace
}  // namespace nerova_zel::test
