#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>
#include <vector>

#include "frame_case.h"

namespace nerova_zel::benchmark {

/** A worker (see frame_worker.cpp) at the other end of two pipes. Ends it on destruction. */
class WorkerProcess {
 public:
  /** Throws std::system_error when the program does not start. */
  explicit WorkerProcess(const std::string& program);
  ~WorkerProcess();
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;

  /** The names of the routes that run there. */
  std::vector<std::string> routes();
  /** Seconds of one call. Throws std::runtime_error with what the worker says when it cannot run the case. */
  double measure(const FrameCase& frame_case);

 private:
  std::string ask(const std::string& request);

  pid_t process_ = -1;
  std::FILE* to_worker_ = nullptr;
  std::FILE* from_worker_ = nullptr;
};

}  // namespace nerova_zel::benchmark
