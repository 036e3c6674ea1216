#include "batch/interruption.h"
#include "command_line.h"
#include "standard_streams.h"

int main(int argc, char** argv) {
  nerova_zel::guard_standard_streams();
  const int code = nerova_zel::run_command_line(argc, argv);
  nerova_zel::Interruption::obey();
  return code;
}
