#pragma once

#include <httplib.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "batch/interruption.h"
#include "commands/viewed_inputs.h"

namespace nerova_zel::test {

/** A viewer of files, and a browser that has opened its page. */
class ServedPage {
 public:
  explicit ServedPage(FrameRequest request, ViewSettings settings = {});

  /** With the cookie. */
  httplib::Result get(const std::string& target);
  nlohmann::json json(const std::string& target, int status = 200);

  /** The arrays of a reply by name, as bytes, and its head as "". */
  std::map<std::string, std::string> images(const std::string& query, nlohmann::json* head = nullptr);

  int port() const { return port_; }
  const std::vector<std::string>& addresses() const { return addresses_; }
  const std::string& cookie() const { return cookie_; }
  const Viewer& viewer() const { return *viewer_; }

 private:
  Interruption interruption_;
  FrameRequest request_;
  std::vector<std::string> addresses_;
  std::unique_ptr<ViewedInputs> frames_;
  std::unique_ptr<Viewer> viewer_;
  int port_ = 0;
  std::string cookie_;
  std::unique_ptr<httplib::Client> client_;
};

}  // namespace nerova_zel::test
