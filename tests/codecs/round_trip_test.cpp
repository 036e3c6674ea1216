#include <gtest/gtest.h>
#include <png.h>

#include <cstring>

#include "file_bytes.h"
#include "file_set.h"
#include "file_texts.h"
#include "pgm_file.h"
#include "png_file.h"
#include "samples_of_files.h"
#include "tiff_file.h"
#include "tiff_memory.h"

namespace nerova_zel::test {
namespace {

constexpr Compression both[] = {Compression::fast, Compression::small};

struct Size {
  int width;
  int height;
};

constexpr Size sizes[] = {{1, 1}, {2, 3}, {640, 5}, {257, 311}};

/** Calls check(file bytes, pixels, bits) for 8- and 16-bit images of several sizes. */
template <class Encode>
void check_grey(const Encode& encode, const char* software_key) {
  for (const Size size : sizes) {
    for (const Compression compression : both) {
      const auto wide = noisy_slope(size.width, size.height, 16);
      const auto narrow = noisy_slope(size.width, size.height, 8);
      const Bytes narrow_bytes = bytes_of(narrow);
      const Bytes wide_file = encode(view_of(wide, size.width, size.height), compression);
      const GreyPage wide_page = page_of(wide_file);
      const GreyPage narrow_page = page_of(encode(view_of(narrow_bytes, size.width, size.height), compression));
      EXPECT_EQ(wide_page.pixels, wide);
      EXPECT_EQ(wide_page.facts.stored_bits, 16);
      EXPECT_EQ(narrow_page.pixels, narrow);
      EXPECT_EQ(narrow_page.facts.stored_bits, 8);
      EXPECT_EQ(narrow_page.facts.width, size.width);
      EXPECT_EQ(narrow_page.facts.height, size.height);
      EXPECT_EQ(wide_file, encode(view_of(wide, size.width, size.height), compression)) << "the same bytes each time";
      bool found = false;
      for (const TextEntry& entry : PictureFile(wide_file, "FILE").facts(0).texts) {
        found = found || (entry.key == software_key && entry.text == "a 12\xC2\xB0 turn");
      }
      EXPECT_TRUE(found) << "a text in UTF-8";
    }
  }
}

TEST(RoundTrip, GreyPng) {
  check_grey(
      [](const ImageView& view, Compression compression) {
        return encode_png(view, {{"Title", "plain"}, {"Software", "a 12\xC2\xB0 turn"}}, compression);
      },
      "Software");
}

TEST(RoundTrip, GreyTiff) {
  check_grey(
      [](const ImageView& view, Compression compression) {
        return encode_tiff(view, {"a 12\xC2\xB0 turn", "program", {}}, compression);
      },
      "ImageDescription");
}

TEST(RoundTrip, TiffSaysTheGreatestSample) {
  const auto pixels = noisy_slope(9, 9, 12);
  const PageFacts facts = page_of(encode_tiff(view_of(pixels, 9, 9), {"", "", 4095})).facts;
  EXPECT_EQ(facts.greatest, 4095);
  EXPECT_EQ(declared_depth(facts).bits, 12);
  EXPECT_TRUE(facts.texts.empty());
  EXPECT_EQ(declared_depth(page_of(encode_tiff(view_of(pixels, 9, 9))).facts).bits, 16);
}

TEST(RoundTrip, ATextSaysTheBitDepthWhereThereIsRoom) {
  const std::pair<const char*, int> cases[] = {{"1", 1}, {"7", 7}, {"8", 8},     {"9", 0},
                                               {"0", 0}, {"", 0},  {"8 bits", 0}};
  for (const auto& [text, bits] : cases) {
    PageFacts facts;
    facts.stored_bits = 8;
    facts.texts = {{bit_depth_key, text}};
    EXPECT_EQ(declared_depth(facts).bits, bits == 0 ? 8 : bits) << text;
    EXPECT_EQ(declared_depth(facts).is_stated, bits != 0) << text;
  }
}

TEST(RoundTrip, TheGreatestValueSaysTheBitDepthUnlessItIsFullScale) {
  struct Case {
    int stored_bits;
    int greatest;
    int bits;
    bool is_stated;
  };
  for (const Case& one : {Case{8, 1, 1, true}, Case{8, 2, 2, true}, Case{8, 255, 8, false}, Case{16, 255, 8, true},
                          Case{16, 65534, 16, true}, Case{16, 65535, 16, false}, Case{15, 32767, 15, true}}) {
    PageFacts facts;
    facts.stored_bits = one.stored_bits;
    facts.greatest = one.greatest;
    EXPECT_EQ(declared_depth(facts).bits, one.bits) << one.greatest;
    EXPECT_EQ(declared_depth(facts).is_stated, one.is_stated) << one.greatest;
  }
}

TEST(RoundTrip, PngTakesNoFloatsAndNoTwoChannels) {
  const std::vector<float> floats(4);
  EXPECT_NE(error_of([&] { encode_png({Element::float32, 2, 2, 1, floats.data()}); }), "");
  EXPECT_NE(error_of([&] { encode_png(view_of(noisy_slope(4, 2, 8), 2, 2, 2)); }), "");
}

TEST(RoundTrip, ColourPngAndTiff) {
  const int width = 41;
  const int height = 33;
  const Bytes pixels = bytes_of(noisy_slope(3 * width, height, 8));
  for (const Compression compression : both) {
    const Bytes png = encode_png(view_of(pixels, width, height, 3), {}, compression);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(png_image_begin_read_from_memory(&image, png.data(), png.size()), 0);
    image.format = PNG_FORMAT_RGB;
    Bytes read(PNG_IMAGE_SIZE(image));
    ASSERT_NE(png_image_finish_read(&image, nullptr, read.data(), 0, nullptr), 0);
    EXPECT_EQ(read, pixels);

    const Bytes tiff = encode_tiff(view_of(pixels, width, height, 3), {}, compression);
    MemorySource source(tiff);
    const TiffMemory file(source);
    std::vector<std::uint32_t> raster(static_cast<std::size_t>(width) * height);
    ASSERT_EQ(TIFFReadRGBAImageOriented(file.tiff(), width, height, raster.data(), ORIENTATION_TOPLEFT, 1), 1);
    for (std::size_t i = 0; i < raster.size(); ++i) {
      ASSERT_EQ(TIFFGetR(raster[i]), pixels[3 * i]);
      ASSERT_EQ(TIFFGetG(raster[i]), pixels[3 * i + 1]);
      ASSERT_EQ(TIFFGetB(raster[i]), pixels[3 * i + 2]);
    }
  }
}

TEST(RoundTrip, FloatTiffKeepsEveryBit) {
  const std::vector<float> values = {0.0F, -0.0F, 1.5F, -3e38F, 1e-45F, 0.1F};
  const Bytes tiff = encode_tiff({Element::float32, 3, 2, 1, values.data()});
  MemorySource source(tiff);
  const TiffMemory file(source);
  std::vector<float> read(values.size());
  ASSERT_EQ(TIFFReadEncodedStrip(file.tiff(), 0, read.data(), 24), 24);
  // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): bits are what is compared
  EXPECT_EQ(std::memcmp(read.data(), values.data(), 24), 0);
  EXPECT_NE(error_of_reading(tiff).find("floating-point"), std::string::npos);
}

TEST(RoundTrip, PgmOfOneAndManyImages) {
  const auto first = noisy_slope(5, 4, 8);
  const auto second = noisy_slope(3, 7, 12);
  Bytes file = encode_pgm(first.data(), 5, 4, 255);
  const Bytes more = encode_pgm(second.data(), 3, 7, 4095);
  file.insert(file.end(), more.begin(), more.end());
  file.push_back('\n');  // what other programs leave behind
  EXPECT_EQ(PictureFile(file, "FILE").page_count(), 2U);
  EXPECT_EQ(page_of(file, 0).pixels, first);
  EXPECT_EQ(page_of(file, 1).pixels, second);
  EXPECT_EQ(declared_depth(page_of(file, 1).facts).bits, 12);
  const std::string commented = "P5 # a camera\n# more\n2\t1 # a row\n255\n\x01\xFF";
  EXPECT_EQ(page_of({commented.begin(), commented.end()}).pixels, (std::vector<std::uint16_t>{1, 255}));
  for (const std::size_t length : {250U, 5000U, 70000U}) {
    const std::string story = "P5\n#" + std::string(length, '#') + "\n2 1 255\n\x01\xFF";
    EXPECT_EQ(page_of({story.begin(), story.end()}).pixels, (std::vector<std::uint16_t>{1, 255})) << length;
  }
  const std::uint16_t smallest = 1;
  EXPECT_EQ(page_of(encode_pgm(&smallest, 1, 1, 1)).pixels, std::vector<std::uint16_t>{1});
}

Bytes npy(const std::string& header, const std::string& elements) {
  const std::string file = header + elements;
  return {file.begin(), file.end()};
}

TEST(RoundTrip, NpyOfOneAndManyImages) {
  const std::string header = npy_header(Element::uint16, {2, 1, 3});
  EXPECT_EQ(header.size() % 64, 0U);
  EXPECT_EQ(header.substr(0, 72), std::string("\x93NUMPY\x01\x00\x76\x00", 10) +
                                      "{'descr': '<u2', 'fortran_order': False, 'shape': (2, 1, 3), }");
  const Bytes file = npy(header, std::string("\x01\x02\x03\x00\x05\x00\x07\x00\x09\x00\x0B\x01", 12));
  EXPECT_EQ(PictureFile(file, "FILE").page_count(), 2U);
  EXPECT_EQ(page_of(file, 0).pixels, (std::vector<std::uint16_t>{513, 3, 5}));
  EXPECT_EQ(page_of(file, 1).pixels, (std::vector<std::uint16_t>{7, 9, 267}));
  EXPECT_EQ(page_of(npy(npy_header(Element::uint8, {1, 2}), "\x07\xFF")).pixels, (std::vector<std::uint16_t>{7, 255}));

  const std::string text = "{\"shape\":(1,2,),'fortran_order':False,'descr':'>u2'}";
  const std::string other =
      std::string("\x93NUMPY\x02\x00", 8) + static_cast<char>(text.size()) + std::string(3, '\0') + text;
  EXPECT_EQ(page_of(npy(other, std::string("\x01\x02\x00\x03", 4))).pixels, (std::vector<std::uint16_t>{258, 3}));

  const Bytes floats = npy(npy_header(Element::float32, {2}), std::string("\x00\x00\xC0\x3F\x00\x00\x00\x80", 8));
  const NpyArray array = parse_npy(floats, "FILE");
  EXPECT_EQ(array.shape, (std::vector<std::size_t>{2}));
  EXPECT_EQ(npy_floats(floats, array), (std::vector<float>{1.5F, -0.0F}));
}

TEST(RoundTrip, NpyThatIsNotRead) {
  const auto refusal = [](const std::string& text) {
    return error_of_reading(
        npy(std::string("\x93NUMPY\x01\x00", 8) + static_cast<char>(text.size()) + '\0' + text, "1234"));
  };
  EXPECT_EQ(refusal("{'descr': '|u1', 'fortran_order': False, 'shape': (2, 2)}"), "");
  EXPECT_NE(refusal("{'descr': '|u1', 'fortran_order': True, 'shape': (2, 2)}").find("Fortran"), std::string::npos);
  EXPECT_NE(refusal("{'descr': '<i2', 'fortran_order': False, 'shape': (1, 2)}").find("<i2"), std::string::npos);
  EXPECT_NE(refusal("{'descr': '|u1', 'fortran_order': False, 'shape': (4,)}").find("dimensions"), std::string::npos);
  for (const char* broken : {"", "{", "{'descr': '|u1'}", "{'descr': '|u1', 'fortran_order': False, 'shape': (2, 3)}",
                             "{'descr': '|u1', 'fortran_order': No, 'shape': (2, 2)}",
                             "{'descr': 'u1', 'fortran_order': False, 'shape': (2, 2)}",
                             "{'descr': '|u1', 'fortran_order': False, 'shape': (0, 2)}",
                             "{'descr': '|u1', 'fortran_order': False, 'shape': (2, -2)}",
                             "{'descr': '|u1', 'fortran_order': False, 'shape': (4294967296, 4294967296)}",
                             "{'descr': '|u1', 'fortran_order': False, 'shape': (2, 99999999999999999999)}"}) {
    EXPECT_NE(refusal(broken), "") << broken;
  }
}

// What a writer says of a file is found without reading its pixels, of whatever kind they are.
TEST(Texts, ComeBackFromEveryKindOfFile) {
  const std::vector<TextEntry> texts = {{"Software", "program 1"}, {"Source", "a\xC3\xA4.png: 1"}, {"Options", "none"}};
  const std::vector<float> values(6, 1.0F);
  const Bytes colours(18, 7);
  const Folder folder;
  const auto put = [&](const std::string& name, const Bytes& bytes) {
    FileSet set;
    set.write(folder / name, bytes);
    set.commit();
  };
  const std::string json = texts_to_json(texts);
  put("a.png", encode_png(view_of(colours, 3, 2, 3), texts));
  put("a.tiff", encode_tiff({Element::float32, 3, 2, 1, values.data()}, tiff_tags(texts)));
  put("a.npy.json", {json.begin(), json.end()});
  for (const char* name : {"a.png", "a.tiff", "a.npy", "a.npy.json"}) {
    const std::vector<TextEntry> found = read_texts(folder / name);
    for (const TextEntry& entry : texts) {
      EXPECT_EQ(find_text(found, entry.key), entry.text) << name << ", " << entry.key;
    }
    EXPECT_FALSE(find_text(found, "Sour")) << name;
  }
  const Bytes whole = read_bytes((folder / "a.tiff").string());
  for (std::size_t length = 0; length < whole.size(); length += 7) {
    put("cut.tiff", {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)});
    for (const TextEntry& entry : read_texts(folder / "cut.tiff")) {
      EXPECT_TRUE(entry.text == "program 1" || entry.key == "ImageDescription") << length;
    }
  }
  EXPECT_TRUE(read_texts(folder / "none.png").empty());
  Bytes other = read_bytes((folder / "a.png").string());
  other[1] = 'M';
  put("other.png", other);
  EXPECT_TRUE(read_texts(folder / "other.png").empty());
  put("own.json", {json.begin(), json.end()});
  EXPECT_TRUE(read_texts(folder / "own.json").empty()) << "beside no array";
}

}  // namespace
}  // namespace nerova_zel::test
