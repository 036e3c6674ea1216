#include "lifecycle/arrangement.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <utility>

#include "lifecycle/pretended_counter.h"
#include "support/failing_allocation.h"
#include "support/module_file.h"

namespace nerova_zel::test {

namespace {

constexpr char logger_name[] = "nerova_zel_logger";
constexpr char avx512_name[] = "nerova_zel_polarization_processor_vector_avx512";
constexpr char avx2_name[] = "nerova_zel_polarization_processor_vector_avx2";

Arrangement* current_arrangement = nullptr;

std::string make_directory() {
  std::random_device random;
  for (;;) {
    const std::filesystem::path directory =
        std::filesystem::temp_directory_path() / ("nerova_zel_" + std::to_string(random()));
    if (std::filesystem::create_directory(directory)) {
      return directory.generic_string();
    }
  }
}

/** Copies a library; the missing entry ends in another letter, which keeps a table of names in order. */
void copy_library(const std::string& from, const std::string& to, const std::string& missing_entry) {
  if (missing_entry.empty()) {
    std::filesystem::copy_file(from, to);
    return;
  }
  std::ifstream source(from, std::ios::binary);
  std::string bytes(std::istreambuf_iterator<char>(source), {});
  const std::string entry = '\0' + missing_entry + '\0';
  if (bytes.find(entry) == std::string::npos) {
    throw std::logic_error(from + " has no entry " + missing_entry);
  }
  for (std::size_t at = bytes.find(entry); at != std::string::npos; at = bytes.find(entry, at)) {
    bytes[at + missing_entry.size()] = 'X';
  }
  std::ofstream(to, std::ios::binary) << bytes;
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

void damage_file(const std::string& file, Arrangement::Damage damage) {
  std::ifstream source(file, std::ios::binary);
  std::string bytes(std::istreambuf_iterator<char>(source), {});
  source.close();
  switch (damage) {
    case Arrangement::Damage::Truncated:
      bytes.resize(bytes.size() / 3);
      break;
    case Arrangement::Damage::CutBehindHeaders:
      bytes.resize(1000);
      break;
    case Arrangement::Damage::CutInHeaders:
      bytes.resize(100);
      break;
    case Arrangement::Damage::CutInFirstHeader:
      bytes.resize(20);
      break;
    case Arrangement::Damage::OtherWordSize:
      change_word_size(bytes);
      break;
    case Arrangement::Damage::NoLibrary:
      bytes = std::string(1000, '#');  // long enough for a header
      break;
  }
  std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
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

Arrangement::Arrangement() : directory_(make_directory()) { current_arrangement = this; }

Arrangement::~Arrangement() {
  library_.reset();
  std::filesystem::remove_all(directory_);
  current_arrangement = nullptr;
}

std::string Arrangement::file(const std::string& name) const { return directory_ + "/" + name + module_ending; }

void Arrangement::add_logger(const std::string& missing_entry) {
  copy_library(NEROVA_MOCK_LOGGER, file(logger_name), missing_entry);
}

void Arrangement::add_avx512(const std::string& missing_entry) {
  copy_library(NEROVA_MOCK_AVX512, file(avx512_name), missing_entry);
}

void Arrangement::add_avx2(const std::string& missing_entry) {
  copy_library(NEROVA_MOCK_AVX2, file(avx2_name), missing_entry);
}

void Arrangement::damage_avx512(Damage damage) const { damage_file(file(avx512_name), damage); }

void Arrangement::damage_logger(Damage damage) const { damage_file(file(logger_name), damage); }

bool Arrangement::logger_loaded() const { return module_is_loaded(file(logger_name)); }

bool Arrangement::avx512_loaded() const { return module_is_loaded(file(avx512_name)); }

bool Arrangement::avx2_loaded() const { return module_is_loaded(file(avx2_name)); }

LoadedLibrary& Arrangement::library() {
  if (!library_) {
    const std::string path = file("library");
    copy_library(library_path(), path, {});
    library_.emplace(path);
    watch_allocations(path);
    watch_counter(path);
  }
  return *library_;
}

nv_polarization_processor* Arrangement::make_processor() {
  nv_polarization_processor* processor = nullptr;
  if (library().module_initialize() != 0 || library().create(&processor) != 0) {
    throw std::runtime_error("cannot make a processor");
  }
  journal.take();
  return processor;
}

}  // namespace nerova_zel::test

nerova_zel::test::LoggerBehaviour& mock_logger_behaviour() { return nerova_zel::test::current_arrangement->logger; }

nerova_zel::test::PluginBehaviour& mock_avx512_behaviour() { return nerova_zel::test::current_arrangement->avx512; }

nerova_zel::test::PluginBehaviour& mock_avx2_behaviour() { return nerova_zel::test::current_arrangement->avx2; }
