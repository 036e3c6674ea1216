#include <dlfcn.h>
#include <link.h>

#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "processor/dynamic_module.h"

namespace nerova_zel {

namespace {

/** Up to the next multiple of 4, to which the parts of a note are filled. */
std::size_t padded(std::size_t size) { return (size + 3) / 4 * 4; }

/** The version in the notes of one segment; empty if there is none. */
std::string version_in(const char* note, const char* end) {
  constexpr std::string_view owner = "NerovaZel";
  while (note + sizeof(ElfW(Nhdr)) <= end) {
    ElfW(Nhdr) header;
    std::memcpy(&header, note, sizeof(header));
    const char* const name = note + sizeof(header);
    const char* const text = name + padded(header.n_namesz);
    note = text + padded(header.n_descsz);
    if (header.n_type == 1 && header.n_namesz == owner.size() + 1 && owner == name && note <= end) {
      return std::string(text, strnlen(text, header.n_descsz));
    }
  }
  return {};
}

/** Which module, by the address at which it is loaded, and what was found in its notes. */
struct NoteSearch {
  ElfW(Addr) address;
  std::string version;
};

int search_notes(dl_phdr_info* module, std::size_t, void* data) {
  NoteSearch& search = *static_cast<NoteSearch*>(data);
  if (module->dlpi_addr != search.address) {
    return 0;
  }
  for (int i = 0; i < module->dlpi_phnum && search.version.empty(); ++i) {
    const ElfW(Phdr)& segment = module->dlpi_phdr[i];
    if (segment.p_type == PT_NOTE) {
      const char* const notes = reinterpret_cast<const char*>(module->dlpi_addr + segment.p_vaddr);
      search.version = version_in(notes, notes + segment.p_filesz);
    }
  }
  return 1;
}

}  // namespace

DynamicModule::DynamicModule(const std::string& path) : module_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (module_ == nullptr) {
    const char* const reason = dlerror();
    throw std::runtime_error(reason != nullptr ? reason : "unknown reason");
  }
}

DynamicModule::~DynamicModule() { dlclose(module_); }

void* DynamicModule::find(const char* name) const { return dlsym(module_, name); }

std::string DynamicModule::version() const {
  link_map* place = nullptr;
  if (dlinfo(module_, RTLD_DI_LINKMAP, &place) != 0) {
    return {};
  }
  NoteSearch search{place->l_addr, {}};
  dl_iterate_phdr(search_notes, &search);
  return search.version;
}

std::string program_directory() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
}

std::string module_file_name(const std::string& name) { return "lib" + name + ".so"; }

}  // namespace nerova_zel
