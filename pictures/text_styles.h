#pragma once

#include "sheet_drawing.h"

namespace nerova_zel {

// One look for all pages.

const cv::Scalar paper(252, 252, 252);
const TextStyle page_title_style{34.0, 0.12, {30, 30, 30}, Align::left};
const TextStyle page_note_style{19.0, 0.09, {95, 95, 95}, Align::left};
const TextStyle title_style{24.0, 0.12, {30, 30, 30}, Align::left};
const TextStyle note_style{17.0, 0.09, {95, 95, 95}, Align::left};
const TextStyle tick_style{16.0, 0.1, {60, 60, 60}, Align::left};
const char* const degree_sign = "\xC2\xB0";

}  // namespace nerova_zel
