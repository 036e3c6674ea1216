#pragma once

namespace CLI {
class App;
}

namespace nerova_zel {

/** completion and manual: what the program says of itself. */
void declare_documents(CLI::App& app);

}  // namespace nerova_zel
