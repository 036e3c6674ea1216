#pragma once

#include <functional>
#include <initializer_list>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "lifecycle/mock_behaviour.h"
#include "support/folder.h"
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

/** What lies beside the library. */
enum class Companion { Logger, Avx512, Avx2 };

/**
 * A directory of its own that holds a copy of the library and, beside it, the mock companions that a test adds. One at
 * a time.
 */
class Arrangement {
 public:
  explicit Arrangement(std::initializer_list<Companion> companions = {});
  /** Ends what make_processor or initialize began. */
  ~Arrangement();
  Arrangement(const Arrangement&) = delete;
  Arrangement& operator=(const Arrangement&) = delete;

  Journal journal;
  MockLogger logger{journal};
  MockPlugin avx512{journal, "avx512"};
  MockPlugin avx2{journal, "avx2"};

  /** A companion, lacking the named entry if one is named. */
  void add(Companion companion, const std::string& missing_entry = {}) const;

  /** What can happen to a file beside the library. */
  enum class Damage { Truncated, CutBehindHeaders, CutInHeaders, CutInFirstHeader, OtherWordSize, NoLibrary };
  void damage(Companion companion, Damage damage) const;

  bool loaded(Companion companion) const;
  bool any_plugin_loaded() const { return loaded(Companion::Avx512) || loaded(Companion::Avx2); }

  /** Loaded on the first call, which must come after the additions. */
  LoadedLibrary& library();

  /** Initializes the module, once; journals nothing of it. */
  void initialize();
  /** The same, and makes a processor. Throws when that fails. */
  nv_polarization_processor* make_processor();
  /** Destroys the processor and terminates the module, as far as they were made here. */
  void finish();

  /** The file of a companion. */
  std::string file(Companion companion) const;
  std::string directory() const { return folder_.path().generic_string(); }

 private:
  const Folder folder_;
  std::optional<LoadedLibrary> library_;
  bool initialized_ = false;
  nv_polarization_processor* processor_ = nullptr;
};

/** The record of an error that an export writes from that line. */
std::string error_record(int line, const std::string& function, const std::string& message);
extern const std::string null_destroyed;    ///< destroy with a NULL handle
extern const std::string null_transformed;  ///< transform with one
extern const std::string no_memory;         ///< create without memory

}  // namespace nerova_zel::test
