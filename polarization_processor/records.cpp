#include "records.h"

namespace nerova_zel::records {

namespace {

// A constant instead of __FILE__: the same whichever machine built the library.
constexpr char source_path[] =
    R"(C:\polarization_processing_suite\polarization_processor\nerova_zel_polarization_processor.cpp)";

/** What follows the last backslash. */
constexpr const char* file_name(const char* path) noexcept {
  const char* name = path;
  for (const char* character = path; *character != '\0'; ++character) {
    if (*character == '\\') {
      name = character + 1;
    }
  }
  return name;
}

constexpr const char* source_file = file_name(source_path);

constexpr char create_function[] = "nv_polarization_processor_create_polarization_processor";
constexpr char destroy_function[] = "nv_polarization_processor_destroy_polarization_processor";
constexpr char set_function[] = "nv_polarization_processor_set_custom_calibration_coefficients";
constexpr char get_function[] = "nv_polarization_processor_get_custom_calibration_coefficients";
constexpr char transform_function[] = "nv_polarization_processor_transform";

constexpr char null_handle[] = "%s The specified polarization processor handle is NULL!";
constexpr char error_prefix[] = "ERROR: ";

}  // namespace

void create_without_sse(const LogClient& client) noexcept {
  client.log(LogLevel::Error, source_file, 54, create_function,
             "SSE is required for this component but is not supported on this CPU.");
}

void create_out_of_memory(const LogClient& client) noexcept {
  client.log(LogLevel::Error, source_file, 76, create_function,
             "Memory allocation failure when trying to create a polar processor instance!");
}

void create_unknown_error(const LogClient& client) noexcept {
  client.log(LogLevel::Error, source_file, 81, create_function,
             "An unknown error occurred when trying to create a polar_processor instance!");
}

void set_coefficients_null_handle(const LogClient& client) noexcept {
  client.log(LogLevel::Error, source_file, 129, set_function, null_handle, error_prefix);
}

void get_coefficients_null_handle(const LogClient& client) noexcept {
  client.log(LogLevel::Error, source_file, 155, get_function, null_handle, error_prefix);
}

void transform_null_handle(const LogClient& client) noexcept {
  client.log(LogLevel::Error, source_file, 194, transform_function, null_handle, error_prefix);
}

void destroy_null_handle(const LogClient& client) noexcept {
  client.log(LogLevel::Error, source_file, 300, destroy_function, "%s The specified color processor handle is NULL!",
             error_prefix);
}

// The only record that gives the whole path.
void transform_time(const LogClient& client, double microseconds) noexcept {
  client.log(LogLevel::Timing, source_path, 190, transform_function, "%s takes %f microseconds.", "transform",
             microseconds);
}

}  // namespace nerova_zel::records
