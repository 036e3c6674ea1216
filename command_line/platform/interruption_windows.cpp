#include <io.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

#include "batch/interruption.h"
#include "codec_error.h"

namespace nerova_zel {

namespace {

/** The control event that was noted; none_noted where none was. Ctrl-C is 0. */
constexpr int none_noted = -1;
std::atomic<int> noted{none_noted};

/**
 * Reads standard input in a thread of its own, because no reader of a pipe or console can wait for anything else at the
 * same time. Never destroyed: the thread may wait for input when the program ends.
 */
class InputReader {
 public:
  static InputReader& get() {
    static auto& reader = *new InputReader;
    return reader;
  }

  /** As Interruption::read_standard_input. */
  std::optional<std::size_t> read(void* room, std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (is_empty() && state_ != State::reading) {
      state_ = State::reading;
      wanted_ = std::min(count, buffer_.size());
      changed_.notify_all();
    }
    changed_.wait(lock, [this] { return noted != none_noted || state_ == State::idle; });
    if (noted != none_noted) {
      return std::nullopt;
    }
    if (error_ != ERROR_SUCCESS) {
      throw CodecError(CodecError::Reason::not_readable,
                       "cannot read standard input: " + std::system_category().message(static_cast<int>(error_)));
    }
    const std::size_t taken = std::min(count, present_ - taken_);
    if (taken > 0) {
      std::memcpy(room, buffer_.data() + taken_, taken);
      taken_ += taken;
    }
    return taken;
  }

  /** Lets the reader see what was noted. */
  void wake() {
    const std::lock_guard<std::mutex> lock(mutex_);
    changed_.notify_all();
  }

 private:
  InputReader() {
    std::thread([this] { work(); }).detach();
  }

  bool is_empty() const { return taken_ == present_; }

  [[noreturn]] void work() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      changed_.wait(lock, [this] { return state_ == State::reading; });
      const auto count = static_cast<DWORD>(wanted_);
      constexpr int standard_input = 0;
      const auto input = reinterpret_cast<HANDLE>(_get_osfhandle(standard_input));
      lock.unlock();
      DWORD got = 0;
      const bool done = ReadFile(input, buffer_.data(), count, &got, nullptr) != FALSE;
      const DWORD reason = done ? static_cast<DWORD>(ERROR_SUCCESS) : GetLastError();
      lock.lock();
      // A pipe without a writer is at its end.
      error_ = reason == ERROR_BROKEN_PIPE || reason == ERROR_HANDLE_EOF ? static_cast<DWORD>(ERROR_SUCCESS) : reason;
      taken_ = 0;
      present_ = done ? got : 0;
      state_ = State::idle;
      changed_.notify_all();
    }
  }

  enum class State { idle, reading };

  std::mutex mutex_;
  std::condition_variable changed_;
  State state_ = State::idle;
  std::array<unsigned char, std::size_t{1} << 20U> buffer_{};
  std::size_t wanted_ = 0;
  std::size_t present_ = 0;  ///< bytes in the buffer,
  std::size_t taken_ = 0;    ///< and how many of them were handed out
  DWORD error_ = ERROR_SUCCESS;
};

/** Called in a thread of the system's. */
BOOL WINAPI note_event(DWORD event) {
  int expected = none_noted;
  if (!noted.compare_exchange_strong(expected, static_cast<int>(event))) {
    return FALSE;  // the second one: the system ends the program
  }
  InputReader::get().wake();
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
    // The console is being closed, and the program ends with this call; what was begun has these seconds to end.
    constexpr DWORD most_that_windows_waits = 5000;
    Sleep(most_that_windows_waits);
  }
  return TRUE;
}

}  // namespace

Interruption::Interruption() {
  noted = none_noted;
  InputReader::get();  // made here, because its thread cannot be made while the handler runs
  SetConsoleCtrlHandler(note_event, TRUE);
}

Interruption::~Interruption() { SetConsoleCtrlHandler(note_event, FALSE); }

bool Interruption::is_requested() { return noted != none_noted; }

std::optional<std::size_t> Interruption::read_standard_input(void* room, std::size_t count) {
  return InputReader::get().read(room, count);
}

void Interruption::request() {
  noted = static_cast<int>(CTRL_C_EVENT);
  InputReader::get().wake();
}

void Interruption::forget() { noted = none_noted; }

void Interruption::obey() {
  if (noted != none_noted) {
    ExitProcess(static_cast<UINT>(STATUS_CONTROL_C_EXIT));
  }
}

}  // namespace nerova_zel
