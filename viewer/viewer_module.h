#pragma once

#include "viewer.h"

namespace nerova_zel {

// The server lies in a library of its own, which is loaded when it is started: what it needs in turn would take most of
// the time in which the program starts.

using StartViewer = std::unique_ptr<Viewer> (*)(ViewSettings settings, ViewedFrames& frames);

/** The type of the function nerova_zel_viewer, which it exports. */
using GetStartViewer = StartViewer (*)();

}  // namespace nerova_zel
