#include "api.h"

#include <utility>

#include "frame_query.h"
#include "image_reply.h"
#include "number_replies.h"
#include "page_files.h"
#include "processor/route.h"
#include "session_reply.h"

namespace nerova_zel {

namespace {

constexpr std::chrono::seconds longest_wait{10};

/** What requests about a frame may say. */
constexpr const char* frame_names[] = {"source", "frame", "layout", "origin", "bit_depth", "calibration", "plane"};

/** The requests about frames, and what each may say beside that. */
const struct {
  const char* path;
  Reply (*reply)(const Query&, const ViewSettings&, ViewedFrames&, ComputedFrames&);
  std::vector<const char*> names;
} requests[] = {{"/api/images", image_reply, {"images", "step", "region"}},
                {"/api/region", region_reply, {"region"}},
                {"/api/series", series_reply, {"x", "y", "from", "to", "count", "skip"}},
                {"/api/export", export_reply, {"image", "region", "format"}}};

}  // namespace

Api::Api(ViewSettings settings, ViewedFrames& frames)
    : settings_(std::move(settings)),
      frames_(frames),
      computed_(settings_.frames, frames),
      route_(route_of(computed_.library())),
      first_look_([this] { compute_first_frame(); }) {}

Api::~Api() { first_look_.join(); }

/** What a page asks for first, while the browser starts. */
void Api::compute_first_frame() {
  try {
    if (frames_.sources().front().frames > 0) {
      FrameView view = default_view(settings_);
      view.frame = frames_.sources().front().first;
      computed_.get(view, {Output::power, Output::azimuth, Output::dolp});
    }
  } catch (...) {
    // The page will ask, and be told.
  }
}

Reply Api::answer(const std::string& path, const std::string& query) {
  try {
    return answer_or_throw(path, query);
  } catch (const BadRequest& error) {
    return Reply::of(json_type, error_document(error.what()), 400);
  } catch (...) {
    return Reply::of(json_type, error_document(frames_.describe_failure()), 422);
  }
}

Reply Api::session_now() {
  const std::uint64_t revision = frames_.revision();  // before the sources: what changes meanwhile is told next time
  return Reply::of(json_type, session_document(settings_, frames_, revision, route_));
}

Reply Api::session(const std::string& query) {
  const std::optional<std::int64_t> since = Query(query, {"since"}).number("since", 0, std::int64_t{1} << 53);
  if (!since) {
    return session_now();
  }
  const auto is_news = [this, since] { return static_cast<std::int64_t>(frames_.revision()) != since; };
  Reply reply{200, json_type, "", {}};
  reply.later = [this, is_news, end = std::chrono::steady_clock::now() + longest_wait]() -> std::optional<Reply> {
    return is_news() || std::chrono::steady_clock::now() > end ? std::optional(session_now()) : std::nullopt;
  };
  return reply;
}

Reply Api::answer_or_throw(const std::string& path, const std::string& query) {
  if (path == "/api/session") {
    return session(query);
  }
  if (path == "/api/tables") {
    const Query nothing(query, {});
    return Reply::of(json_type, tables_document());
  }
  for (const auto& [known, reply, own_names] : requests) {
    if (path == known) {
      std::vector<const char*> names(std::begin(frame_names), std::end(frame_names));
      names.insert(names.end(), own_names.begin(), own_names.end());
      return reply(Query(query, names), settings_, frames_, computed_);
    }
  }
  if (const PageFile* file = find_page_file(path)) {
    const Query nothing(query, {});
    Reply reply{200, std::string(file->media_type), "", {}};
    reply.parts.push_back(
        {reinterpret_cast<const unsigned char*>(file->content.data()), file->content.size(), nullptr});
    return reply;
  }
  return Reply::of("text/plain; charset=utf-8", "There is nothing here.\n", 404);
}

}  // namespace nerova_zel
