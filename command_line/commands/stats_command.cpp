#include "commands/stats_command.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <utility>

#include "batch/batch_runner.h"
#include "batch/frame_notes.h"
#include "batch/frame_reader.h"
#include "batch/interruption.h"
#include "commands/frame_options.h"
#include "formatted.h"
#include "option_declarations.h"
#include "results.h"
#include "statistics/frame_statistics.h"

namespace nerova_zel {

namespace {

constexpr std::array<std::pair<const char*, StatisticsWeight>, 2> weights = {
    {{"equal", StatisticsWeight::equal}, {"power", StatisticsWeight::power}}};

const char* name_of(StatisticsWeight weight) { return weights[static_cast<std::size_t>(weight)].first; }

/** Options as given, and the request that is made of them. */
struct StatsOptions {
  FrameOptions frames;
  FrameRequest request;
  StatisticsWeight weight = StatisticsWeight::equal;
  /** Only all frames together. */
  bool summary = false;
  bool json = false;
  bool csv = false;
};

/** Sums of each plane of frames: of each colour, or the only one. */
using PlaneSums = std::vector<StatisticsSums>;

struct NamedSums {
  std::string name;
  PlaneSums sums;
};

/** The sums of all frames that are done, by their place in the batch. Thread-safe while frames are added. */
class StatisticsLog {
 public:
  void add(std::uint64_t index, NamedSums frame) {
    const std::lock_guard<std::mutex> lock(mutex_);
    frames_.emplace(index, std::move(frame));
  }

  const std::map<std::uint64_t, NamedSums>& frames() const { return frames_; }

  /** Added in the order of the frames, so that it does not depend on which thread was faster. */
  PlaneSums all(std::size_t planes) const {
    PlaneSums sums(planes);
    for (const auto& [index, frame] : frames_) {
      for (std::size_t i = 0; i < planes; ++i) {
        sums[i] += frame.sums[i];
      }
    }
    return sums;
  }

 private:
  std::mutex mutex_;
  std::map<std::uint64_t, NamedSums> frames_;
};

class StatisticsJob : public FrameJob {
 public:
  StatisticsJob(const FrameRequest& request, const SensorLibraries& libraries, StatisticsWeight weight,
                StatisticsLog& log, FrameNotes& notes)
      : request_(request),
        weight_(weight),
        log_(log),
        notes_(notes),
        transformer_(request, request.colour, libraries, statistics_outputs()) {}

 private:
  FrameReport work(const FrameTicket& ticket) override {
    read_frame(ticket, request_.headerless, bytes(), transformer_.frame());
    transformer_.run(ticket.name());
    PlaneSums sums;
    for (std::size_t i = 0; i < transformer_.plane_count(); ++i) {
      const FrameTransformer& plane = transformer_.plane(i);
      sums.push_back(sum_up(plane.frame(), plane.full_scale(), plane.outputs(), request_.output_maximum, weight_));
    }
    log_.add(ticket.index, {ticket.name(), sums});
    return {FrameReport::Result::done, "", notes_.of(ticket.name(), transformer_, request_.depth),
            transformer_.frame().pixels.size()};
  }

