#pragma once

namespace nerova_zel {

/**
 * While it lives, the first interruption (Ctrl-C, or a request to terminate) is only noted, so that what was begun can
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
   * Waits until a descriptor can be read from, or is at its end; false when an interruption is noted first, or was. At
   * once true when no object lives. Thread-safe.
   */
  static bool wait_to_read(int descriptor);

  /** Notes one, as a signal would; threads that wait to read go on. */
  static void request();

  /** Forgets the noted interruption, which was how the command is meant to end. */
  static void forget();

  /** Ends the program as the noted interruption would have; returns when there was none. */
  static void obey();
};

}  // namespace nerova_zel
