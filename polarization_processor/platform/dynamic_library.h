#pragma once

namespace nerova_zel {

/** A library loaded at run time; NULL is none. */
using ModuleHandle = void*;

/**
 * Loads the companion library of that module name; the platform adds the ending of its file. Returns NULL when it
 * cannot be loaded. The name has 64 characters at most.
 */
ModuleHandle load_module(const char* module_name) noexcept;

/** Address of an exported name, or NULL. */
void* find_entry(ModuleHandle module, const char* name) noexcept;

/** Takes back one load_module. */
void unload_module(ModuleHandle module) noexcept;

/** An exported function by its name, or NULL. Function is a pointer type, which nobody can check. */
template <class Function>
Function find_function(ModuleHandle module, const char* name) noexcept {
  return reinterpret_cast<Function>(find_entry(module, name));
}

}  // namespace nerova_zel
