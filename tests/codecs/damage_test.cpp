// Files that are cut short, damaged, or lie about their size: one sentence each, nothing worse.

#include <gtest/gtest.h>

#include <fstream>

#include "file_bytes.h"
#include "pgm_file.h"
#include "png_file.h"
#include "samples_of_files.h"
#include "tiff_file.h"

namespace nerova_zel::test {
namespace {

constexpr int width = 7;
constexpr int height = 5;

std::vector<std::uint16_t> pixels() { return noisy_slope(width, height, 16); }

struct Sample {
  const char* name;
  Bytes bytes;
  bool checked;  ///< damage to pixels is found by a checksum
};

std::vector<Sample> small_files() {
  const auto samples = pixels();
  FileKind tiled;
  tiled.bits = 16;
  tiled.colour = 1;
  tiled.compression = 5;
  tiled.tiled = true;
  tiled.subfile_types = {0, 0};
  const std::string header = npy_header(Element::uint16, {1, height, width});
  Bytes npy(header.begin(), header.end());
  const auto* first = reinterpret_cast<const unsigned char*>(samples.data());
  npy.insert(npy.end(), first, first + 2 * samples.size());
  return {{"PNG", encode_png(view_of(samples, width, height), {{"Software", "text"}}), true},
          {"TIFF", encode_tiff(view_of(samples, width, height), {"text", "", 65535}), false},
          {"tiled TIFF", odd_tiff(tiled, noisy_slope(21, 19, 16)), false},
          {"PGM", encode_pgm(samples.data(), width, height, 65535), false},
          {"NPY", npy, false}};
}

TEST(Damage, EveryTruncationGivesASentence) {
  for (const Sample& sample : small_files()) {
    const auto original = page_of(sample.bytes).pixels;
    ASSERT_EQ(error_of_reading(sample.bytes), "") << sample.name;
    for (std::size_t length = 0; length < sample.bytes.size(); ++length) {
      const Bytes part(sample.bytes.begin(), sample.bytes.begin() + static_cast<std::ptrdiff_t>(length));
      // libtiff goes on without a text that is missing at the end.
      if (error_of_reading(part).empty()) {
        EXPECT_TRUE(std::string(sample.name) == "TIFF" && length + 16 > sample.bytes.size())
            << sample.name << " of " << length << " bytes";
        EXPECT_EQ(page_of(part).pixels, original);
      }
    }
  }
}

TEST(Damage, AByteWithOtherBitsGivesASentenceOrAPicture) {
  for (const Sample& sample : small_files()) {
    const auto original = page_of(sample.bytes).pixels;
    int refused = 0;
    for (std::size_t at = 0; at < sample.bytes.size(); ++at) {
      for (const unsigned bits : {0x01U, 0x80U, 0xFFU}) {
        Bytes bytes = sample.bytes;
        bytes[at] = static_cast<unsigned char>(bytes[at] ^ bits);
        if (!error_of_reading(bytes).empty()) {
          ++refused;
        } else if (sample.checked) {
          EXPECT_EQ(page_of(bytes).pixels, original) << sample.name << ", byte " << at;
        }
      }
    }
    EXPECT_GT(refused, 10) << sample.name;
  }
}

TEST(Damage, NoMemoryIsTakenForSizesThatCannotBe) {
  Bytes png = encode_png(view_of(pixels(), width, height));
  const std::string pgm = "P5 20000 20000 65535 ";
  EXPECT_EQ(error_of_reading({pgm.begin(), pgm.end()}), "FILE has 20000 x 20000 pixels, and at most 1048576 are read");
  FileKind kind;
  kind.width = 1024;
  kind.height = 1025;
  kind.colour = 1;
  EXPECT_EQ(error_of_reading(odd_tiff(kind, noisy_slope(1024, 1025, 8))),
            "FILE has 1024 x 1025 pixels, and at most 1048576 are read");
  kind.colour = 0;
  EXPECT_EQ(error_of_reading(odd_png(kind, noisy_slope(1024, 1025, 8))),
            "FILE has 1024 x 1025 pixels, and at most 1048576 are read");
}

TEST(Damage, TheSentenceHoldsTheReasonThatTheFormatsLibraryGives) {
  const std::string start = "FILE is damaged or cut short: its pixels cannot be decoded (";
  for (const Sample& sample : small_files()) {
    const std::string sentence = error_of_reading({sample.bytes.begin(), sample.bytes.end() - 60});
    EXPECT_EQ(sentence.rfind(start, 0) == 0 && sentence.size() > start.size() + 10,
              sample.bytes[0] != 'P' && sample.name != std::string("NPY"))
        << sentence;
  }
}

TEST(Damage, FilesThatAreNoneOfTheFormats) {
  EXPECT_EQ(error_of_reading({}), "FILE is empty");
  EXPECT_EQ(error_of_reading({'G', 'I', 'F', '8'}), "FILE is not a PNG, TIFF, binary PGM or NPY file");
  EXPECT_EQ(error_of_reading({'I', 'I', '*', 0}).find("FILE is not a PNG"), std::string::npos);
  const Folder folder;
  EXPECT_EQ(error_of([&] { read_bytes((folder / "").string()); }), (folder / "").string() + " is a directory");
  const std::string empty = (folder / "empty").string();
  std::ofstream{empty};
  EXPECT_EQ(error_of([&] { PictureFile{empty}; }), empty + " is empty");
  const std::string missing = (folder / "missing").string();
  EXPECT_EQ(error_of([&] { PictureFile{missing}; }), "cannot read " + missing + ": No such file or directory");
}

}  // namespace
}  // namespace nerova_zel::test
