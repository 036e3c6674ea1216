#pragma once

#include <string>
#include <vector>

namespace nerova_zel {

/** What files of a folder are frames. */
struct FolderRules {
  /** They end like headerless ones (.raw, .bin), else like pictures. */
  bool headerless = false;
  /** Those in folders below count, too. */
  bool recursive = false;
};

/** The files that an argument stands for. */
struct FoundFiles {
  std::vector<std::string> paths;
  /** How many were left out because they say that they are outputs of this program. */
  std::size_t outputs = 0;
};

/**
 * A folder stands for those of its files that end like frames, by name; a pattern with * and ? in the last part of the
 * path, unless a file has that very name, for the files that fit, by name; anything else for itself, whether it exists
 * or not. Throws Failure if there are none, and for an output that is named.
 */
FoundFiles expand_argument(const std::string& argument, const FolderRules& rules);

/** The files that fit a pattern, as above; anything else stands for itself. Throws Failure if none fits. */
std::vector<std::string> expand_pattern(const std::string& argument);

/** Throws Failure for a file that says that it is an output of this program, which would be taken for a frame. */
void refuse_output(const std::string& path);

}  // namespace nerova_zel
