#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "lifecycle/mock_behaviour.h"
#include "support/loaded_library.h"

namespace nerova_zel::test {

// Windows modules that carry their own C++ runtime do not catch each other's exceptions: neither these mocks' nor those
// of anybody's plugin.
#if defined(_WIN32)
constexpr bool mocks_can_throw = false;
#else
constexpr bool mocks_can_throw = true;
#endif
constexpr char exceptions_stay_in_their_module[] = "exceptions do not cross from one module to another here";

using Events = std::vector<std::string>;

/** What the mocks were told, in order. Threads may share it. */
class Journal {
 public:
  void add(const std::string& event);
  /** All events since the last call. */
  Events take();

 private:
  std::mutex mutex_;
  Events events_;
};

/**
 * Journals "get_log module|second|configuration", "free_log module|second" and a record as
 * "level|file|line|function|message". Of a timing record the number, checked for its form, becomes "#" unless times are
 * wanted, and what the path begins with becomes "...".
 */
class MockLogger final : public LoggerBehaviour {
 public:
  explicit MockLogger(Journal& journal) : journal_(journal) {}

  bool gives_handle = true;
  bool journals_times = false;
  std::function<void()> on_get_log = [] {};
  std::function<void()> on_log = [] {};
  std::function<void()> on_free_log = [] {};
  std::int32_t log_result = 0;

  void* get_log(const char* module_name, const char* second_name, const char* configuration) override;
  std::int32_t log(void* log, std::int32_t level, const char* file, std::int32_t line, const char* function,
                   const char* message) override;
  void free_log(const char* module_name, const char* second_name) override;

 private:
  Journal& journal_;
};

/** Journals "avx2 initialize" and so on. */
class MockPlugin final : public PluginBehaviour {
 public:
  MockPlugin(Journal& journal, const char* name) : journal_(journal), name_(name) {}

  std::function<std::int32_t()> on_initialize = [] { return 0; };
  std::function<void(const void* parameters, const float* const* matrices)> on_transform = [](auto...) {};
  std::function<void()> on_terminate = [] {};
  bool stack_was_aligned = true;

  std::int32_t initialize() override;
  void transform(const void* parameters, const float* const* matrices) override;
  void terminate() override;
  void stack_alignment(bool aligned) override { stack_was_aligned = stack_was_aligned && aligned; }

 private:
  Journal& journal_;
  std::string name_;
};

/**
 * A directory of its own that holds a copy of the library and, beside it, the mock companions that a test adds. One at
 * a time.
 */
class Arrangement {
 public:
  Arrangement();
  ~Arrangement();
  Arrangement(const Arrangement&) = delete;
  Arrangement& operator=(const Arrangement&) = delete;

  Journal journal;
  MockLogger logger{journal};
  MockPlugin avx512{journal, "avx512"};
  MockPlugin avx2{journal, "avx2"};

  /** Companions, each lacking the named entry if one is named. */
  void add_logger(const std::string& missing_entry = {});
  void add_avx512(const std::string& missing_entry = {});
  void add_avx2(const std::string& missing_entry = {});

  /** What can happen to a file beside the library. */
  enum class Damage { Truncated, CutBehindHeaders, CutInHeaders, CutInFirstHeader, OtherWordSize, NoLibrary };
  void damage_avx512(Damage damage) const;
  void damage_logger(Damage damage) const;

  bool logger_loaded() const;
  bool avx512_loaded() const;
  bool avx2_loaded() const;

  /** Loaded on the first call, which must come after the additions. */
  LoadedLibrary& library();

  /** Initializes the module and makes a processor; journals nothing of it. Throws when that fails. */
  nv_polarization_processor* make_processor();

  std::string directory() const { return directory_; }

 private:
  std::string file(const std::string& name) const;

  std::string directory_;
  std::optional<LoadedLibrary> library_;
};

}  // namespace nerova_zel::test
