#pragma once

#include <sys/types.h>

#include <cstdio>
#include <string>

#include "frame_case.h"

namespace nerova_zel::benchmark {

/** A frame_worker at the other end of two pipes. Ends it on destruction. */
class WorkerProcess {
 public:
  /** Throws std::system_error when the program does not start. */
  explicit WorkerProcess(const std::string& program);
  ~WorkerProcess();
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;

  /** Seconds of one call. Throws std::runtime_error with what the worker says when it cannot run the case. */
  double measure(const FrameCase& frame_case);

 private:
  pid_t process_ = -1;
  std::FILE* to_worker_ = nullptr;
  std::FILE* from_worker_ = nullptr;
};

}  // namespace nerova_zel::benchmark
