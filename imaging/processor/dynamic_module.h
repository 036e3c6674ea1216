#pragma once

#include <string>

namespace nerova_zel {

/** A shared library that was loaded at run time. */
class DynamicModule {
 public:
  /** By path, or by a name for the system's ordinary search. Throws std::runtime_error with the system's reason. */
  explicit DynamicModule(const std::string& path);
  ~DynamicModule();
  DynamicModule(const DynamicModule&) = delete;
  DynamicModule& operator=(const DynamicModule&) = delete;

  /** The address of an exported name; NULL if there is none. */
  void* find(const char* name) const;

  /** The version that its file states, such as "0.1.0"; empty if it states none. */
  std::string version() const;

 private:
  void* module_;
};

/** The folder of the running program; empty if unknown. */
std::string program_directory();

/**
 * Where a library of this product lies: where it was installed, or in ../lib beside the program's folder (of both in
 * the subfolder, if one is named), or in the program's own folder; else its name, for the system's ordinary search.
 */
std::string find_module(const std::string& file_name, const std::string& subfolder = "");

/** How this system calls a library: "libNAME.so" or "NAME.dll". */
std::string module_file_name(const std::string& name);

}  // namespace nerova_zel
