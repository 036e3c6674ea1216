#pragma once

#include <filesystem>
#include <string>

#include "file_set.h"
#include "simulation/colour_scene.h"
#include "simulation/simulated_frame.h"

namespace nerova_zel {

/** Puts the true angle and degree of a simulated frame's outputs into `files`: STEM_true_angle.tiff and so on. */
void write_truth(FileSet& files, const std::filesystem::path& directory, const std::string& stem,
                 const SimulatedScene& scene, const CameraSettings& camera);

/** The same for each colour: STEM_true_angle_r.tiff. Throws Failure for a frame too small to have planes. */
void write_colour_truth(FileSet& files, const std::filesystem::path& directory, const std::string& stem,
                        const ColourScene& scene, const ColourMosaic& mosaic);

}  // namespace nerova_zel
