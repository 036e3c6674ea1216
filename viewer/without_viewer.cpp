// Takes the place of the server in a program that is built without.
#include "failure.h"
#include "viewer.h"

namespace nerova_zel {

std::unique_ptr<Viewer> start_viewer(ViewSettings, ViewedFrames&) {
  throw Failure("this program was built without the server of the page.");
}

}  // namespace nerova_zel
