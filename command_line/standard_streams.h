#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace nerova_zel {

/**
 * Must come first in a program. Where standard input, output or error is closed, it takes the descriptor, so that no
 * file opened later gets it and receives messages; reading and writing it fails. Writing to a pipe that nobody reads
 * becomes an error like others, and ends the program no more. On Windows no stream changes the ends of lines.
 */
void guard_standard_streams();

/** Whether a stream leads to a terminal that a line can be drawn on anew. */
bool is_terminal(std::FILE* stream);

/** Columns of a terminal; 0 where that is not known. */
std::size_t terminal_width(std::FILE* stream);

/** Writes a text in UTF-8, which a console on Windows shows whatever its code page. False where it fails, with errno.
 */
bool write_text(std::FILE* stream, const std::string& text);

}  // namespace nerova_zel
