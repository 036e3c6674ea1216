#include "api.h"

#include <utility>

#include "image_reply.h"
#include "page_files.h"
#include "processor/route.h"
#include "session_reply.h"

namespace nerova_zel {

Api::Api(ViewSettings settings, ViewedFrames& frames)
    : settings_(std::move(settings)),
      frames_(frames),
      computed_(settings_.frames, frames),
      route_(route_of(computed_.library())) {}

Reply Api::answer(const std::string& path, const std::string& query) {
  try {
    return answer_or_throw(path, query);
  } catch (const BadRequest& error) {
    return Reply::of(json_type, error_document(error.what()), 400);
  } catch (...) {
    return Reply::of(json_type, error_document(frames_.describe_failure()), 422);
  }
}

Reply Api::session(const std::string& query) {
  const Query checked(query, {"since"});
  return Reply::of(json_type, session_document(settings_, frames_, frames_.revision(), route_));
}

Reply Api::answer_or_throw(const std::string& path, const std::string& query) {
  if (path == "/api/session") {
    return session(query);
  }
  if (path == "/api/tables") {
    const Query nothing(query, {});
    return Reply::of(json_type, tables_document());
  }
  if (path == "/api/images") {
    return image_reply(Query(query, {"source", "frame", "layout", "origin", "bit_depth", "calibration", "plane",
                                     "images", "step", "region"}),
                       settings_, frames_, computed_);
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
