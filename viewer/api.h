#pragma once

#include <chrono>
#include <string>
#include <thread>

#include "reply.h"
#include "viewer.h"

namespace nerova_zel {

/** Answers the requests of the page that passed Access. Thread-safe. */
class Api {
 public:
  /** Both must outlive it. Throws Failure where the library cannot be loaded. */
  Api(ViewSettings settings, ViewedFrames& frames);
  ~Api();
  Api(const Api&) = delete;
  Api& operator=(const Api&) = delete;

  /** Path and what follows the question mark. Never throws: what goes wrong is a reply with another status. */
  Reply answer(const std::string& path, const std::string& query);

  const ViewSettings& settings() const { return settings_; }

 private:
  Reply answer_or_throw(const std::string& path, const std::string& query);
  Reply session(const std::string& query);
  Reply session_now();
  void compute_first_frame();

  const ViewSettings settings_;
  ViewedFrames& frames_;
  ComputedFrames computed_;
  const std::string route_;
  std::thread first_look_;
};

}  // namespace nerova_zel
