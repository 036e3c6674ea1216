#pragma once

#include <string>
#include <vector>

namespace nerova_zel {

/** A frame of a source behind a polarizer, by file and angle in degrees. */
struct SourceFile {
  double angle;
  std::string path;
};

/** "30:frame.png". Throws Failure. */
SourceFile parse_source(const std::string& text);

/**
 * Lines such as "30,frame.png"; semicolons and tabs may stand for the comma, with which angles may have a decimal
 * comma, and texts may be quoted. A first line that names the columns may say that the file comes first. Empty lines
 * and lines that begin with # are passed over. Files lie relative to the list. Throws Failure.
 */
std::vector<SourceFile> read_source_list(const std::string& path);

/** At least four are needed, at four different angles, and none twice: a sentence, or nothing where all is well. */
std::string why_sources_do_not_suffice(const std::vector<SourceFile>& sources);

}  // namespace nerova_zel
