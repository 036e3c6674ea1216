#include "support/redirected_import.h"

#include <windows.h>

#include <stdexcept>

namespace nerova_zel::test {

void redirect_import(const std::string& library_file, const std::string& name, void* ours) {
  auto* const module = reinterpret_cast<unsigned char*>(GetModuleHandleA(library_file.c_str()));
  const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
  const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(module + dos->e_lfanew);
  const auto imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  for (auto* from = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(module + imports); from->Name != 0; ++from) {
    const auto* entry = reinterpret_cast<const IMAGE_THUNK_DATA*>(module + from->OriginalFirstThunk);
    auto* address = reinterpret_cast<void**>(module + from->FirstThunk);
    for (; entry->u1.AddressOfData != 0; ++entry, ++address) {
      if (IMAGE_SNAP_BY_ORDINAL(entry->u1.Ordinal)) {
        continue;
      }
      const auto* const by_name = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(module + entry->u1.AddressOfData);
      if (name == reinterpret_cast<const char*>(by_name->Name)) {
        DWORD previous = 0;
        VirtualProtect(address, sizeof(*address), PAGE_READWRITE, &previous);
        *address = ours;
        VirtualProtect(address, sizeof(*address), previous, &previous);
        return;
      }
    }
  }
  throw std::logic_error("the library does not import " + name);
}

}  // namespace nerova_zel::test
