#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "image.h"
#include "tiff_file.h"

namespace nerova_zel {

// Texts by key that files carry beside their pixels, such as how they were made. In PNG each is a chunk. In TIFF
// "Software" is a tag, and ImageDescription has a line "Key: text" for each other. An array has them as a JSON object
// in a file beside it. Keys have no colon, texts are one line.

/** The text of a key, be it an entry or a line of an ImageDescription. */
std::optional<std::string> find_text(const std::vector<TextEntry>& texts, const std::string& key);

/** The tags of a TIFF file with these texts. */
TiffTags tiff_tags(const std::vector<TextEntry>& texts);

/** The JSON document of these texts. */
std::string texts_to_json(const std::vector<TextEntry>& texts);

/** The file that has the texts of an array: "a.npy.json" of "a.npy". */
std::filesystem::path texts_file_of_array(const std::filesystem::path& array);

/**
 * The texts of a PNG, TIFF or NPY file, or of one beside an array, told apart by their names, of any pixels. Only what
 * is needed is read of it: in PNG texts before the pixels, in TIFF those of the first page. None of what cannot be
 * read, or is damaged.
 */
std::vector<TextEntry> read_texts(const std::filesystem::path& path);

}  // namespace nerova_zel
