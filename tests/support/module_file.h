#pragma once

#include <string>

namespace nerova_zel::test {

/** The ending of a dynamic library's file name. */
#if defined(_WIN32)
constexpr char module_ending[] = ".dll";
#else
constexpr char module_ending[] = ".so";
#endif

/**
 * Loads a dynamic library. On Windows its folder becomes the one that the loader searches after the program's own, as
 * if the program had been installed there. Throws std::runtime_error.
 */
void* open_module(const std::string& path);
void close_module(void* module);
/** Address of an exported name, or NULL. */
void* find_name(void* module, const char* name);
bool module_is_loaded(const std::string& path);

/** Everything up to and with the last slash. */
std::string folder_of(const std::string& path);

}  // namespace nerova_zel::test
