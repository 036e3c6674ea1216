#include "lifecycle/arrangement.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "lifecycle/pretended_counter.h"
#include "support/failing_allocation.h"
#include "support/module_file.h"

namespace nerova_zel::test {

namespace {

/** A companion's name, without its ending, and the mock of it; by Companion. */
struct {
  const char* name;
  const char* mock;
} constexpr companion_files[] = {{"nerova_zel_logger", NEROVA_MOCK_LOGGER},
                                 {"nerova_zel_polarization_processor_vector_avx512", NEROVA_MOCK_AVX512},
                                 {"nerova_zel_polarization_processor_vector_avx2", NEROVA_MOCK_AVX2}};

Arrangement* current_arrangement = nullptr;

std::string content_of(const std::string& file) {
  std::ifstream source(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(source), {}};
}

/** Makes the header name the other word size. */
void change_word_size(std::string& bytes) {
#if defined(_WIN32)
  const auto header = static_cast<unsigned char>(bytes.at(0x3C)) + 256U * static_cast<unsigned char>(bytes.at(0x3D));
  const bool is_x86 = bytes.substr(header + 4, 2) == "\x4C\x01";
  bytes.replace(header + 4, 2, is_x86 ? "\x64\x86" : "\x4C\x01");
#else
  constexpr std::size_t word_size = 4;
  bytes.at(word_size) = bytes.at(word_size) == 1 ? 2 : 1;
#endif
}

/** A path on a Windows drive, shortened to what follows the directory of the whole suite. */
std::string without_beginning(const std::string& path) {
  const std::string suite = "\\polarization_processing_suite\\";
  const std::size_t at = path.find(suite);
  return path.compare(1, 2, ":\\") == 0 && at != std::string::npos ? "..." + path.substr(at + suite.size() - 1) : path;
}

/** Replaces the first number, if it has the form that "%f" gives it. */
std::string without_number(std::string text) {
  constexpr char digits[] = "0123456789";
  const std::size_t begin = text.find_first_of(digits);
  const std::size_t point = text.find_first_not_of(digits, begin);
  const std::size_t end = text.find_first_not_of(digits, point + 1);
  if (point == std::string::npos || text[point] != '.' || end - point != 7) {
    return text;
  }
  return text.replace(begin, end - begin, "#");
}

}  // namespace

void Journal::add(const std::string& event) {
  const UncountedAllocation uncounted;
  const std::lock_guard<std::mutex> lock(mutex_);
  events_.push_back(event);
}

Events Journal::take() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(events_, {});
}

void* MockLogger::get_log(const char* module_name, const char* second_name, const char* configuration) {
  const UncountedAllocation uncounted;
  journal_.add(std::string("get_log ") + module_name + '|' + second_name + '|' + configuration);
  on_get_log();
  return gives_handle ? this : nullptr;
}

std::int32_t MockLogger::log(void* log, std::int32_t level, const char* file, std::int32_t line, const char* function,
                             const char* message) {
  const UncountedAllocation uncounted;
  std::string path = file;
  std::string text = message;
  if (level == 7) {
    path = without_beginning(path);
    text = journals_times ? text : without_number(text);
  }
  journal_.add((log == this ? "" : "wrong handle ") + std::to_string(level) + '|' + path + '|' + std::to_string(line) +
               '|' + function + '|' + text);
  on_log();
  return log_result;
}

void MockLogger::free_log(const char* module_name, const char* second_name) {
  journal_.add(std::string("free_log ") + module_name + '|' + second_name);
  on_free_log();
}

std::int32_t MockPlugin::initialize() {
  const UncountedAllocation uncounted;
  journal_.add(name_ + " initialize");
  return on_initialize();
}

void MockPlugin::transform(const void* parameters, const float* const* matrices) {
  journal_.add(name_ + " transform");
  on_transform(parameters, matrices);
}

void MockPlugin::terminate() {
  const UncountedAllocation uncounted;
  journal_.add(name_ + " terminate");
  on_terminate();
}

Arrangement::Arrangement(std::initializer_list<Companion> companions) {
  current_arrangement = this;
  for (const Companion companion : companions) {
    add(companion);
  }
}

Arrangement::~Arrangement() {
  finish();
  library_.reset();
  current_arrangement = nullptr;
}

std::string Arrangement::file(Companion companion) const {
  return directory() + "/" + companion_files[static_cast<int>(companion)].name + module_ending;
}

void Arrangement::add(Companion companion, const std::string& missing_entry) const {
  std::string bytes = content_of(companion_files[static_cast<int>(companion)].mock);
  if (!missing_entry.empty()) {
    const std::string entry = '\0' + missing_entry + '\0';
    std::size_t at = bytes.find(entry);
    EXPECT_NE(at, std::string::npos) << "no entry " << missing_entry;
    for (; at != std::string::npos; at = bytes.find(entry, at)) {
      bytes[at + missing_entry.size()] = 'X';  // another last letter keeps a table of names in order
    }
  }
  std::ofstream(file(companion), std::ios::binary) << bytes;
}

void Arrangement::damage(Companion companion, Damage damage) const {
  std::string bytes = content_of(file(companion));
  if (damage == Damage::OtherWordSize) {
    change_word_size(bytes);
  } else if (damage == Damage::NoLibrary) {
    bytes = std::string(1000, '#');  // long enough for a header
  } else {
    const std::size_t lengths[] = {bytes.size() / 3, 1000, 100, 20};
    bytes.resize(lengths[static_cast<int>(damage)]);
  }
  std::ofstream(file(companion), std::ios::binary | std::ios::trunc) << bytes;
}

bool Arrangement::loaded(Companion companion) const { return module_is_loaded(file(companion)); }

LoadedLibrary& Arrangement::library() {
  if (!library_) {
    const std::string path = directory() + "/library" + module_ending;
    std::filesystem::copy_file(library_path(), path);
    library_.emplace(path);
    watch_allocations(path);
    watch_counter(path);
  }
  return *library_;
}

void Arrangement::initialize() {
  if (!std::exchange(initialized_, true)) {
    EXPECT_EQ(library().module_initialize(), 0);
  }
  journal.take();
}

nv_polarization_processor* Arrangement::make_processor() {
  initialize();
  if (library().create(&processor_) != 0) {
    throw std::runtime_error("cannot make a processor");
  }
  journal.take();
  return processor_;
}

void Arrangement::finish() {
  if (auto* const processor = std::exchange(processor_, nullptr)) {
    EXPECT_EQ(library().destroy(processor), 0);
  }
  if (std::exchange(initialized_, false)) {
    EXPECT_EQ(library().module_terminate(), 0);
  }
}

std::string error_record(int line, const std::string& function, const std::string& message) {
  return "2|nerova_zel_polarization_processor.cpp|" + std::to_string(line) + "|nv_polarization_processor_" + function +
         '|' + message;
}

const std::string null_destroyed =
    error_record(300, "destroy_polarization_processor", "ERROR:  The specified color processor handle is NULL!");
const std::string null_transformed =
    error_record(194, "transform", "ERROR:  The specified polarization processor handle is NULL!");
const std::string no_memory = error_record(
    76, "create_polarization_processor", "Memory allocation failure when trying to create a polar processor instance!");

}  // namespace nerova_zel::test

nerova_zel::test::LoggerBehaviour& mock_logger_behaviour() { return nerova_zel::test::current_arrangement->logger; }

nerova_zel::test::PluginBehaviour& mock_avx512_behaviour() { return nerova_zel::test::current_arrangement->avx512; }

nerova_zel::test::PluginBehaviour& mock_avx2_behaviour() { return nerova_zel::test::current_arrangement->avx2; }