  const FrameRequest& request_;
  const StatisticsWeight weight_;
  StatisticsLog& log_;
  FrameNotes& notes_;
  SensorTransformer transformer_;
};

std::string text_of(const std::optional<double>& value, int decimals) {
  return value ? formatted("%.*f", decimals, *value) : "none";
}

std::string counts_text(const char* title, const std::array<std::uint64_t, counted_images>& counts,
                        std::uint64_t pixels) {
  std::string line = formatted("  %-9s", title);
  for (std::size_t i = 0; i < counted_images; ++i) {
    line += formatted("  %s %.2f %%", name_of(static_cast<CountedImage>(i)),
                      100.0 * static_cast<double>(counts[i]) / static_cast<double>(std::max<std::uint64_t>(1, pixels)));
  }
  return line + "\n";
}

std::string text_of(const std::string& name, const StatisticsSums& sums) {
  return formatted("%s: %llu pixels\n", name.c_str(), static_cast<unsigned long long>(sums.pixels)) +
         formatted("  angle      %s degrees, deviation %s, resultant %s; %llu pixels without\n",
                   text_of(sums.mean_angle(), 3).c_str(), text_of(sums.angle_deviation(), 3).c_str(),
                   text_of(sums.resultant(), 4).c_str(), static_cast<unsigned long long>(sums.without_angle)) +
         formatted("  degree     %s; %llu pixels without\n", text_of(sums.mean_degree(), 5).c_str(),
                   static_cast<unsigned long long>(sums.without_degree)) +
         counts_text("saturated", sums.saturated, sums.pixels) + counts_text("dark", sums.dark, sums.pixels);
}

/** `colours` are the names of planes; none for a frame without. */
std::string text_of(const std::string& name, const PlaneSums& sums, const std::vector<std::string>& colours) {
  std::string text;
  for (std::size_t i = 0; i < sums.size(); ++i) {
    text += text_of(colours.empty() ? name : name + ", " + colours[i], sums[i]);
  }
  return text;
}

nlohmann::ordered_json json_of(const StatisticsSums& sums) {
  nlohmann::ordered_json object;
  for (const NamedStatistic& statistic : named_statistics(sums)) {
    nlohmann::ordered_json& place =
        statistic.part.empty() ? object[statistic.name] : object[statistic.name][statistic.part];
    if (const auto* count = std::get_if<std::uint64_t>(&statistic.value)) {
      place = *count;
    } else if (const auto& number = std::get<std::optional<double>>(statistic.value)) {
      place = *number;
    }  // else it stays null
  }
  return object;
}

nlohmann::ordered_json json_of(const PlaneSums& sums, const std::vector<std::string>& colours) {
  if (colours.empty()) {
    return json_of(sums.front());
  }
  nlohmann::ordered_json object;
  for (std::size_t i = 0; i < sums.size(); ++i) {
    object["colours"][colours[i]] = json_of(sums[i]);
  }
  return object;
}

std::string as_text(const StatisticsLog& log, bool summary, const std::vector<std::string>& colours) {
  const std::size_t count = log.frames().size();
  std::string text;
  if (!summary) {
    for (const auto& [index, frame] : log.frames()) {
      text += text_of(frame.name, frame.sums, colours);
    }
  }
  if (summary || count > 1) {
    text += text_of("all " + std::to_string(count) + (count == 1 ? " frame" : " frames"),
                    log.all(std::max<std::size_t>(1, colours.size())), colours);
  }
  return text;
}

std::string as_json(const StatisticsLog& log, bool summary, const std::vector<std::string>& colours, const char* weight,
                    std::uint64_t failed) {
  nlohmann::ordered_json document;
  document["weight"] = weight;
  document["frames_done"] = log.frames().size();
  document["frames_failed"] = failed;
  if (!summary) {
    document["frames"] = nlohmann::ordered_json::array();
    for (const auto& [index, frame] : log.frames()) {
      nlohmann::ordered_json object = {{"name", frame.name}};
      object.update(json_of(frame.sums, colours));
      document["frames"].push_back(object);
    }
  }
  document["all"] = json_of(log.all(std::max<std::size_t>(1, colours.size())), colours);
  // File names need not be UTF-8.
  return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

/** A cell, quoted where its text would end it. */
std::string csv_cell(const nlohmann::ordered_json& value) {
  if (!value.is_string()) {
    return value.is_null() ? "" : value.dump();
  }
  std::string text = value.get<std::string>();
  if (text.find_first_of(",\"\n\r") == std::string::npos) {
    return text;
  }
  for (std::size_t at = text.find('"'); at != std::string::npos; at = text.find('"', at + 2)) {
    text.insert(at, 1, '"');
  }
  return '"' + text + '"';
}

/** Names of columns, or a row: the members of a frame's JSON object, those of members of members one by one. */
std::string csv_line(const std::string& name, const StatisticsSums& sums, bool is_head) {
  std::string line = is_head ? "name" : csv_cell(name);
  const nlohmann::ordered_json object = json_of(sums);
  for (const auto& [key, value] : object.items()) {
    if (!value.is_object()) {
      line += "," + (is_head ? key : csv_cell(value));
      continue;
    }
    for (const auto& [inner, number] : value.items()) {
      line += "," + (is_head ? key + "_" + inner : csv_cell(number));
    }
  }
  return line + "\n";
}

/** A line of each colour. */
std::string csv_lines(const std::string& name, const PlaneSums& sums, const std::vector<std::string>& colours) {
  std::string lines;
  for (std::size_t i = 0; i < sums.size(); ++i) {
    lines += csv_line(colours.empty() ? name : name + " " + colours[i], sums[i], false);
  }
  return lines;
}

std::string as_csv(const StatisticsLog& log, bool summary, const std::vector<std::string>& colours) {
  std::string text = csv_line("", {}, true);
  if (summary) {
    return text + csv_lines("all", log.all(std::max<std::size_t>(1, colours.size())), colours);
  }
  for (const auto& [index, frame] : log.frames()) {
    text += csv_lines(frame.name, frame.sums, colours);
  }
  return text;
}

void run_stats(StatsOptions& options) {
  FrameRequest& request = options.request;
  options.frames.finish(request);
  FrameSequence frames(find_inputs(request.frames, request.headerless, request.recursive, request.range),
                       request.headerless);
  SensorLibraries libraries(request.library, request, request.colour);
  check_calibration(libraries.first(), request);
  std::vector<std::string> colours;
  for (std::size_t i = 0; request.colour && i < request.colour->plane_count(); ++i) {
    colours.emplace_back(request.colour->name(i));
  }
  BatchReport report(frames.total(), frames.is_lone_frame(), BatchReport::Detail::nothing);
  if (!request.layout_is_given) {
    report.add_note(layout_assumption(request.layout));
  }
  StatisticsLog log;
  FrameNotes notes;
  const Interruption interruption;
  run_batch(
      frames, request.jobs,
      [&] { return std::make_unique<StatisticsJob>(request, libraries, options.weight, log, notes); }, report);
  if (options.json) {
    print_result(as_json(log, options.summary, colours, name_of(options.weight), report.failed()));
  } else if (options.csv) {
    print_result(as_csv(log, options.summary, colours));
  } else if (!log.frames().empty()) {
    print_result(as_text(log, options.summary, colours));
  }
  report.finish(Interruption::is_requested());
}

}  // namespace

void declare_stats(CLI::App& app) {
  const auto options = std::make_shared<StatsOptions>();
  CLI::App* command =
      app.add_subcommand("stats", "Print means of angle and degree, and how many pixels are saturated or dark");
  add_choice<StatisticsWeight>(
      command, "--weight", options->weight, weights,
      "What a pixel counts for in means\n"
      "equal: as much as any other. power: for its light, so that the means are those of all light together.");
  command->add_flag("--summary", options->summary, "Print only what is of all frames together");
  CLI::Option* json = command->add_flag("--json", options->json, "Print a JSON document");
  command->add_flag("--csv", options->csv, "Print a table: a line for each frame, or with --summary one of all")
      ->excludes(json);
  options->frames.declare(command, options->request);
  command->footer(
      "Examples:\n"
      "  nerova-polarize stats frame.png --bit-depth 12 --roi 800,600,200,200\n"
      "  nerova-polarize stats 'night/*.tiff' --summary --json");
  command->callback([options] { run_stats(*options); });
}

}  // namespace nerova_zel
