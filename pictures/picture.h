#pragma once

#include <vector>

namespace nerova_zel {

/** A colour picture, row by row; red, green and blue of a pixel follow one another, 8 bits each. */
struct Picture {
  int width = 0;
  int height = 0;
  std::vector<unsigned char> pixels;
};

/** Whether what draws is built and installed; without it every function that draws throws Failure. */
bool can_draw();

/** Has each picture drawn by the thread that asks for it, for programs that draw several at once. */
void draw_in_one_thread();

}  // namespace nerova_zel
