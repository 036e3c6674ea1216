#include "batch/frame_job.h"

#include "failure_text.h"

namespace nerova_zel {

FrameReport FrameJob::run(const FrameTicket& ticket) {
  try {
    return work(ticket);
  } catch (...) {
    std::string sentence = describe_current_failure();
    const std::string name = ticket.name();
    if (sentence.find(name) == std::string::npos) {
      sentence = name + ": " + sentence;
    }
    return {FrameReport::Result::failed, sentence, {}, 0};
  }
}

}  // namespace nerova_zel
