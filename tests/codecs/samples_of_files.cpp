#include "samples_of_files.h"

#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <random>

#include "file_bytes.h"

namespace nerova_zel::test {

std::vector<std::uint16_t> noisy_slope(int width, int height, int bits) {
  std::mt19937 random(static_cast<unsigned>(width * 31 + height * 7 + bits));
  std::vector<std::uint16_t> pixels;
  const int full = (1 << bits) - 1;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int slope = full * (x + y) / (width + height);
      pixels.push_back(static_cast<std::uint16_t>(
          std::clamp(slope + static_cast<int>(random() % static_cast<unsigned>(full / 4 + 2)), 0, full)));
    }
  }
  return pixels;
}

Bytes bytes_of(const std::vector<std::uint16_t>& pixels) { return {pixels.begin(), pixels.end()}; }

ImageView view_of(const std::vector<std::uint16_t>& pixels, int width, int height, int channels) {
  return {Element::uint16, width, height, channels, pixels.data()};
}

ImageView view_of(const Bytes& pixels, int width, int height, int channels) {
  return {Element::uint8, width, height, channels, pixels.data()};
}

namespace {

/** One row of samples packed as both formats have it; 16-bit samples high byte first, or as the machine has them. */
Bytes packed_row(const std::uint16_t* samples, std::size_t count, int bits, bool native) {
  Bytes row((count * static_cast<std::size_t>(bits) + 7) / 8);
  for (std::size_t i = 0; i < count; ++i) {
    if (bits == 16) {
      row[2 * i + (native ? 1 : 0)] = static_cast<unsigned char>(samples[i] >> 8U);
      row[2 * i + (native ? 0 : 1)] = static_cast<unsigned char>(samples[i]);
      continue;
    }
    for (int bit = 0; bit < bits; ++bit) {
      const std::size_t at = i * static_cast<std::size_t>(bits) + static_cast<std::size_t>(bit);
      if ((samples[i] >> (bits - 1 - bit) & 1) != 0) {
        row[at / 8] |= static_cast<unsigned char>(0x80U >> at % 8);
      }
    }
  }
  return row;
}

Bytes bytes_of(const std::filesystem::path& path) { return read_bytes(path.string()); }

void write_tiff_page(TIFF* tiff, const FileKind& kind, int subfile_type, const std::vector<std::uint16_t>& samples) {
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kind.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kind.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.colour);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, kind.compression);
  TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, kind.format);
  if (kind.orientation != 0) {
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, kind.orientation);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.channels);
  }
  TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, subfile_type);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  if (kind.predictor != 1) {
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, kind.predictor);
  }
  if (kind.greatest_is_number) {
    TIFFSetField(tiff, TIFFTAG_SMAXSAMPLEVALUE, static_cast<double>(kind.greatest));
  } else if (kind.greatest != 0) {
    TIFFSetField(tiff, TIFFTAG_MAXSAMPLEVALUE, kind.greatest);
  }
  if (kind.colour == PHOTOMETRIC_PALETTE) {
    std::vector<std::uint16_t> map(std::size_t{1} << static_cast<unsigned>(kind.bits));
    TIFFSetField(tiff, TIFFTAG_COLORMAP, map.data(), map.data(), map.data());
  }
  const auto width = static_cast<std::size_t>(kind.width) * static_cast<std::size_t>(kind.channels);
  if (!kind.tiled) {
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 5);
    for (int y = 0; y < kind.height; ++y) {
      Bytes row = packed_row(samples.data() + static_cast<std::size_t>(y) * width, width, kind.bits, true);
      ASSERT_EQ(TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y)), 1);
    }
    return;
  }
  constexpr int edge = 16;
  TIFFSetField(tiff, TIFFTAG_TILEWIDTH, edge);
  TIFFSetField(tiff, TIFFTAG_TILELENGTH, edge);
  for (int y0 = 0; y0 < kind.height; y0 += edge) {
    for (int x0 = 0; x0 < kind.width; x0 += edge) {
      Bytes tile;
      for (int y = y0; y < y0 + edge; ++y) {
        std::vector<std::uint16_t> row(edge, 1);
        for (int x = x0; x < std::min(x0 + edge, kind.width) && y < kind.height; ++x) {
          row[static_cast<std::size_t>(x - x0)] =
              samples[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)];
        }
        const Bytes packed = packed_row(row.data(), row.size(), kind.bits, true);
        tile.insert(tile.end(), packed.begin(), packed.end());
      }
      ASSERT_GT(TIFFWriteTile(tiff, tile.data(), static_cast<std::uint32_t>(x0), static_cast<std::uint32_t>(y0), 0, 0),
                0);
    }
  }
}

}  // namespace

Bytes odd_png(const FileKind& kind, const std::vector<std::uint16_t>& samples) {
  const Folder folder;
  const std::string path = (folder / "odd.png").string();
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(kind.width), static_cast<png_uint_32>(kind.height), kind.bits,
               kind.colour, kind.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  if (kind.significant_bits != 0) {
    png_color_8 significant{};
    significant.gray = static_cast<png_byte>(kind.significant_bits);
    png_set_sBIT(png, info, &significant);
  }
  const png_color colours[2] = {{0, 0, 0}, {255, 255, 255}};
  if (kind.colour == PNG_COLOR_TYPE_PALETTE) {
    png_set_PLTE(png, info, colours, 2);
  }
  png_write_info(png, info);
  const auto width = static_cast<std::size_t>(kind.width) * static_cast<std::size_t>(kind.channels);
  std::vector<Bytes> rows(static_cast<std::size_t>(kind.height));
  std::vector<png_bytep> pointers(rows.size());
  for (std::size_t y = 0; y < rows.size(); ++y) {
    rows[y] = packed_row(samples.data() + y * width, width, kind.bits, false);
    pointers[y] = rows[y].data();
  }
  png_write_image(png, pointers.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
  return bytes_of(path);
}

Bytes odd_tiff(const FileKind& kind, const std::vector<std::uint16_t>& samples) {
  const Folder folder;
  const std::string path = (folder / "odd.tiff").string();
  TIFF* const tiff = TIFFOpen(path.c_str(), kind.big_endian ? "wb" : "wl");
  std::vector<std::uint16_t> page = samples;
  for (const int subfile_type : kind.subfile_types) {
    write_tiff_page(tiff, kind, subfile_type, page);
    TIFFWriteDirectory(tiff);
    std::rotate(page.begin(), page.begin() + 1, page.end());
  }
  TIFFClose(tiff);
  return bytes_of(path);
}

GreyPage page_of(const Bytes& bytes, std::size_t page) {
  GreyPage room;
  PictureFile(bytes, "FILE").read(page, room);
  return room;
}

std::string error_of(const std::function<void()>& action) {
  try {
    action();
  } catch (const CodecError& error) {
    std::string sentence = error.what();
    EXPECT_EQ(sentence.find('\n'), std::string::npos) << sentence;
    EXPECT_NE(sentence.back(), '.') << sentence;
    return sentence;
  }
  return "";
}

std::string error_of_reading(const Bytes& bytes) {
  std::string sentence = error_of([&] {
    const PictureFile file(bytes, "FILE", 1U << 20U);
    GreyPage page;
    for (std::size_t number = 0; number < file.page_count(); ++number) {
      file.read(number, page);
      EXPECT_EQ(page.pixels.size(),
                static_cast<std::size_t>(page.facts.width) * static_cast<std::size_t>(page.facts.height));
    }
  });
  EXPECT_TRUE(sentence.empty() || sentence.rfind("FILE ", 0) == 0) << sentence;
  return sentence;
}

}  // namespace nerova_zel::test
