// A batch as a program for nothing else would do it: frames of Mono12 from a file to azimuth and degree as NumPy
// arrays. What the tool's batches are measured against. Usage: by_hand_batch FILE WIDTH HEIGHT FIRST END FOLDER [TEXTS]
// With TEXTS, the path of a small file, that is written beside each array too, as the tool says of each how it was
// made.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "nerova_zel/polarization_processor.hpp"

namespace {

void require(bool good, const char* what) {
  if (!good) {
    std::perror(what);
    std::exit(1);
  }
}

/** The head of an array of 16-bit numbers: 128 bytes. */
std::string head_of(int width, int height) {
  std::string text = "{'descr': '<u2', 'fortran_order': False, 'shape': (" + std::to_string(height) + ", " +
                     std::to_string(width) + "), }";
  text.resize(117, ' ');
  return std::string("\x93NUMPY\x01\x00\x76\x00", 10) + text + '\n';
}

std::string text_of(const char* path) {
  std::FILE* const file = std::fopen(path, "rb");
  require(file != nullptr, path);
  std::string text(4096, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), file));
  std::fclose(file);
  return text;
}

void write(const std::string& path, const std::string& head, const std::vector<std::uint16_t>& values) {
  std::FILE* const file = std::fopen(path.c_str(), "wb");
  require(file != nullptr, path.c_str());
  std::setvbuf(file, nullptr, _IONBF, 0);
  const bool whole = std::fwrite(head.data(), 1, head.size(), file) == head.size() &&
                     std::fwrite(values.data(), 2, values.size(), file) == values.size();
  require(std::fclose(file) == 0 && whole, path.c_str());
}

void run(int argc, char** argv) {
  const int width = std::atoi(argv[2]);
  const int height = std::atoi(argv[3]);
  const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const std::string head = head_of(width, height);
  const std::string texts = argc == 8 ? text_of(argv[7]) : "";
  const nerova_zel::Processor processor;
  std::vector<std::uint16_t> pixels(count);
  std::vector<std::uint16_t> azimuth(count);
  std::vector<std::uint16_t> degree(count);
  std::FILE* const file = std::fopen(argv[1], "rb");
  require(file != nullptr, argv[1]);
  std::setvbuf(file, nullptr, _IONBF, 0);
  require(std::fseek(file, static_cast<long>(std::atol(argv[4]) * static_cast<long>(2 * count)), SEEK_SET) == 0,
          argv[1]);
  for (long number = std::atol(argv[4]); number < std::atol(argv[5]); ++number) {
    require(std::fread(pixels.data(), 2, count, file) == count, argv[1]);
    nerova_zel::Outputs outputs;
    outputs.azimuth = azimuth;
    outputs.degree_of_linear_polarization = degree;
    processor.transform({pixels, width, height, 0, 0, nerova_zel::Phase::degrees_90, 12}, outputs);
    const std::string stem = std::string(argv[6]) + "/run_" + std::to_string(number);
    write(stem + "_azimuth.npy", head, azimuth);
    write(stem + "_dolp.npy", head, degree);
    if (argc == 8) {
      write(stem + "_azimuth.npy.json", texts, {});
      write(stem + "_dolp.npy.json", texts, {});
    }
  }
  std::fclose(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 7 && argc != 8) {
    std::fprintf(stderr, "usage: by_hand_batch FILE WIDTH HEIGHT FIRST END FOLDER [TEXTS]\n");
    return 2;
  }
  try {
    run(argc, argv);
    return 0;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
}
