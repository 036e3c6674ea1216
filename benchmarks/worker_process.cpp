#include "worker_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <system_error>

extern char** environ;  // NOLINT(readability-redundant-declaration): not every C library declares it

namespace nerova_zel::benchmark {

namespace {

std::array<int, 2> make_pipe() {
  std::array<int, 2> ends = {-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  return ends;
}

}  // namespace

WorkerProcess::WorkerProcess(const std::string& program) {
  const auto requests = make_pipe();
  const auto answers = make_pipe();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, requests[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, answers[1], STDOUT_FILENO);
  std::string name = program;
  char* arguments[] = {name.data(), nullptr};
  const int failure = posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(requests[0]);
  close(answers[1]);
  to_worker_ = fdopen(requests[1], "w");
  from_worker_ = fdopen(answers[0], "r");
  if (failure != 0) {
    throw std::system_error(failure, std::generic_category(), program);
  }
}

WorkerProcess::~WorkerProcess() {
  std::fclose(to_worker_);
  std::fclose(from_worker_);
  waitpid(process_, nullptr, 0);
}

std::string WorkerProcess::ask(const std::string& request) {
  const std::string line = request + "\n";
  std::array<char, 1024> answer = {};
  if (std::fputs(line.c_str(), to_worker_) < 0 || std::fflush(to_worker_) != 0 ||
      std::fgets(answer.data(), static_cast<int>(answer.size()), from_worker_) == nullptr) {
    throw std::runtime_error("the worker process ended");
  }
  return answer.data();
}

std::vector<std::string> WorkerProcess::routes() {
  std::istringstream names(ask("routes"));
  return {std::istream_iterator<std::string>(names), {}};
}

double WorkerProcess::measure(const FrameCase& frame_case) {
  const std::string answer = ask("time " + to_line(frame_case));
  char* end = nullptr;
  const double nanoseconds = std::strtod(answer.c_str(), &end);
  if (end == answer.c_str()) {
    throw std::runtime_error(answer);
  }
  return nanoseconds * 1e-9;
}

}  // namespace nerova_zel::benchmark
