#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "file_set.h"
#include "frame_pictures.h"
#include "processor/outputs.h"
#include "processor/sensor_transformer.h"

namespace nerova_zel {

enum class FileFormat { png, tiff, npy };

/** What a transform is to write: what the library computes, and pictures for looking at. */
struct Products {
  std::set<Output> outputs;
  std::set<PictureKind> pictures;

  /** The outputs that must be computed, those for the pictures included. */
  std::set<Output> needed_outputs() const;
};

/** Every name that parse_products takes but "all". */
std::vector<std::string> product_names();

/** A list such as "azimuth,dolp", or "all": the library's outputs and all pictures that this program can make. Throws
 * Failure. */
Products parse_products(const std::string& text);

/** One file of a frame's products. */
struct OutputFile {
  std::variant<Output, PictureKind> content;
  /** What its name ends in, behind the frame's: "_power.png". */
  std::string ending;
  /** Which of the Stokes pair it holds, or -1 for all that there is. */
  int channel = -1;
  /** Of which plane, by its place among the colours, or all_planes. A frame without colours is plane 0. */
  int plane = 0;
};

constexpr int all_planes = -1;

/** What a file holds, by the name that parse_products takes. */
std::string product_name(const OutputFile& file);

/** The files of the products; pictures for looking at are PNG whatever the format. */
std::vector<OutputFile> output_files(const Products& products, FileFormat format, AzimuthStyle style);

/** Throws Failure if there is a file of that name; `remedy` ends the sentence. */
void refuse_existing(const std::filesystem::path& path, const std::string& remedy);

/** Commits, unless an interruption was noted: then it throws Failure. */
void commit_unless_interrupted(FileSet& files);

/** A PNG file. Throws CodecError. */
Bytes encode_drawing(const Picture& picture, const std::vector<TextEntry>& texts = {});

class SensorPictures;

/**
 * Puts a file into `set`, with its texts; those of an array go into a file beside it. Throws Failure, CodecError.
 * Several threads may each write one at the same time, of pictures only one.
 */
void write_output_file(FileSet& set, const std::filesystem::path& path, const OutputFile& file,
                       const std::vector<TextEntry>& texts, const SensorTransformer& transformer,
                       SensorPictures& pictures);

}  // namespace nerova_zel
