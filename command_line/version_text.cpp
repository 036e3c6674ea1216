#include "version_text.h"

#include "failure.h"
#include "failure_text.h"
#include "processor/library.h"
#include "processor/route.h"

namespace nerova_zel {

std::string version_text(const std::string& path) {
  std::string library_line;
  std::string route;
  try {
    Library library(path);
    const std::string version = library.version();
    library_line = (version.empty() ? "of unknown version" : version) + ", " + library.path();
    route = route_of(library);
  } catch (const Failure&) {
    library_line = "none: " + describe_current_failure();
    route = "none without a library";
  }
  return "nerova-polarize " NEROVA_VERSION "\nlibrary    " + library_line + "\nprocessor  " + processor_level() +
         "\nroute      " + route;
}

}  // namespace nerova_zel
