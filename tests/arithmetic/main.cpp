// Asks the processor before code for an instruction set runs; built without that set itself.

#include "support/cpu_route.h"

bool quotients_are_exact();

int main() {
  using namespace nerova_zel::test;
  if (const auto reason = why_route_cannot_run(route_by_name(NEROVA_ROUTE).value())) {
    return may_skip_route(NEROVA_ROUTE, *reason) ? exit_route_not_run : 1;
  }
  return quotients_are_exact() ? 0 : 1;
}
