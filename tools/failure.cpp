#include "failure.h"

#include <new>
#include <opencv2/core.hpp>

namespace nerova_zel {

std::string describe_current_failure() {
  static const char* const memory_ran_out =
      "memory ran out; a smaller frame, fewer --outputs or fewer --jobs need less.";
  try {
    throw;
  } catch (const Failure& failure) {
    return failure.what();
  } catch (const std::bad_alloc&) {
    return memory_ran_out;
  } catch (const cv::Exception& error) {
    return error.code == cv::Error::StsNoMem ? memory_ran_out : "the picture library fails: " + error.err + ".";
  } catch (const std::exception& error) {
    return std::string("unexpected failure: ") + error.what() + ".";
  }
}

}  // namespace nerova_zel
