#include "batch/interruption.h"
#include "command_line.h"

int main(int argc, char** argv) {
  const int code = nerova_zel::run_command_line(argc, argv);
  nerova_zel::Interruption::obey();
  return code;
}
