#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "colour_tables.h"

namespace nerova_zel {

// What pages have in common, in pixels.
inline constexpr int page_width = 2400;
inline constexpr int margin = 56;          ///< left and right of all that a page shows
inline constexpr int header_height = 150;  ///< of a sheet's name and facts
inline constexpr int title_height = 88;    ///< of a panel's title and note

enum class Align { left, centre, right };

struct TextStyle {
  /** Height of a capital letter in pixels. */
  double height = 16.0;
  /** Width of a pen stroke as a share of the height. */
  double weight = 0.11;
  cv::Scalar colour = {60, 60, 60};
  Align align = Align::left;
};

/** In the order of channels that pages have. */
inline cv::Vec3b bgr(const Rgb& colour) { return {colour.blue, colour.green, colour.red}; }
inline cv::Scalar scalar(const Rgb& colour) { return bgr(colour); }

/** A mark under a colour bar: its place from 0 (left end) to 1 and its words. */
struct Tick {
  double place;
  std::string label;
};

// All draw on an 8-bit three-channel page. Text is ASCII and the degree sign (UTF-8); anything else shows as "?".

/** Writes smooth text; `at` is the left end, centre or right end of its base line. */
void draw_text(cv::Mat& page, const std::string& text, cv::Point at, const TextStyle& style);

int text_width(const std::string& text, const TextStyle& style);

/** A horizontal colour bar over `area`, which is filled from colour_at(0) to colour_at(1), with ticks below. */
void draw_colour_bar(cv::Mat& page, const cv::Rect& area, const std::function<Rgb(double)>& colour_at,
                     const std::vector<Tick>& ticks, const TextStyle& style);

/** `steps` + 1 marks at even distances, with the labels of values from `from` to `to`. */
std::vector<Tick> even_ticks(double from, double to, int steps, const std::function<std::string(double)>& label);

/** "12.5 %". */
std::string percent(double value);

/** The bar of greys for light from 0 to `end`, a share of full scale, in `steps` steps. */
void draw_light_bar(cv::Mat& page, const cv::Rect& area, double end, int steps, const TextStyle& style);

/** A number with as few decimals as it needs, at most two. */
std::string short_number(double value);

/** Lets a share (0 to 1) of a pixel show the colour. */
void cover_pixel(cv::Mat& page, cv::Point at, const cv::Scalar& colour, double share);

/** A thin line around `area`. */
void draw_frame(cv::Mat& page, const cv::Rect& area);

/** The page's name, shortened in the middle if it is wider than the page, and a line of facts below it. */
void draw_page_title(cv::Mat& page, const std::string& name, const std::string& facts);

/** Title and note above `box`, and in its middle a picture of `size` pixels, each with its colour. */
void draw_panel(cv::Mat& page, const cv::Rect& box, const std::string& title, const std::string& note,
                const cv::Size& size, const std::function<Rgb(int x, int y)>& colour);

}  // namespace nerova_zel
