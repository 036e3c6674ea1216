#include "version_text.h"

#include "failure.h"
#include "failure_text.h"
#include "processor/library.h"
#include "processor/route.h"

namespace nerova_zel {

std::string version_text() {
  std::string library_line;
  std::string route;
  try {
    Library library("");
    library_line = library.path() + " (it does not tell its version)";
    route = route_of(library);
  } catch (const Failure&) {
    library_line = "none: " + describe_current_failure();
    route = "none without a library";
  }
  return "nerova-polarize " NEROVA_VERSION "\nlibrary    " + library_line + "\nprocessor  " + processor_level() +
         "\nroute      " + route;
}

}  // namespace nerova_zel
