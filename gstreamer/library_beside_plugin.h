#pragma once

#include <string>

namespace nerova_zel {

/**
 * The processor library in the folder above the plugin's, where packages and builds place it; empty where there is
 * none, so that the system's ordinary search serves.
 */
std::string library_beside_plugin();

}  // namespace nerova_zel
