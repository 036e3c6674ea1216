#include "sheet_drawing.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <opencv2/imgproc.hpp>

#include "text_styles.h"

namespace nerova_zel {

namespace {

// Text is drawn larger and averaged down: the stroke fonts of OpenCV are otherwise rough at small sizes.
constexpr int oversampling = 4;
constexpr int font = cv::FONT_HERSHEY_SIMPLEX;
const cv::Scalar line_colour(150, 150, 150);
const cv::Scalar empty_colour(232, 232, 232);

struct Typeset {
  cv::Mat coverage;  ///< 8-bit, 255 where ink covers a pixel wholly
  int base_line;     ///< row of the base line
};

/** The text cut at its degree signs. */
std::vector<std::string> runs_of(const std::string& text) {
  std::vector<std::string> runs;
  std::size_t from = 0;
  for (;;) {
    const std::size_t sign = text.find(degree_sign, from);
    std::string run = text.substr(from, sign == std::string::npos ? sign : sign - from);
    for (char& c : run) {
      if (static_cast<unsigned char>(c) < 32 || static_cast<unsigned char>(c) > 126) {
        c = '?';
      }
    }
    runs.push_back(run);
    if (sign == std::string::npos) {
      return runs;
    }
    from = sign + std::strlen(degree_sign);
  }
}

Typeset typeset(const std::string& text, const TextStyle& style) {
  const double height = style.height * oversampling;
  const int thickness = std::max(1, static_cast<int>(std::lround(height * style.weight)));
  const double scale = cv::getFontScaleFromHeight(font, static_cast<int>(height), thickness);
  const int ring_radius = static_cast<int>(std::lround(height * 0.17));
  const int ring_width = 2 * ring_radius + 2 * thickness;
  const std::vector<std::string> runs = runs_of(text);
  std::vector<int> widths;
  int width = static_cast<int>(runs.size() - 1) * ring_width;
  for (const std::string& run : runs) {
    int below = 0;
    widths.push_back(run.empty() ? 0 : cv::getTextSize(run, font, scale, thickness, &below).width);
    width += widths.back();
  }
  const auto round_up = [](int value) { return (value + oversampling - 1) / oversampling * oversampling; };
  const int above = round_up(static_cast<int>(height * 1.3));
  const int below = round_up(static_cast<int>(height * 0.5));
  cv::Mat large = cv::Mat::zeros(above + below, round_up(width + thickness), CV_8U);
  int x = 0;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    cv::putText(large, runs[i], {x, above}, font, scale, 255, thickness, cv::LINE_AA);
    x += widths[i];
    if (i + 1 < runs.size()) {
      const cv::Point centre(x + ring_radius, above - static_cast<int>(height) + ring_radius);
      cv::circle(large, centre, ring_radius, 255, thickness, cv::LINE_AA);
      x += ring_width;
    }
  }
  Typeset result;
  cv::resize(large, result.coverage, {}, 1.0 / oversampling, 1.0 / oversampling, cv::INTER_AREA);
  result.base_line = above / oversampling;
  return result;
}

}  // namespace

void cover_pixel(cv::Mat& page, cv::Point at, const cv::Scalar& colour, double share) {
  auto& pixel = page.at<cv::Vec3b>(at);
  for (int c = 0; c < 3; ++c) {
    pixel[c] = cv::saturate_cast<uchar>(share * colour[c] + (1.0 - share) * pixel[c]);
  }
}

int text_width(const std::string& text, const TextStyle& style) { return typeset(text, style).coverage.cols; }

void draw_text(cv::Mat& page, const std::string& text, cv::Point at, const TextStyle& style) {
  const Typeset words = typeset(text, style);
  const int width = words.coverage.cols;
  const int back = style.align == Align::left ? 0 : (style.align == Align::centre ? width / 2 : width);
  const cv::Rect wanted(at.x - back, at.y - words.base_line, width, words.coverage.rows);
  const cv::Rect visible = wanted & cv::Rect(0, 0, page.cols, page.rows);
  for (int y = visible.y; y < visible.br().y; ++y) {
    for (int x = visible.x; x < visible.br().x; ++x) {
      const double ink = words.coverage.at<uchar>(y - wanted.y, x - wanted.x) / 255.0;
      cover_pixel(page, {x, y}, style.colour, ink);
    }
  }
}

void draw_colour_bar(cv::Mat& page, const cv::Rect& area, const std::function<Rgb(double)>& colour_at,
                     const std::vector<Tick>& ticks, const TextStyle& style) {
  for (int x = 0; x < area.width; ++x) {
    const Rgb colour = colour_at(static_cast<double>(x) / (area.width - 1));
    page(cv::Rect(area.x + x, area.y, 1, area.height)).setTo(scalar(colour));
  }
  draw_frame(page, area);
  for (const Tick& tick : ticks) {
    const int x = area.x + static_cast<int>(std::lround(tick.place * (area.width - 1)));
    cv::line(page, {x, area.br().y + 1}, {x, area.br().y + 7}, line_colour, 2);
    TextStyle placed = style;
    const int half = text_width(tick.label, style) / 2;
    placed.align = Align::centre;
    // The words of the outermost ticks stay within the bar's ends.
    const int centre =
        std::clamp(x, area.x + std::min(half, area.width / 2), area.br().x - std::min(half, area.width / 2));
    draw_text(page, tick.label, {centre, area.br().y + 14 + static_cast<int>(style.height)}, placed);
  }
}

std::vector<Tick> even_ticks(double from, double to, int steps, const std::function<std::string(double)>& label) {
  std::vector<Tick> ticks;
  for (int i = 0; i <= steps; ++i) {
    const double place = static_cast<double>(i) / steps;
    ticks.push_back({place, label(from + (to - from) * place)});
  }
  return ticks;
}

std::string percent(double value) { return short_number(value) + " %"; }

void draw_light_bar(cv::Mat& page, const cv::Rect& area, double end, int steps, const TextStyle& style) {
  draw_colour_bar(page, area, grey, even_ticks(0.0, 100.0 * end, steps, percent), style);
}

std::string short_number(double value) {
  std::string text = cv::format("%.2f", value);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

void draw_frame(cv::Mat& page, const cv::Rect& area) {
  cv::rectangle(page, {area.x - 1, area.y - 1}, {area.br().x, area.br().y}, line_colour, 1);
}

void draw_page_title(cv::Mat& page, const std::string& name, const std::string& facts) {
  std::string fitting = name;
  for (std::size_t kept = name.size() / 2; text_width(fitting, page_title_style) > page.cols - 2 * margin; --kept) {
    fitting = name.substr(0, kept) + "..." + name.substr(name.size() - kept);
  }
  draw_text(page, fitting, {margin, 76}, page_title_style);
  draw_text(page, facts, {margin, 120}, page_note_style);
}

void draw_panel(cv::Mat& page, const cv::Rect& box, const std::string& title, const std::string& note,
                const cv::Size& size, const std::function<Rgb(int x, int y)>& colour) {
  draw_text(page, title, {box.x, box.y - 58}, title_style);
  draw_text(page, note, {box.x, box.y - 22}, note_style);
  const cv::Point corner(box.x + (box.width - size.width) / 2, box.y + (box.height - size.height) / 2);
  page(box).setTo(empty_colour);
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      page.at<cv::Vec3b>(corner.y + y, corner.x + x) = bgr(colour(x, y));
    }
  }
  draw_frame(page, box);
}

}  // namespace nerova_zel
