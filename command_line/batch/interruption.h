#pragma once

#include <cstddef>
#include <optional>

namespace nerova_zel {

/**
 * While it lives, the first interruption (Ctrl-C, a request to terminate; on Windows Ctrl-Break and the closing of the
 * console, too) is only noted, so that what was begun can
 * be ended or removed; a second one ends the program at once. One at a time.
 */
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  /** Whether one was noted. Thread-safe. */
  static bool is_requested();

  /**
   * Reads from standard input, as soon as there is anything, at most so many bytes; returns how many, 0 at the end.
   * Nothing when an interruption is noted first, or was. One thread at a time. Throws CodecError.
   */
  static std::optional<std::size_t> read_standard_input(void* room, std::size_t count);

  /** Notes one, as a signal would; threads that wait to read go on. */
  static void request();

  /** Forgets the noted interruption, which was how the command is meant to end. */
  static void forget();

  /** Ends the program as the noted interruption would have; returns when there was none. */
  static void obey();
};

}  // namespace nerova_zel
