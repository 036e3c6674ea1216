#pragma once

namespace nerova_zel {

/**
 * Must come first in a program. Where standard input, output or error is closed, it takes the descriptor, so that no
 * file opened later gets it and receives messages; reading and writing it fails. Writing to a pipe that nobody reads
 * becomes an error like others, and ends the program no more.
 */
void guard_standard_streams();

}  // namespace nerova_zel
