// Built once per instruction set, with the names of its entries and of its behaviour.

#include "lifecycle/mock_behaviour.h"
#include "lifecycle/program_name.h"

namespace {

nerova_zel::test::PluginBehaviour& behaviour() {
  using nerova_zel::test::find_in_program;
  return reinterpret_cast<nerova_zel::test::PluginBehaviour& (*)()>(find_in_program(MOCK_BEHAVIOUR))();
}

}  // namespace

MOCK_EXPORT std::int32_t MOCK_INITIALIZE() { return behaviour().initialize(); }

MOCK_EXPORT void MOCK_TRANSFORM(const void* parameters, const float* const* matrices) {
  // At the frame address lie the saved frame pointer and the return address; above them the stack is to be aligned.
  const auto frame = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  behaviour().stack_alignment((frame + 2 * sizeof(void*)) % 16 == 0);
  behaviour().transform(parameters, matrices);
}

MOCK_EXPORT std::int32_t MOCK_TERMINATE() {
  behaviour().terminate();
  return 1;
}
