#pragma once

#include <string>

namespace nerova_zel::test {

/** Makes a loaded DLL call ours wherever it calls the imported function of that name. Throws std::logic_error. */
void redirect_import(const std::string& library_file, const std::string& name, void* ours);

}  // namespace nerova_zel::test
