#include "platform/browser.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

namespace nerova_zel {

bool open_in_browser(const std::string& address) {
  std::string program = "xdg-open";
  std::string argument = address;
  char* arguments[] = {program.data(), argument.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", stream == STDIN_FILENO ? 0 : 1, 0);
  }
  pid_t child = 0;
  const int error = posix_spawnp(&child, program.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    return false;
  }
  std::thread([child] { waitpid(child, nullptr, 0); }).detach();
  return true;
}

}  // namespace nerova_zel
