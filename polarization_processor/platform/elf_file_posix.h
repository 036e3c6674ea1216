#pragma once

namespace nerova_zel {

/**
 * Whether a library file holds all that its headers promise. The loader maps a truncated one without a complaint and
 * kills the process on the first page that is missing. A file too short for a header is not whole either. True for a
 * missing file and for what is no library at all: the loader refuses that.
 */
bool is_whole_library(const char* path) noexcept;

}  // namespace nerova_zel
